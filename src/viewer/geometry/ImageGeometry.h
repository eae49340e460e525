#pragma once

#include "viewer/geometry/GeometryAnimation.h"
#include "viewer/geometry/ImagePlacement.h"

#include <optional>

/// What the user does to the zoom, the place and the rotation of the one picture on the view. Steps
/// and turns that take time give an animation: the caller remembers when it began and hands the
/// seconds since then to `advance` at every frame. At most one animation of the scale and one of
/// the angle are in force; whatever sets the same number otherwise makes `advance` of the older one
/// do nothing. Points are those of the view, scales are points for each pixel unless said
/// otherwise; points without a value mean the middle of the view. A value; any thread.
class ImageGeometry {
public:
    [[nodiscard]] const ImagePlacement& placement() const { return _placement; }

    void setViewport(const ImageViewport& viewport) { _placement.setViewport(viewport); }
    /// Of the picture shown: known late, or another one after its file was changed.
    void setImageSize(const QSizeF& imageSize) { _placement.setImageSize(imageSize); }
    /// Actual size, not turned, not fitted, and no animation is in force any more.
    void reset();
    /// Another picture, which fits in. `rotateAngle` is the item's: counter-clockwise. A swipe's
    /// offset stays.
    void showImage(const QSizeF& imageSize, double rotateAngle);

    /// At once; the anchors stay.
    void setScale(double scale);
    void setAngle(double angle);
    void setSwapOffset(double offset) { _placement.setSwapOffset(offset); }
    void setDrawAnchor(const QPointF& point) { _placement.setDrawAnchor(point); }
    void centerAnchor() { _placement.centerAnchor(); }
    bool tryMoveDrawAnchorToPoint(const QPointF& point) {
        return _placement.tryMoveDrawAnchorToPoint(point);
    }
    /// From what is shown, moved by so much: the way there, for a caller that takes `setDrawAnchor`
    /// along it or to its end at once. One that is under way is taken to its end before.
    [[nodiscard]] ScrollAnimation scrollByDelta(const QPointF& delta);

    [[nodiscard]] bool canZoomIn() const;
    [[nodiscard]] bool canZoomOut() const;

    /// To the next step of the table; nothing when that is what is shown.
    [[nodiscard]] std::optional<GeometryAnimation>
    zoomInAtPoint(const std::optional<QPointF>& point = {});
    [[nodiscard]] std::optional<GeometryAnimation>
    zoomOutAtPoint(const std::optional<QPointF>& point = {});
    /// By a wheel: the wish grows by the factor (above 1 in, below 1 out), the target is the step
    /// of the table beyond it.
    [[nodiscard]] std::optional<GeometryAnimation>
    wheelZoomAtPoint(double factor, const QPointF& point);
    /// Nothing while the picture fits in; without animation it does so at once.
    std::optional<GeometryAnimation> fitInWithAnimation(bool animation);
    /// Nothing where that is what is shown.
    [[nodiscard]] std::optional<GeometryAnimation> actualSize();
    /// A double click: to fit in, or to actual size where it does.
    [[nodiscard]] std::optional<GeometryAnimation> toggleActualSizeAtPoint(const QPointF& point);
    /// A pinch: the present scale grown by so much, at once.
    bool magnifyAtPoint(double magnification, const QPointF& point);
    /// The knob was moved: what it snaps to, with the scale set at once.
    double zoomSlide(double slider);
    /// Where the knob stands, 0 to 100, and what the label beside it shows, in per cent.
    [[nodiscard]] double zoomSlider() const;
    [[nodiscard]] int zoomPercent() const;

    /// What a drag that zooms starts from.
    struct ZoomDrag {
        QPointF drawAnchor;
        QPointF imageAnchor;
        double pixelScale = 1.0;
    };
    [[nodiscard]] ZoomDrag beginZoomDrag(const QPointF& point) const;
    /// The pointer is so many points to the right of the press. False when nothing changes.
    bool zoomByDrag(const ZoomDrag& drag, double distance);

    [[nodiscard]] bool isRotating() const { return _isRotating; }
    /// About the middle of the view, the short way round. Nothing when it is the present angle, and
    /// while a rotation runs.
    [[nodiscard]] std::optional<GeometryAnimation> rotateToAngle(double angle);

    /// Takes the geometry to where the animation has it so many seconds after its start. False when
    /// it is over, by time or because something else took its place.
    bool advance(const GeometryAnimation& animation, double elapsed);

private:
    enum class Step { In, Out };

    /// There is something to zoom; not before the size of a picture is known.
    [[nodiscard]] bool hasImage() const { return !_placement.imageSize().isEmpty(); }

    /// To the step of the table beyond the wish.
    [[nodiscard]] std::optional<GeometryAnimation> zoomBeyond(
        Step step, double wish, GeometryAnimation::Ending ending,
        const std::optional<QPointF>& point);
    /// From the scale to the target, which is device pixels for each pixel.
    [[nodiscard]] GeometryAnimation zoomTo(double pixelScale, GeometryAnimation::Ending ending);
    /// What the next step starts from: the target of the last one in that direction, else what is
    /// shown. In device pixels for each pixel.
    [[nodiscard]] double getZoomScale(Step step) const;
    [[nodiscard]] double lowestPixelScale(double start) const;
    void anchorAt(const std::optional<QPointF>& point);
    void leaveFitIn() { _placement.setFitIn(false); }
    void setZooming(bool isZooming);
    void setRotating(bool isRotating);
    bool advanceScale(const GeometryAnimation& animation, double elapsed);
    bool advanceAngle(const GeometryAnimation& animation, double elapsed);

    ImagePlacement _placement;
    int _zoomDirection = 0;  // 1 after a step in, -1 after a step out
    double _zoomScale = 1.0; // what it was meant to reach, in device pixels for each pixel
    bool _isZooming = false;
    bool _isRotating = false;
    std::uint64_t _scaleSerial = 0;
    std::uint64_t _angleSerial = 0;
};
