#include "viewer/geometry/ImageViewport.h"

#include <cmath>

namespace {

// A corner of a device pixel that went through points and back is still that corner.
constexpr double pixelTolerance = 1e-6;

double saneLength(double length) {
    return std::isfinite(length) && length > 0 ? length : 0;
}

} // namespace

ImageViewport::ImageViewport(const QSizeF& size, double devicePixelRatio, const QPointF& origin)
    : _size(saneLength(size.width()), saneLength(size.height())) {
    if (std::isfinite(devicePixelRatio) && devicePixelRatio > 0)
        _devicePixelRatio = devicePixelRatio;
    if (std::isfinite(origin.x()) && std::isfinite(origin.y())) _origin = origin;
}

QPointF ImageViewport::toPixels(const QPointF& point) const {
    return (point + _origin) * _devicePixelRatio;
}

QPointF ImageViewport::fromPixels(const QPointF& pixels) const {
    return pixels / _devicePixelRatio - _origin;
}

QRectF ImageViewport::pixelRect() const {
    const QPointF topLeft = toPixels({});
    const QPointF bottomRight = toPixels(QPointF(_size.width(), _size.height()));
    return {
        QPointF(std::round(topLeft.x()), std::round(topLeft.y())),
        QPointF(std::round(bottomRight.x()), std::round(bottomRight.y()))};
}

QRectF ImageViewport::rect() const {
    const QRectF pixels = pixelRect();
    return {fromPixels(pixels.topLeft()), fromPixels(pixels.bottomRight())};
}

QSizeF ImageViewport::pixelSize() const {
    return pixelRect().size();
}

bool ImageViewport::isEmpty() const {
    return pixelRect().isEmpty();
}

QPointF ImageViewport::roundPoint(const QPointF& point) const {
    const QPointF pixels = toPixels(point);
    return fromPixels(
        {std::floor(pixels.x() + pixelTolerance), std::floor(pixels.y() + pixelTolerance)});
}

QPointF ImageViewport::nearestPixelCorner(const QPointF& point) const {
    const QPointF pixels = toPixels(point);
    return fromPixels({std::round(pixels.x()), std::round(pixels.y())});
}
