#include "viewer/geometry/SwipeGeometry.h"

#include <gtest/gtest.h>

TEST(SwipeGeometryTest, distanceFlingAndNeighboursDecideWhereASwipeEnds) {
    using enum SwipeEnd;
    using Row = std::tuple<double, SwipeEnd, SwipeEnd>;
    for (const auto& [offset, released, flung] :
         {Row(300, WaitForFling, FlyOut), Row(300.5, FlyOut, FlyOut),
          Row(50, WaitForFling, SpringBack), Row(0, WaitForFling, SpringBack),
          Row(-10, SpringBack, SpringBack), Row(-9000, SpringBack, SpringBack)}) {
        EXPECT_EQ(swipeReleased(offset, {.hasNext = true}), released) << offset;
        EXPECT_EQ(swipeFlung(offset, {.hasNext = true}), flung) << offset;
    }
    EXPECT_EQ(swipeReleased(-301, {.hasPrevious = true}), FlyOut);
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
    EXPECT_EQ(neighbourCover(-200, 800), 0.75);
    EXPECT_EQ(neighbourCover(900, 800), 0);
}
