#pragma once

#include "viewer/geometry/ImagePlacement.h"

/// The miniature of the picture in the corner of the large view, with the visible part marked.
/// Points are those of the miniature. A value; any thread.
class NavigationGeometry {
public:
    /// The miniature's own area, and the large view's picture, which it shows turned as there.
    NavigationGeometry(const ImageViewport& bounds, const ImagePlacement& large);

    /// Takes points of the picture to points of the miniature.
    [[nodiscard]] QTransform drawTransform() const { return _miniature.drawTransform(); }
    /// Points of the miniature for each pixel of the picture.
    [[nodiscard]] double scale() const { return _miniature.scale(); }
    /// The picture's four corners.
    [[nodiscard]] const QPolygonF& imagePolygon() const { return _imagePolygon; }
    /// The part that the large view shows, kept within the picture and a point within the
    /// miniature's edges, so that its line is seen.
    [[nodiscard]] const QPolygonF& visiblePolygon() const { return _visiblePolygon; }
    /// Where a press takes hold of the mark: its bounds, at least 12 by 12.
    [[nodiscard]] QRectF grabRect() const;
    /// The large view's draw anchor once the mark was dragged from one point to another;
    /// `downDrawAnchor` is what it was at the press, after `centerAnchor`.
    [[nodiscard]] QPointF
    draggedDrawAnchor(const QPointF& downDrawAnchor, const QPointF& from, const QPointF& to) const;

private:
    ImagePlacement _miniature;
    double _largeScale;
    QPolygonF _imagePolygon;
    QPolygonF _visiblePolygon;
};
