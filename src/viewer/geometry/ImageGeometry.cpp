#include "viewer/geometry/ImageGeometry.h"

#include "core/Angles.h"

#include <cmath>

void ImageGeometry::reset() {
    setZooming(false);
    setRotating(false);
    _placement.setFitIn(false);
    _placement.setPixelScale(1.0);
    _placement.setAngle(0);
    _zoomDirection = 0;
}

void ImageGeometry::showImage(const QSizeF& imageSize, double rotateAngle) {
    reset();
    _placement.setImageSize(imageSize);
    _placement.setAngle(-rotateAngle);
    fitInWithAnimation(false);
}

void ImageGeometry::setAngle(double angle) {
    setRotating(false);
    _placement.setAngle(angle);
}

ScrollAnimation ImageGeometry::scrollByDelta(const QPointF& delta) {
    centerAnchor();
    return {_placement.drawAnchor(), _placement.drawAnchor() + delta};
}

std::optional<GeometryAnimation> ImageGeometry::rotateToAngle(double angle) {
    constexpr double sameAngle = 1e-6; // degrees: a whole turn was taken off
    const double present = _placement.angle();
    double target = PBUtilities::normalizeAngle(angle);
    if (_isRotating || !std::isfinite(angle) || std::abs(target - present) < sameAngle) return {};
    if (target - present > 180) target -= 360;
    if (target - present < -180) target += 360;
    centerAnchor();
    setRotating(true);
    return GeometryAnimation{
        .property = GeometryAnimation::Property::Angle,
        .from = present,
        .to = target,
        .duration = rotationAnimationDuration,
        .serial = _angleSerial};
}

void ImageGeometry::setZooming(bool isZooming) {
    ++_scaleSerial;
    _isZooming = isZooming;
    _placement.setMoving(_isZooming || _isRotating);
}

void ImageGeometry::setRotating(bool isRotating) {
    ++_angleSerial;
    _isRotating = isRotating;
    _placement.setMoving(_isZooming || _isRotating);
}

bool ImageGeometry::advance(const GeometryAnimation& animation, double elapsed) {
    return animation.property == GeometryAnimation::Property::Scale
               ? advanceScale(animation, elapsed)
               : advanceAngle(animation, elapsed);
}

bool ImageGeometry::advanceScale(const GeometryAnimation& animation, double elapsed) {
    if (animation.serial != _scaleSerial) return false;
    const bool fitsIn = animation.ending == GeometryAnimation::Ending::FitsIn;
    GeometryAnimation present = animation;
    // The view may have changed its size, or the picture its angle, since it began.
    if (fitsIn) present.to = _placement.fitInPixelScale();
    _placement.setPixelScale(present.valueAt(elapsed));
    if (!present.isFinished(elapsed)) return true;
    setZooming(false);
    if (fitsIn) _placement.setFitIn(true);
    if (animation.ending == GeometryAnimation::Ending::ForgetsZoomStep) _zoomDirection = 0;
    return false;
}

bool ImageGeometry::advanceAngle(const GeometryAnimation& animation, double elapsed) {
    if (animation.serial != _angleSerial) return false;
    _placement.setAngle(animation.valueAt(elapsed));
    if (!animation.isFinished(elapsed)) return true;
    setRotating(false);
    return false;
}
