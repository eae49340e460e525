#include "viewer/geometry/SwipeGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

// From so many points on a lifted swipe and a flung one go on.
constexpr double flyOutDistance = 300;
constexpr double flingDistance = 50;

bool hasNeighbour(double offset, const SwipeNeighbours& neighbours) {
    if (offset == 0) return false;
    return offset > 0 ? neighbours.hasNext : neighbours.hasPrevious;
}

} // namespace

double swapOffsetAfter(double offset, double delta) {
    const double moved = std::isfinite(delta) ? offset - delta : offset;
    return std::clamp(moved, -maxSwapOffset, maxSwapOffset);
}

SwipeEnd swipeReleased(double offset, const SwipeNeighbours& neighbours) {
    if (offset != 0 && !hasNeighbour(offset, neighbours)) return SwipeEnd::SpringBack;
    return std::abs(offset) > flyOutDistance ? SwipeEnd::FlyOut : SwipeEnd::WaitForFling;
}

SwipeEnd swipeFlung(double offset, const SwipeNeighbours& neighbours) {
    return hasNeighbour(offset, neighbours) && std::abs(offset) > flingDistance
               ? SwipeEnd::FlyOut
               : SwipeEnd::SpringBack;
}

SwipeAnimation swipeAnimation(SwipeEnd end, double offset, double viewWidth) {
    if (end != SwipeEnd::FlyOut) return {offset, 0};
    return {offset, offset > 0 ? viewWidth : -viewWidth};
}

double neighbourCover(double offset, double viewWidth) {
    if (!(viewWidth > 0)) return 0;
    return 1 - std::min(std::abs(offset) / viewWidth, 1.0);
}
