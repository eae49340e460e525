#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRect>

/// The soft shadow of rectangles: blurred once, then drawn from nine parts at any size. Main
/// thread.
class ShadowPatch {
public:
    /// All lengths in device pixels. The shadow fades out over `radius` on both sides of the edge
    /// and lies `offset` below the rectangle.
    void prepare(int radius, int offset, const QColor& color);
    /// Draws what shows around the rectangle, and a little below it; the painter maps points to
    /// device pixels one to one.
    void draw(QPainter& painter, const QRect& rect) const;
    /// How far the shadow reaches beyond the rectangle.
    [[nodiscard]] int extent() const { return _radius + _offset; }

private:
    int _radius = -1;
    int _offset = 0;
    QColor _color;
    QImage _patch; // a rectangle of 2 radii and a pixel, with a radius of fading around it
};
