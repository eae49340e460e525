#include "viewer/geometry/ImagePlacement.h"

#include "viewer/geometry/ImageTransform.h"
#include "viewer/geometry/ZoomScales.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace {

// What sums of points may be off by and still be the same device pixel.
constexpr double edgeTolerance = 1e-6;

bool isFinite(const QPointF& point) {
    return std::isfinite(point.x()) && std::isfinite(point.y());
}

QSizeF saneSize(const QSizeF& size) {
    const bool isSane = std::isfinite(size.width()) && std::isfinite(size.height()) &&
                        size.width() > 0 && size.height() > 0;
    return isSane ? size : QSizeF(0, 0);
}

QPointF centerOf(const QSizeF& size) {
    return {size.width() / 2, size.height() / 2};
}

/// Where the picture starts along one axis: centred when it is smaller, else without a gap.
double heldStart(double start, double length, double viewStart, double viewLength) {
    if (viewLength >= length) return viewStart + (viewLength - length) / 2;
    return std::clamp(start, viewStart + viewLength - length, viewStart);
}

/// The start on a device pixel, or one pixel on where that would leave a gap at the far edge.
double gapless(double snapped, double length, double viewStart, double viewLength, double pixel) {
    const double viewEnd = viewStart + viewLength;
    return length > viewLength && snapped + length < viewEnd - edgeTolerance ? snapped + pixel
                                                                             : snapped;
}

} // namespace

ImagePlacement
ImagePlacement::fittedIn(const ImageViewport& viewport, const QSizeF& imageSize, double angle) {
    ImagePlacement placement;
    placement._viewport = viewport;
    placement.setImageSize(imageSize);
    placement.setAngle(angle);
    placement.setFitIn(true);
    return placement;
}

void ImagePlacement::setViewport(const ImageViewport& viewport) {
    const double wasRatio = _viewport.devicePixelRatio();
    const double ratio = viewport.devicePixelRatio();
    if (wasRatio == ratio) {
        _viewport = viewport;
    } else {
        centerAnchor();
        _viewport = viewport;
        _scale *= wasRatio / ratio;
        _drawAnchor = viewCenter();
    }
    followFitIn();
}

void ImagePlacement::setImageSize(const QSizeF& imageSize) {
    const QSizeF size = saneSize(imageSize);
    const QSizeF was = std::exchange(_imageSize, size);
    if (was == size) return;
    if (was.isEmpty() || size.isEmpty()) {
        _imageAnchor = centerOf(size);
    } else {
        _imageAnchor = {
            _imageAnchor.x() * size.width() / was.width(),
            _imageAnchor.y() * size.height() / was.height()};
    }
    if (!_isMoving) setScale(std::clamp(_scale, minScale(), maxScale()));
    followFitIn();
}

void ImagePlacement::setImageAnchor(const QPointF& point) {
    if (isFinite(point)) _imageAnchor = point;
    followFitIn();
}

void ImagePlacement::setDrawAnchor(const QPointF& point) {
    if (isFinite(point)) _drawAnchor = _viewport.roundPoint(point);
    followFitIn();
}

void ImagePlacement::centerAnchor() {
    anchorAt(viewCenter());
}

void ImagePlacement::anchorAt(const QPointF& point) {
    if (!isFinite(point)) return;
    const QPointF anchor = _viewport.roundPoint(point);
    // Not as it lies on device pixels: of many small steps, each would move it by a part of one.
    const QTransform held = transformWithCorner(&ImagePlacement::heldCorner);
    _imageAnchor = held.inverted().map(anchor);
    _drawAnchor = anchor;
}

bool ImagePlacement::tryMoveDrawAnchorToPoint(const QPointF& point) {
    if (!isFinite(point)) return false;
    const QPointF center = viewCenter();
    const QPointF held = settledTransform().inverted().map(center);
    setDrawAnchor(point);
    const QPointF moved = (settledTransform().map(held) - center) * _viewport.devicePixelRatio();
    return std::max(std::abs(moved.x()), std::abs(moved.y())) >= 0.5;
}

void ImagePlacement::setAngle(double angle) {
    if (!std::isfinite(angle)) return;
    _angle = PBUtilities::normalizeAngle(angle);
    followFitIn();
}

void ImagePlacement::setScale(double scale) {
    if (std::isfinite(scale) && scale > 0) _scale = scale;
}

void ImagePlacement::setPixelScale(double pixelScale) {
    setScale(pixelScale / _viewport.devicePixelRatio());
}

void ImagePlacement::setFitIn(bool isFitIn) {
    _isFitIn = isFitIn;
    followFitIn();
}

void ImagePlacement::setSwapOffset(double offset) {
    if (std::isfinite(offset)) _swapOffset = offset;
}

QPointF ImagePlacement::viewCenter() const {
    return _viewport.roundPoint(_viewport.rect().center());
}

void ImagePlacement::followFitIn() {
    if (!_isFitIn) return;
    setScale(fitInScale());
    _imageAnchor = centerOf(_imageSize);
    _drawAnchor = viewCenter();
}

QPointF ImagePlacement::heldCorner(const QRectF& frame) const {
    const QRectF view = _viewport.rect();
    return {
        heldStart(frame.x(), frame.width(), view.x(), view.width()),
        heldStart(frame.y(), frame.height(), view.y(), view.height())};
}

QPointF ImagePlacement::settledCorner(const QRectF& frame) const {
    const QPointF held = heldCorner(frame);
    if (_isMoving || std::fmod(_angle, 90) != 0) return held;
    const QRectF view = _viewport.rect();
    const QPointF snapped = _viewport.nearestPixelCorner(held);
    const double pixel = 1 / _viewport.devicePixelRatio();
    return {
        gapless(snapped.x(), frame.width(), view.x(), view.width(), pixel),
        gapless(snapped.y(), frame.height(), view.y(), view.height(), pixel)};
}

QTransform ImagePlacement::transformWithCorner(CornerOf cornerOf) const {
    const QTransform transform =
        PBUtilities::transformWithImageAnchor(_imageAnchor, _drawAnchor, _angle, _scale);
    const QRectF frame = PBUtilities::imageFrameWithTransform(transform, _imageSize);
    const QPointF move = std::invoke(cornerOf, this, frame) - frame.topLeft();
    return transform * QTransform::fromTranslate(move.x(), move.y());
}

QTransform ImagePlacement::settledTransform() const {
    return transformWithCorner(&ImagePlacement::settledCorner);
}

QTransform ImagePlacement::drawTransform() const {
    return settledTransform() * QTransform::fromTranslate(-_swapOffset, 0);
}

QPointF ImagePlacement::pointFromImage(const QPointF& point) const {
    return drawTransform().map(point);
}

QPointF ImagePlacement::pointToImage(const QPointF& point) const {
    return drawTransform().inverted().map(point);
}

QRectF ImagePlacement::imageDrawRect() const {
    const QRectF frame = PBUtilities::imageFrameWithTransform(drawTransform(), _imageSize);
    return {frame.topLeft(), QPointF(std::max(frame.right(), 0.0), std::max(frame.bottom(), 0.0))};
}

QPolygonF ImagePlacement::visibleRectInImage() const {
    const QRectF view = _viewport.rect();
    return drawTransform().inverted().map(
        QPolygonF({view.topLeft(), view.bottomLeft(), view.bottomRight(), view.topRight()}));
}

double ImagePlacement::minPixelScale() const {
    const QSizeF turned =
        PBUtilities::imageFrameWithTransform(
            PBUtilities::transformWithImageAnchor({}, {}, _angle, 1.0), _imageSize)
            .size();
    return minScaleForLongestSide(
        std::max(turned.width(), turned.height()), _viewport.devicePixelRatio());
}

double ImagePlacement::fitInPixelScale(bool fitInSmall) const {
    // A view without a size shows nothing; the first one with a size fits anew.
    if (_viewport.isEmpty()) return 1.0;
    return PBUtilities::fitInScaleWithAngle(_angle, _imageSize, _viewport.pixelSize(), fitInSmall);
}

double ImagePlacement::minScale() const {
    return minPixelScale() / _viewport.devicePixelRatio();
}

double ImagePlacement::maxScale() const {
    return maxZoomScale / _viewport.devicePixelRatio();
}

double ImagePlacement::fitInScale() const {
    return fitInPixelScale() / _viewport.devicePixelRatio();
}

bool ImagePlacement::shouldShowNavigation() const {
    if (!hasImage()) return false;
    const double fitting = fitInPixelScale(true);
    return pixelScale() > fitting && !isSameScale(pixelScale(), fitting);
}
