#include "viewer/slideshow/transitions/RasterSurfaces.h"

#include "viewer/slideshow/transitions/RasterPixels.h"
#include "viewer/slideshow/transitions/TransitionShapes.h"

#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

namespace RasterSurfaces {

namespace {

using namespace RasterPixels;

constexpr float pi = std::numbers::pi_v<float>;

/// The angle of a sine of 0 to 1.
float angleOf(float sine) {
    constexpr std::size_t steps = 2048;
    static const auto table = [] {
        std::array<float, steps + 1> angles{};
        for (std::size_t step = 0; step <= steps; ++step)
            angles[step] = std::asin(static_cast<float>(step) / steps);
        return angles;
    }();
    return table[static_cast<std::size_t>(std::clamp(sine, 0.0F, 1.0F) * steps)];
}

/// How steep the water stands in its ring, from the outer edge, 0, to the inner, 1.
float slopeAt(float part) {
    constexpr std::size_t steps = 1024;
    static const auto table = [] {
        std::array<float, steps + 1> slopes{};
        for (std::size_t step = 0; step <= steps; ++step) {
            const float place = pi * static_cast<float>(step) / steps;
            slopes[step] = std::sin(2 * place) * std::sin(place);
        }
        return slopes;
    }();
    return table[static_cast<std::size_t>(part * steps)];
}

/// A page on its cylinder, asked pixel by pixel.
class CurledPage {
public:
    explicit CurledPage(const TransitionFrame& frame)
        : _shape(TransitionShapes::pageCurlAt(frame.from.size(), frame.progress)),
          _from(frame.from), _shine(restrictedShineImage()),
          _width(static_cast<float>(frame.from.width())),
          _height(static_cast<float>(frame.from.height())) {}

    [[nodiscard]] QRgb at(float x, float y, QRgb from, QRgb to) const {
        const float beyond = TransitionShapes::curlDirection * (x + y) - _shape.axis;
        if (beyond > _shape.radius) return uncovered(to, beyond - _shape.radius);
        if (beyond >= 0) return onCylinder(x, y, beyond, to);
        // The flat part may lie under what has been rolled over it.
        const float over = pi * _shape.radius - 2 * beyond;
        const float backX = x + TransitionShapes::curlDirection * over;
        const float backY = y + TransitionShapes::curlDirection * over;
        const float outside = std::max(backX - _width, backY - _height);
        if (outside < 0) return back(backX, backY, 0);
        const float left = 1 - outside / _shape.radius;
        return left <= 0 ? from : darkened(from, weightOf(0.45F * left * left));
    }

private:
    [[nodiscard]] QRgb uncovered(QRgb to, float distance) const {
        const float left = 1 - distance / _shape.reach;
        return left <= 0 ? to : darkened(to, weightOf(0.5F * left * left));
    }
    [[nodiscard]] QRgb onCylinder(float x, float y, float beyond, QRgb to) const {
        const float sine = beyond / _shape.radius;
        const float angle = angleOf(sine);
        const float upper =
            TransitionShapes::curlDirection * (_shape.radius * (pi - angle) - beyond);
        if (x + upper < _width && y + upper < _height) return back(x + upper, y + upper, sine);
        const float lower = TransitionShapes::curlDirection * (_shape.radius * angle - beyond);
        if (x + lower < _width && y + lower < _height) {
            const float lean = -TransitionShapes::curlDirection * sine;
            return _shine.over(_from.between(x + lower, y + lower), lean, lean);
        }
        return uncovered(to, 0);
    }
    /// White paper that the picture shines through.
    [[nodiscard]] QRgb back(float x, float y, float sine) const {
        const QRgb paper = mixed(_from.between(x, y), 0xfff4f2eeU, weightOf(0.8F));
        const float lean = TransitionShapes::curlDirection * sine;
        return _shine.over(paper, lean, lean);
    }

    const TransitionShapes::Curl _shape;
    const Source _from;
    const Shine _shine;
    const float _width;
    const float _height;
};

} // namespace

void paintPageCurl(
    const TransitionFrame& frame, const RasterTransitions::Target& target, int firstRow,
    int endRow) {
    const CurledPage page(frame);
    const Source from(frame.from);
    const Source to(frame.to);
    for (int y = firstRow; y < endRow; ++y) {
        QRgb* row = target.pixels + y * target.stride;
        const QRgb* fromRow = from.row(y);
        const QRgb* toRow = to.row(y);
        const float line = static_cast<float>(y) + 0.5F;
        for (int x = 0; x < from.width(); ++x)
            row[x] = page.at(static_cast<float>(x) + 0.5F, line, fromRow[x], toRow[x]);
    }
}

void paintRipple(
    const TransitionFrame& frame, const RasterTransitions::Target& target, int firstRow,
    int endRow) {
    const auto ring = TransitionShapes::rippleAt(frame.from.size(), frame.progress);
    const Source from(frame.from);
    const Source to(frame.to);
    const Shine shine(restrictedShineImage());
    const float middleX = static_cast<float>(from.width()) / 2;
    const float middleY = static_cast<float>(from.height()) / 2;
    for (int y = firstRow; y < endRow; ++y) {
        QRgb* row = target.pixels + y * target.stride;
        const QRgb* fromRow = from.row(y);
        const QRgb* toRow = to.row(y);
        const float down = static_cast<float>(y) + 0.5F - middleY;
        for (int x = 0; x < from.width(); ++x) {
            const float right = static_cast<float>(x) + 0.5F - middleX;
            const float distance = std::sqrt(right * right + down * down);
            const float part = (ring.outer - distance) / ring.width;
            if (part <= 0 || part >= 1) {
                row[x] = part <= 0 ? fromRow[x] : toRow[x];
                continue;
            }
            const float lean = slopeAt(part) / std::max(distance, 1.0F);
            const float seenX = static_cast<float>(x) + 0.5F - right * lean * ring.lift;
            const float seenY = static_cast<float>(y) + 0.5F - down * lean * ring.lift;
            const QRgb colour = mixed(
                from.between(seenX, seenY), to.between(seenX, seenY),
                weightOf(part * part * (3 - 2 * part)));
            row[x] = shine.over(colour, right * lean, down * lean);
        }
    }
}

} // namespace RasterSurfaces
