#pragma once

#include <QSize>

/// The numbers of a moment of each transition, for raster and shaders alike. Points and lengths are
/// device pixels of the view, from its top left corner; progress is 0 to 1. At 0 each gives the old
/// picture alone, at 1 the new one. Pure functions, any thread.
namespace TransitionShapes {

/// Lengths that look right on a view of 1920 pixels, for the view's longer side.
[[nodiscard]] float unitOf(const QSize& size);

/// A picture that moves to the right.
struct Slide {
    int edge = 0;    ///< columns left of it show the new picture
    float shade = 0; ///< how dark its shadow is at the edge, 0 to 1
    float reach = 1; ///< columns until the shadow ends
};
[[nodiscard]] Slide slideAt(const QSize& size, double progress);

/// An edge that passes over all columns.
struct Wipe {
    float position = 0;
    float width = 1;
};
/// The middle of the bar of light, which reaches `width` to either side; the new picture is left
/// of it.
[[nodiscard]] Wipe copyMachineAt(const QSize& size, double progress);
/// Where the new picture begins to show, to be all there `width` to the right.
[[nodiscard]] Wipe swipeAt(const QSize& size, double progress);

/// Pixels whose value in the map is below the edge show the new picture, softened.
struct Threshold {
    float edge = 0;
    float softness = 1;
    int shadowOffset = 0; ///< rows that the shadow of what is left falls below it; 0: none
    float shadow = 0;     ///< how dark it is, 0 to 1
};
[[nodiscard]] Threshold disintegrateAt(const QSize& size, double progress);
[[nodiscard]] Threshold dissolveAt(double progress);
[[nodiscard]] Threshold modAt(double progress);

struct Burst {
    float light = 0;  ///< of the middle, 1 is white
    float radius = 1; ///< pixels
    float mix = 0;    ///< part of the new picture
};
[[nodiscard]] Burst flashAt(const QSize& size, double progress);

/// A page that is rolled up on a cylinder which rests on the line of those points whose distance
/// along the direction of the curl, (x + y) / sqrt(2), is `axis`.
struct Curl {
    float axis = 0;
    float radius = 1;
    float reach = 1; ///< of its shadow, beyond the cylinder
};
inline constexpr float curlDirection = 0.70710678F;
[[nodiscard]] Curl pageCurlAt(const QSize& size, double progress);

struct Ring {
    float outer = 0; ///< radius; the old picture is beyond it
    float width = 1; ///< the new picture is nearer to the middle than that
    float lift = 0;  ///< pixels by which the water displaces what is seen
};
[[nodiscard]] Ring rippleAt(const QSize& size, double progress);

} // namespace TransitionShapes
