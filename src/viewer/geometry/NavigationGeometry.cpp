#include "viewer/geometry/NavigationGeometry.h"

#include <algorithm>

namespace {

constexpr double lineWidth = 1.0;
constexpr double smallestGrab = 12;

/// A miniature of a point or two has limits that pass each other: the upper one counts.
double within(double value, double low, double high) {
    return std::min(std::max(value, low), high);
}

double missing(double length) {
    return std::max(smallestGrab - length, 0.0) / 2;
}

} // namespace

NavigationGeometry::NavigationGeometry(const ImageViewport& bounds, const ImagePlacement& large)
    : _miniature(ImagePlacement::fittedIn(bounds, large.imageSize(), large.angle())),
      _largeScale(large.scale()) {
    _miniature.setMoving(large.isMoving());
    const QTransform transform = drawTransform();
    const QSizeF size = large.imageSize();
    _imagePolygon = transform.map(QPolygonF(
        {QPointF(0, 0), QPointF(size.width(), 0), QPointF(size.width(), size.height()),
         QPointF(0, size.height())}));
    const QRectF limits = _imagePolygon.boundingRect();
    const QRectF area = bounds.rect();
    _visiblePolygon = transform.map(large.visibleRectInImage());
    for (QPointF& point : _visiblePolygon) {
        point.setX(within(
            point.x(), std::max(area.left() + lineWidth, limits.left()),
            std::min(area.right() - lineWidth, limits.right())));
        point.setY(within(
            point.y(), std::max(area.top() + lineWidth, limits.top()),
            std::min(area.bottom() - lineWidth, limits.bottom())));
    }
}

QRectF NavigationGeometry::grabRect() const {
    const QRectF mark = _visiblePolygon.boundingRect();
    const double wider = missing(mark.width());
    const double higher = missing(mark.height());
    return mark.adjusted(-wider, -higher, wider, higher);
}

QPointF NavigationGeometry::draggedDrawAnchor(
    const QPointF& downDrawAnchor, const QPointF& from, const QPointF& to) const {
    return downDrawAnchor - (to - from) * (_largeScale / scale());
}
