#include "viewer/geometry/ImageGeometry.h"
#include "viewer/geometry/ZoomScales.h"

#include <algorithm>
#include <cmath>

using Ending = GeometryAnimation::Ending;

void ImageGeometry::setScale(double scale) {
    setZooming(false);
    _placement.setScale(scale);
}

bool ImageGeometry::canZoomIn() const {
    if (!hasImage()) return false;
    const double scale = _placement.pixelScale();
    return maxZoomScale > scale && !isSameScale(scale, maxZoomScale);
}

bool ImageGeometry::canZoomOut() const {
    if (!hasImage()) return false;
    const double scale = _placement.pixelScale();
    return scale > _placement.minPixelScale() && !isSameScale(scale, _placement.minPixelScale());
}

double ImageGeometry::getZoomScale(Step step) const {
    const int direction = step == Step::In ? 1 : -1;
    return _zoomDirection == direction ? _zoomScale : _placement.pixelScale();
}

double ImageGeometry::lowestPixelScale(double start) const {
    // A picture that fits in may be smaller than the limit: a giant, or a view of a few points.
    return std::min(_placement.minPixelScale(), start);
}

void ImageGeometry::anchorAt(const std::optional<QPointF>& point) {
    if (point)
        _placement.anchorAt(*point);
    else
        _placement.centerAnchor();
}

GeometryAnimation ImageGeometry::zoomTo(double pixelScale, Ending ending) {
    leaveFitIn();
    setZooming(true);
    return {
        .property = GeometryAnimation::Property::Scale,
        .from = _placement.pixelScale(),
        .to = pixelScale,
        .duration = zoomAnimationDuration,
        .ending = ending,
        .serial = _scaleSerial};
}

std::optional<GeometryAnimation> ImageGeometry::zoomBeyond(
    Step step, double wish, Ending ending, const std::optional<QPointF>& point) {
    const double target = step == Step::In
                              ? zoomInScale(wish)
                              : std::max(zoomOutScale(wish), _placement.minPixelScale());
    _zoomScale = ending == Ending::ForgetsZoomStep ? wish : target;
    _zoomDirection = step == Step::In ? 1 : -1;
    const bool canZoom = step == Step::In ? canZoomIn() : canZoomOut();
    if (!canZoom || isSameScale(target, _placement.pixelScale())) return {};
    anchorAt(point);
    return zoomTo(target, ending);
}

std::optional<GeometryAnimation> ImageGeometry::zoomInAtPoint(const std::optional<QPointF>& point) {
    return zoomBeyond(Step::In, getZoomScale(Step::In), Ending::Stays, point);
}

std::optional<GeometryAnimation>
ImageGeometry::zoomOutAtPoint(const std::optional<QPointF>& point) {
    return zoomBeyond(Step::Out, getZoomScale(Step::Out), Ending::Stays, point);
}

std::optional<GeometryAnimation>
ImageGeometry::wheelZoomAtPoint(double factor, const QPointF& point) {
    if (!std::isfinite(factor) || factor <= 0 || factor == 1) return {};
    const Step step = factor > 1 ? Step::In : Step::Out;
    const double wish = getZoomScale(step) * factor;
    const double limited = step == Step::In ? std::min(wish, maxZoomScale)
                                            : std::max(wish, _placement.minPixelScale());
    return zoomBeyond(step, limited, Ending::ForgetsZoomStep, point);
}

std::optional<GeometryAnimation> ImageGeometry::fitInWithAnimation(bool animation) {
    if (_placement.isFitIn()) return {};
    _zoomDirection = 0;
    const double fitting = _placement.fitInPixelScale();
    if (animation && !isSameScale(_placement.pixelScale(), fitting)) {
        _placement.centerAnchor();
        return zoomTo(fitting, Ending::FitsIn);
    }
    setZooming(false);
    _placement.setFitIn(true);
    return {};
}

std::optional<GeometryAnimation> ImageGeometry::actualSize() {
    if (!hasImage()) return {};
    _placement.centerAnchor();
    _zoomDirection = 0;
    if (!isSameScale(_placement.pixelScale(), 1.0)) return zoomTo(1.0, Ending::Stays);
    leaveFitIn();
    setZooming(false);
    return {};
}

std::optional<GeometryAnimation> ImageGeometry::toggleActualSizeAtPoint(const QPointF& point) {
    const double fitting = _placement.fitInPixelScale();
    const bool isFitting = isSameScale(_placement.pixelScale(), fitting);
    const double target = isFitting ? 1.0 : fitting;
    if (isSameScale(_placement.pixelScale(), target)) return {};
    _placement.anchorAt(point);
    return zoomTo(target, isFitting ? Ending::Stays : Ending::FitsIn);
}

bool ImageGeometry::magnifyAtPoint(double magnification, const QPointF& point) {
    const double wish = _placement.pixelScale() * (1 + magnification);
    if (!hasImage() || !std::isfinite(wish)) return false;
    const double target = std::clamp(wish, lowestPixelScale(_placement.pixelScale()), maxZoomScale);
    if (target == _placement.pixelScale()) return false;
    _placement.anchorAt(point);
    leaveFitIn();
    setZooming(false);
    _placement.setPixelScale(target);
    return true;
}

double ImageGeometry::zoomSlide(double slider) {
    const double snapped = snappedSlider(slider);
    if (!hasImage() || !std::isfinite(snapped)) return zoomSlider();
    leaveFitIn();
    setZooming(false);
    _placement.setPixelScale(sliderToScale(snapped, _placement.minPixelScale()));
    return snapped;
}

double ImageGeometry::zoomSlider() const {
    return scaleToSlider(_placement.pixelScale(), _placement.minPixelScale());
}

int ImageGeometry::zoomPercent() const {
    return ::zoomPercent(_placement.pixelScale());
}

ImageGeometry::ZoomDrag ImageGeometry::beginZoomDrag(const QPointF& point) const {
    ImagePlacement pressed = _placement;
    pressed.anchorAt(point);
    return {pressed.drawAnchor(), pressed.imageAnchor(), pressed.pixelScale()};
}

bool ImageGeometry::zoomByDrag(const ZoomDrag& drag, double distance) {
    const double target = std::clamp(
        drag.pixelScale * dragZoomFactor(distance), lowestPixelScale(drag.pixelScale),
        maxZoomScale);
    if (target == _placement.pixelScale()) return false;
    leaveFitIn();
    setZooming(false);
    _placement.setImageAnchor(drag.imageAnchor);
    _placement.setDrawAnchor(drag.drawAnchor);
    _zoomDirection = 0;
    _placement.setPixelScale(target);
    return true;
}
