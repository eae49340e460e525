#pragma once

#include "viewer/geometry/GeometryAnimation.h"

/// Pulling the next or the previous photograph in from the side. An offset is how far the present
/// picture was pulled to the left, in points: above 0 the next one comes, below 0 the previous.
/// Pure functions, any thread.

inline constexpr double maxSwapOffset = 16000;
/// How long lifted fingers may take to become a fling, in seconds.
inline constexpr double swipeFlingWait = 0.1;

/// The offset after the fingers moved to the right by so much.
[[nodiscard]] double swapOffsetAfter(double offset, double delta);

enum class SwipeEnd { FlyOut, SpringBack, WaitForFling };

/// Which neighbours there are to swipe to.
struct SwipeNeighbours {
    bool hasNext = false;
    bool hasPrevious = false;
};

/// The fingers were lifted. `WaitForFling`: it springs back unless a fling comes in time.
[[nodiscard]] SwipeEnd swipeReleased(double offset, const SwipeNeighbours& neighbours);
/// The lifted fingers had momentum.
[[nodiscard]] SwipeEnd swipeFlung(double offset, const SwipeNeighbours& neighbours);

/// Out of the view on the side that it was pulled to, or back to its place. The stop of one that
/// flies out tells by its sign where to go: above 0 to the next photograph.
[[nodiscard]] SwipeAnimation swipeAnimation(SwipeEnd end, double offset, double viewWidth);

/// How strongly the ground covers the neighbour beneath: 1 when nothing is pulled, 0 from a full
/// view's width on.
[[nodiscard]] double neighbourCover(double offset, double viewWidth);
