#include "image/large/LargeImageScreen.h"

#include "codec/pixels/Geometry.h"

#include <algorithm>

namespace {

/// Device pixels, where nothing is known of a screen.
constexpr double usualSide = 1920;

} // namespace

double LargeImageScreen::fitInSide() const {
    const double side = maxScreenSize * backingScaleFactor;
    return side >= 1 ? side : usualSide;
}

double LargeImageScreen::fitInScaleForImageSize(const QSizeF& imageSize) const {
    QRectF square(0, 0, fitInSide(), fitInSide());
    return std::min(
        1.0, PBUtilities::fitInRect(square, imageSize.width(), imageSize.height(), false));
}

double LargeImageScreen::imageScaleForZoomScale(double zoomScale) const {
    return std::min(1.0, zoomScale * backingScaleFactor);
}
