#include "viewer/geometry/SwipeGeometry.h"

#include <gtest/gtest.h>

namespace {

TEST(SwipeGeometryTest, distanceFlingAndNeighboursDecideWhereASwipeEnds) {
    const SwipeNeighbours onlyNext{.hasNext = true};
    for (const auto& [offset, released, flung] :
         {std::tuple(299.0, SwipeEnd::WaitForFling, SwipeEnd::FlyOut),
          {300.5, SwipeEnd::FlyOut, SwipeEnd::FlyOut},
          {50.0, SwipeEnd::WaitForFling, SwipeEnd::SpringBack},
          {0.0, SwipeEnd::WaitForFling, SwipeEnd::SpringBack},
          {-10.0, SwipeEnd::SpringBack, SwipeEnd::SpringBack},
          {-9000.0, SwipeEnd::SpringBack, SwipeEnd::SpringBack}}) {
        EXPECT_EQ(swipeReleased(offset, onlyNext), released) << offset;
        EXPECT_EQ(swipeFlung(offset, onlyNext), flung) << offset;
    }
    EXPECT_EQ(swipeReleased(-301, {.hasPrevious = true}), SwipeEnd::FlyOut);
    EXPECT_EQ(swapOffsetAfter(15990, -20), maxSwapOffset);
    EXPECT_EQ(swapOffsetAfter(-15990, 20), -maxSwapOffset);
}

TEST(SwipeGeometryTest, aSwipeFliesOutOnItsSideAndUncoversTheNeighbour) {
    EXPECT_EQ(swipeAnimation(SwipeEnd::FlyOut, 320, 800).stop, 800);
    EXPECT_EQ(swipeAnimation(SwipeEnd::FlyOut, -320, 800).stop, -800);
    const SwipeAnimation back = swipeAnimation(SwipeEnd::SpringBack, -320, 800);
    EXPECT_EQ(back.valueAt(0), -320);
    EXPECT_NEAR(back.valueAt(0.175), -320 + 320 * (2.0 / 3) / (8.0 / 9), 1e-9);
    EXPECT_EQ(back.valueAt(0.35), 0);
    for (const auto& [offset, cover] : {std::pair(0.0, 1.0), {-200.0, 0.75}, {900.0, 0.0}})
        EXPECT_EQ(neighbourCover(offset, 800), cover) << offset;
}

} // namespace
