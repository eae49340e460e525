#include "viewer/geometry/ZoomScales.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double actualSize = 1.0;
constexpr double smallestSide = 20; // points

// The slider's flat stretch.
constexpr double flatStart = 45;
constexpr double flatEnd = 55;
constexpr double flatMiddle = 50;
constexpr double sliderEnd = 100;

constexpr double scaleTolerance = 1e-9;

constexpr double dragZoomDistance = 300;

bool isFlat(double slider) {
    return slider >= flatStart && slider <= flatEnd;
}

} // namespace

bool isSameScale(double one, double other) {
    return std::abs(one - other) <= scaleTolerance * std::max(std::abs(one), std::abs(other));
}

double zoomInScale(double scale) {
    const auto* step = std::ranges::find_if(zoomScaleTable, [scale](double entry) {
        return entry > scale && !isSameScale(entry, scale);
    });
    return step == zoomScaleTable.end() ? maxZoomScale : *step;
}

double zoomOutScale(double scale) {
    const auto step =
        std::find_if(zoomScaleTable.rbegin(), zoomScaleTable.rend(), [scale](double entry) {
            return entry < scale && !isSameScale(entry, scale);
        });
    return step == zoomScaleTable.rend() ? minZoomScale : *step;
}

double minScaleForLongestSide(double pixels, double devicePixelRatio) {
    if (!(pixels > 0)) return actualSize;
    return std::clamp(smallestSide * devicePixelRatio / pixels, minZoomScale, actualSize);
}

double scaleToSlider(double scale, double minScale) {
    if (isSameScale(scale, actualSize)) return flatMiddle;
    if (scale > actualSize)
        return std::min(
            (scale - actualSize) / (maxZoomScale - actualSize) * flatStart + flatEnd, sliderEnd);
    // A view that is smaller than the picture's smallest size has scales below the smallest.
    if (!(scale > minScale)) return 0;
    return (scale - minScale) / (actualSize - minScale) * flatStart;
}

double sliderToScale(double slider, double minScale) {
    if (slider < flatStart)
        return (actualSize - minScale) * std::max(slider, 0.0) / flatStart + minScale;
    if (slider > flatEnd)
        return (std::min(slider, sliderEnd) - flatEnd) * (maxZoomScale - actualSize) / flatStart +
               actualSize;
    return actualSize;
}

double snappedSlider(double slider) {
    return isFlat(slider) ? flatMiddle : slider;
}

int zoomPercent(double scale) {
    return static_cast<int>(std::floor(scale * 100 * (1 + scaleTolerance)));
}

double dragZoomFactor(double distance) {
    const double limited = std::clamp(distance, -dragZoomDistance, dragZoomDistance);
    const double factor = 1 + std::abs(limited) * (maxZoomScale - actualSize) / dragZoomDistance;
    return limited > 0 ? factor : 1 / factor;
}
