#include "viewer/slideshow/transitions/TransitionShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace TransitionShapes {

namespace {

constexpr float slideReach = 60;
constexpr float barWidth = 200;
constexpr float swipeWidth = 300;
constexpr float curlRadius = 110;
constexpr float curlReach = 120;
constexpr float ringWidth = 220;
constexpr float ringLift = 34;

float part(double progress) {
    return static_cast<float>(std::clamp(progress, 0.0, 1.0));
}

float along(float from, float to, float part) {
    return from + (to - from) * part;
}

/// So that the softened edge is beyond every value of the map at both ends.
Threshold threshold(double progress, float softness) {
    return {.edge = part(progress) * (1 + softness), .softness = softness};
}

float halfDiagonal(const QSize& size) {
    return std::hypot(static_cast<float>(size.width()), static_cast<float>(size.height())) / 2;
}

} // namespace

float unitOf(const QSize& size) {
    return static_cast<float>(std::max({size.width(), size.height(), 1})) / 1920.0F;
}

Slide slideAt(const QSize& size, double progress) {
    const float done = part(progress);
    return {
        .edge = static_cast<int>(std::lround(static_cast<float>(size.width()) * done)),
        .shade = 0.55F * std::min({1.0F, 10 * done, 10 * (1 - done)}),
        .reach = std::max(1.0F, slideReach * unitOf(size))};
}

Wipe copyMachineAt(const QSize& size, double progress) {
    const float width = barWidth * unitOf(size);
    return {along(-width, static_cast<float>(size.width()) + width, part(progress)), width};
}

Wipe swipeAt(const QSize& size, double progress) {
    const float width = swipeWidth * unitOf(size);
    return {along(static_cast<float>(size.width()), -width, part(progress)), width};
}

Threshold disintegrateAt(const QSize& size, double progress) {
    Threshold shape = threshold(progress, 0.04F);
    shape.shadowOffset = std::max(1, static_cast<int>(std::lround(14 * unitOf(size))));
    shape.shadow = 0.65F;
    return shape;
}

Threshold dissolveAt(double progress) {
    return threshold(progress, 0.12F);
}

Threshold modAt(double progress) {
    return threshold(progress, 0.015F);
}

Burst flashAt(const QSize& size, double progress) {
    const float done = part(progress);
    const float turn = std::clamp((done - 0.3F) / 0.4F, 0.0F, 1.0F);
    const float wave = std::sin(std::numbers::pi_v<float> * done);
    return {
        .light = done >= 1 ? 0.0F : 1.5F * wave * wave,
        .radius = halfDiagonal(size) * along(0.45F, 1.5F, done),
        .mix = turn * turn * (3 - 2 * turn)};
}

Curl pageCurlAt(const QSize& size, double progress) {
    const float unit = unitOf(size);
    const float radius = curlRadius * unit;
    const float reach = curlReach * unit;
    const float corner = curlDirection * static_cast<float>(size.width() + size.height());
    return {along(corner, -radius - reach, part(progress)), radius, reach};
}

Ring rippleAt(const QSize& size, double progress) {
    const float unit = unitOf(size);
    const float width = ringWidth * unit;
    return {part(progress) * (halfDiagonal(size) + width + 1), width, ringLift * unit};
}

} // namespace TransitionShapes
