#pragma once

#include "viewer/geometry/ImageViewport.h"

#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

/// Where one picture lies on the view: a point of it, the image anchor, is held at a point of the
/// view, the draw anchor, turned and scaled about them. What is shown may differ from the anchors:
/// a picture that is smaller than the view is centred, one that is larger leaves no gap at an edge,
/// and at rest its corner lies on a device pixel. `centerAnchor` turns what is shown into anchors.
///
/// Points of the view and of the picture (its pixels before any rotation) run right and down,
/// angles are degrees clockwise. `scale` is points for each pixel; `pixelScale` is device pixels
/// for each pixel, and is what is stepped, snapped, limited and shown. Numbers that make no sense
/// change nothing. A value; any thread.
class ImagePlacement {
public:
    /// A picture that fits in.
    [[nodiscard]] static ImagePlacement
    fittedIn(const ImageViewport& viewport, const QSizeF& imageSize, double angle);

    [[nodiscard]] const ImageViewport& viewport() const { return _viewport; }
    /// A picture that fits in follows. Else the draw anchor stays; on a screen of another ratio
    /// the zoom in device pixels and the middle of the view stay.
    void setViewport(const ImageViewport& viewport);
    [[nodiscard]] QSizeF imageSize() const { return _imageSize; }
    /// The same spot of the picture stays at the anchor. A size that is not above 0 counts as 0.
    void setImageSize(const QSizeF& imageSize);
    [[nodiscard]] bool hasImage() const { return !_imageSize.isEmpty(); }

    [[nodiscard]] QPointF imageAnchor() const { return _imageAnchor; }
    [[nodiscard]] QPointF drawAnchor() const { return _drawAnchor; }
    void setImageAnchor(const QPointF& point);
    /// Rounded to a device pixel.
    void setDrawAnchor(const QPointF& point);
    /// Makes what is shown explicit, with the draw anchor in the middle of the view.
    void centerAnchor();
    /// Makes what is shown explicit, with the draw anchor at the point.
    void anchorAt(const QPointF& point);
    /// Moves the draw anchor there, which ends fitting in where the picture moves. False when it
    /// did not, because its edges hold it; the anchor moves nonetheless.
    bool tryMoveDrawAnchorToPoint(const QPointF& point);

    [[nodiscard]] double angle() const { return _angle; }
    /// Kept in [0, 360), with -90 for 270.
    void setAngle(double angle);

    [[nodiscard]] double scale() const { return _scale; }
    void setScale(double scale);
    /// Compared by `isSameScale`: it went through points.
    [[nodiscard]] double pixelScale() const { return _scale * _viewport.devicePixelRatio(); }
    void setPixelScale(double pixelScale);

    /// The picture is shown whole, and follows the view's size.
    [[nodiscard]] bool isFitIn() const { return _isFitIn; }
    void setFitIn(bool isFitIn);

    /// How far the picture is pulled to the left, in points, by a swipe.
    [[nodiscard]] double swapOffset() const { return _swapOffset; }
    void setSwapOffset(double offset);

    /// An animation changes scale or angle: device pixels don't hold the picture, so that it moves
    /// smoothly.
    [[nodiscard]] bool isMoving() const { return _isMoving; }
    void setMoving(bool isMoving) { _isMoving = isMoving; }

    /// The middle of the view, on a device pixel.
    [[nodiscard]] QPointF viewCenter() const;
    /// Takes points of the picture to points of the view, as it is shown.
    [[nodiscard]] QTransform drawTransform() const;
    [[nodiscard]] QPointF pointFromImage(const QPointF& point) const;
    [[nodiscard]] QPointF pointToImage(const QPointF& point) const;
    /// The picture's bounds in points of the view; never ends left of or above its corner.
    [[nodiscard]] QRectF imageDrawRect() const;
    /// The view's corners (top left, bottom left, bottom right, top right) as points of the
    /// picture.
    [[nodiscard]] QPolygonF visibleRectInImage() const;

    /// The smallest and the largest scale, and the one at which the picture fits in, for the
    /// present angle and view. In points for each pixel.
    [[nodiscard]] double minScale() const;
    [[nodiscard]] double maxScale() const;
    [[nodiscard]] double fitInScale() const;
    /// The same in device pixels for each pixel. `fitInSmall` enlarges small pictures.
    [[nodiscard]] double minPixelScale() const;
    [[nodiscard]] double fitInPixelScale(bool fitInSmall = false) const;
    /// Parts of the picture lie outside the view, which fitting in would show.
    [[nodiscard]] bool shouldShowNavigation() const;

    friend bool operator==(const ImagePlacement&, const ImagePlacement&) = default;

private:
    using CornerOf = QPointF (ImagePlacement::*)(const QRectF& frame) const;

    void followFitIn();
    /// Without a swipe's offset.
    [[nodiscard]] QTransform settledTransform() const;
    [[nodiscard]] QTransform transformWithCorner(CornerOf cornerOf) const;
    /// Where the top left corner of a picture's bounds belongs, so that there is no gap.
    [[nodiscard]] QPointF heldCorner(const QRectF& frame) const;
    /// The same, at rest on a device pixel.
    [[nodiscard]] QPointF settledCorner(const QRectF& frame) const;

    ImageViewport _viewport;
    QSizeF _imageSize{0, 0};
    QPointF _imageAnchor;
    QPointF _drawAnchor;
    double _angle = 0;
    double _scale = 1.0;
    double _swapOffset = 0;
    bool _isFitIn = false;
    bool _isMoving = false;
};
