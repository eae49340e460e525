#include "ui/ShadowPatch.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// How much of a straight edge's shadow lies at each distance from its outside on: the smooth step
/// of a blurred edge, over two radii.
std::vector<double> edgeProfile(int radius) {
    std::vector<double> profile;
    for (int pixel = 0; pixel < 2 * radius; ++pixel) {
        const double distance = (pixel + 0.5) / radius - 1; // -1 outside, 1 inside
        profile.push_back(0.5 * (1 + std::erf(distance * 1.8)));
    }
    return profile;
}

} // namespace

void ShadowPatch::prepare(int radius, int offset, const QColor& color) {
    platform::assertMainThread();
    _offset = offset;
    if (radius == _radius && color == _color) return;
    _radius = radius;
    _color = color;
    const std::vector<double> profile = edgeProfile(radius);
    const int size = 4 * radius + 1;
    const auto at = [&](int pixel) {
        const int fromEdge = std::min(pixel, size - 1 - pixel);
        return fromEdge < 2 * radius ? profile[static_cast<std::size_t>(fromEdge)] : 1.0;
    };
    _patch = QImage(size, size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size; ++y) {
        auto* line = reinterpret_cast<QRgb*>(_patch.scanLine(y));
        for (int x = 0; x < size; ++x) {
            QColor pixel = color;
            pixel.setAlphaF(static_cast<float>(color.alphaF() * at(x) * at(y)));
            line[x] = qPremultiply(pixel.rgba());
        }
    }
}

void ShadowPatch::draw(QPainter& painter, const QRect& rect) const {
    if (_radius <= 0 || rect.isEmpty()) return;
    const QRect target = rect.translated(0, _offset).adjusted(-_radius, -_radius, _radius, _radius);
    const int corner = 2 * _radius;
    if (target.width() < 2 * corner || target.height() < 2 * corner) {
        painter.drawImage(target, _patch);
        return;
    }
    const int last = _patch.width() - corner;
    const int right = target.right() + 1 - corner;
    const int bottom = target.bottom() + 1 - corner;
    const int width = target.width() - 2 * corner;
    const int height = target.height() - 2 * corner;
    painter.drawImage(target.topLeft(), _patch, QRect(0, 0, corner, corner));
    painter.drawImage(QPoint(right, target.top()), _patch, QRect(last, 0, corner, corner));
    painter.drawImage(QPoint(target.left(), bottom), _patch, QRect(0, last, corner, corner));
    painter.drawImage(QPoint(right, bottom), _patch, QRect(last, last, corner, corner));
    // The middle is covered by what casts the shadow.
    painter.drawImage(
        QRect(target.left() + corner, target.top(), width, corner), _patch,
        QRect(corner, 0, 1, corner));
    painter.drawImage(
        QRect(target.left() + corner, bottom, width, corner), _patch,
        QRect(corner, last, 1, corner));
    painter.drawImage(
        QRect(target.left(), target.top() + corner, corner, height), _patch,
        QRect(0, corner, corner, 1));
    painter.drawImage(
        QRect(right, target.top() + corner, corner, height), _patch,
        QRect(last, corner, corner, 1));
}
