#pragma once

#include <array>

/// Steps, limits and the slider of the zoom. All scales here are device pixels for each pixel of
/// the picture: 1 is actual size on every screen. Pure functions, any thread.

inline constexpr std::array<double, 22> zoomScaleTable = {
    0.01,   0.015, 0.02,   0.03, 0.04, 0.05, 0.0625, 0.0833, 0.125, 0.1667, 0.25,
    0.3333, 0.5,   0.6667, 1.0,  2.0,  3.0,  4.0,    5.0,    6.0,   7.0,    8.0};
inline constexpr double minZoomScale = zoomScaleTable.front();
inline constexpr double maxZoomScale = zoomScaleTable.back();

/// Whether both are one scale, to within what converting to points and back costs.
[[nodiscard]] bool isSameScale(double one, double other);

/// The next step of the table above the scale, the last when there is none.
[[nodiscard]] double zoomInScale(double scale);
/// The next step of the table below the scale, the first when there is none.
[[nodiscard]] double zoomOutScale(double scale);

/// What a picture may be reduced to whose longest side, turned as it is shown, has so many pixels:
/// to 20 points, but never below 0.01 nor is it stopped above 1.
[[nodiscard]] double minScaleForLongestSide(double pixels, double devicePixelRatio);

/// The knob for a scale, 0 to 100: 50 for actual size, below 45 and above 55 for all others.
/// `minScale` is that of the picture.
[[nodiscard]] double scaleToSlider(double scale, double minScale);
/// The scale for a knob; 45 to 55 all mean actual size.
[[nodiscard]] double sliderToScale(double slider, double minScale);
/// Where the knob comes to stand: 50 from anywhere between 45 and 55.
[[nodiscard]] double snappedSlider(double slider);

/// What the label shows, in per cent, truncated.
[[nodiscard]] int zoomPercent(double scale);

/// One notch of a wheel, and one event of a touchpad, with the zoom key held: the factor by which
/// the wish grows.
inline constexpr double wheelZoomFactor = 1.33;
inline constexpr double touchpadZoomFactor = 1.03;

/// The factor of zooming by dragging sideways, for so many points to the right of the press: 8 at
/// 300 points, an eighth at -300, and no more than that.
[[nodiscard]] double dragZoomFactor(double distance);
