#include "viewer/bin/StripGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

/// The cell that the number of visible ones goes by, with its gap.
constexpr double countedPitch = 40 + StripGeometry::gap;

} // namespace

StripGeometry::StripGeometry(double height, double width, std::int64_t count)
    : _itemSize(std::max(1.0, height)), _width(std::max(0.0, width)),
      _count(std::max<std::int64_t>(0, count)) {}

QRectF StripGeometry::rectOfIndex(std::int64_t index) const {
    return {contentOffset() + static_cast<double>(index) * pitch(), 0, _itemSize, _itemSize};
}

double StripGeometry::contentWidth() const {
    return std::max(0.0, pitch() * static_cast<double>(_count) - gap + _width - _itemSize);
}

double StripGeometry::roundPosition(double position) const {
    return std::rint(position / pitch()) * pitch();
}

double StripGeometry::positionOfIndex(std::int64_t index) const {
    return rectOfIndex(index).center().x() - _width / 2;
}

std::int64_t StripGeometry::indexAtPosition(double position) const {
    const auto index = static_cast<std::int64_t>(std::rint(position / pitch()));
    return std::clamp<std::int64_t>(index, std::min<std::int64_t>(0, _count - 1), _count - 1);
}

std::int64_t StripGeometry::indexAtPoint(const QPointF& point) const {
    const double cells = std::floor((point.x() - contentOffset()) / pitch());
    if (!(cells >= 0 && cells < static_cast<double>(_count))) return -1;
    const auto index = static_cast<std::int64_t>(cells);
    return rectOfIndex(index).contains(point) ? index : -1;
}

StripGeometry::Range StripGeometry::calcVisibleForRect(const QRectF& part) const {
    const double start = contentOffset();
    const auto cellsTo = [&](double x) {
        return static_cast<std::int64_t>(std::floor((x - start) / pitch()));
    };
    Range range{
        std::max<std::int64_t>(0, cellsTo(part.x() + gap)),
        std::max<std::int64_t>(-1, std::min(_count - 1, cellsTo(part.x() + part.width())))};
    const auto fitting = static_cast<std::int64_t>((_width + gap) / countedPitch);
    const std::int64_t tooMany = range.last + 1 - fitting - range.first;
    if (tooMany > 0) {
        range.first += tooMany / 2;
        range.last += tooMany / 2 - tooMany;
    }
    return range;
}
