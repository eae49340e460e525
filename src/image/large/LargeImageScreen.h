#pragma once

#include <QColorSpace>
#include <QSizeF>

/// The screen that large pictures are made for.
struct LargeImageScreen {
    /// The longer side, in points.
    double maxScreenSize = 0;
    /// Device pixels a point, of the window.
    double backingScaleFactor = 1.0;
    /// Of the window's screen; invalid: sRGB.
    QColorSpace colorSpace;

    /// The side of the square that fit-in pictures fit into, in device pixels. Also without a
    /// screen at least 1.
    [[nodiscard]] double fitInSide() const;
    /// Decoded pixels for each pixel of the file (of that size, in pixels) at which it fits that
    /// square; at most 1, and 1 for a size of 0.
    [[nodiscard]] double fitInScaleForImageSize(const QSizeF& imageSize) const;
    /// Decoded pixels for each pixel of the file that a display needs at its zoom, which is points
    /// for each pixel of the file; at most 1.
    [[nodiscard]] double imageScaleForZoomScale(double zoomScale) const;

    friend bool operator==(const LargeImageScreen&, const LargeImageScreen&) = default;
};
