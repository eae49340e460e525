#include "browser/layout/BrowserMetrics.h"

#include <bit>
#include <cmath>

namespace {

constexpr double sizeRange = BrowserMetrics::maxThumbnailSize - BrowserMetrics::minThumbnailSize;

/// `low` at the smallest thumbnail, `high` at the largest.
double growing(double thumbnailSize, double low, double high) {
    const double grown = thumbnailSize - BrowserMetrics::minThumbnailSize;
    return std::rint((high - low) * grown / sizeRange + low);
}

// The slider's flat stretch, and the points of thumbnail size on each side of it.
constexpr double flatStart = 45;
constexpr double flatEnd = 55;
constexpr double flatMiddle = 50;
constexpr double halfRange = sizeRange / 2;

} // namespace

double BrowserMetrics::cellSpace() const {
    return growing(thumbnailSize, 10, 20);
}

double BrowserMetrics::selectSize() const {
    return growing(thumbnailSize, 3, 3);
}

double BrowserMetrics::dashWidth() const {
    return growing(thumbnailSize, 2, 4);
}

double BrowserMetrics::textRowsHeight() const {
    return textRowHeight * std::popcount(style & (FileName | FileSize | ImageSize));
}

double BrowserMetrics::fittedHeight(double width, double height) const {
    if (!(width > 0) || !(height > 0)) return 0;
    // The same steps as PBUtilities::fitInRect in a square, for the height alone: this runs once
    // for every image of the sheet.
    const bool enlarges = has(EnlargeSmallPhoto);
    const double edge = thumbnailSize;
    if (edge * height > edge * width) return std::rint(!enlarges && edge > height ? height : edge);
    const double placedWidth = !enlarges && edge > width ? width : edge;
    return std::rint(height * placedWidth / width);
}

double sliderToThumbSize(double slider) {
    if (slider < flatStart)
        return std::rint(slider * halfRange / flatStart + BrowserMetrics::minThumbnailSize);
    if (slider > flatEnd)
        return std::rint(
            (slider - flatEnd) * halfRange / flatStart + BrowserMetrics::defaultThumbnailSize);
    return BrowserMetrics::defaultThumbnailSize;
}

double thumbSizeToSlider(double thumbnailSize) {
    if (thumbnailSize == BrowserMetrics::defaultThumbnailSize) return flatMiddle;
    if (thumbnailSize < BrowserMetrics::defaultThumbnailSize)
        return std::rint(
            (thumbnailSize - BrowserMetrics::minThumbnailSize) / halfRange * flatStart);
    return std::rint(
        (thumbnailSize - BrowserMetrics::defaultThumbnailSize) / halfRange * flatStart + flatEnd);
}
