#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

/// The area that pictures are shown in, and the device pixels that it covers. At ratios such
/// as 1.25 a view may begin and end within a device pixel: the pixels painted are those that its
/// edges round to, and all geometry works on these. Values that make no sense (negative, not a
/// number) count as a size of 0, an origin of 0, a ratio of 1.
class ImageViewport {
public:
    ImageViewport() = default;
    /// The size in points; the view's corner in its window, in points; device pixels for each
    /// point.
    explicit ImageViewport(
        const QSizeF& size, double devicePixelRatio = 1.0, const QPointF& origin = {});

    [[nodiscard]] double devicePixelRatio() const { return _devicePixelRatio; }
    /// The whole device pixels that the view covers, in points of the view: (0, 0) to its size, to
    /// within half a device pixel.
    [[nodiscard]] QRectF rect() const;
    /// The size of `rect` in device pixels: whole numbers.
    [[nodiscard]] QSizeF pixelSize() const;
    [[nodiscard]] bool isEmpty() const;

    /// The device pixel that the point of the view lies in: its corner, in points of the view.
    /// Whole numbers at a ratio of 1.
    [[nodiscard]] QPointF roundPoint(const QPointF& point) const;
    /// The nearest corner of a device pixel.
    [[nodiscard]] QPointF nearestPixelCorner(const QPointF& point) const;

    friend bool operator==(const ImageViewport&, const ImageViewport&) = default;

private:
    /// Points of the view as device pixels of the window, and back.
    [[nodiscard]] QPointF toPixels(const QPointF& point) const;
    [[nodiscard]] QPointF fromPixels(const QPointF& pixels) const;
    [[nodiscard]] QRectF pixelRect() const;

    QSizeF _size{0, 0};
    double _devicePixelRatio = 1.0;
    QPointF _origin;
};
