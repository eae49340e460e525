#include "ui/ScrollMotion.h"
#include "support/Support.h"

namespace {

struct FakeTarget final : ScrollTarget {
    double scrollPosition() const override { return position; }
    void setScrollPosition(double wanted) override { position = wanted; }
    double roundPosition(double wanted) const override { return std::rint(wanted / step) * step; }
    void scrollTimeWillBegin() override { ++begun; }
    void scrollTimeDidEnd(std::int64_t direction) override { ended.push_back(direction); }

    double position = 100;
    double step = 1;
    int begun = 0;
    std::vector<std::int64_t> ended;
};

struct ScrollMotionTest : ::testing::Test {
    void tickAt(double time) {
        now = time;
        motion.tick();
    }

    double now = 0;
    FakeTarget target;
    ScrollMotion motion{target, [this] { return now; }};
};

TEST_F(ScrollMotionTest, theCurveStartsAtTheStartAndEndsExactlyAtTheEnd) {
    motion.scrollToPosition(1100, true);
    tickAt(0);
    EXPECT_EQ(target.position, 100);
    // The defaults: 0.6 s, length 2, base 3.
    tickAt(0.3);
    EXPECT_NEAR(target.position, 100 + 1000 * (1 - 1.0 / 3) / (1 - 1.0 / 9), 1e-9);
    tickAt(0.5999);
    EXPECT_LT(target.position, 1100);
    EXPECT_TRUE(target.ended.empty());
    tickAt(0.6);
    EXPECT_EQ(target.position, 1100);
    EXPECT_FALSE(motion.isRunning());
    EXPECT_EQ(target.begun, 1);
    EXPECT_EQ(target.ended.size(), 1U);
}

TEST_F(ScrollMotionTest, turnsOfTheWheelAddUpAndTheFirstTwoAgainstThemAreSwallowed) {
    motion.wheel(-10);
    now = 0.1;
    motion.wheel(-10);
    EXPECT_EQ(motion.scrollStopPos(), 120);
    for (int turn = 0; turn < 2; ++turn) {
        motion.wheel(10);
        EXPECT_EQ(motion.scrollStopPos(), 120) << turn;
    }
    motion.wheel(10);
    // Against a motion the way counts from where it is now.
    EXPECT_NEAR(motion.scrollStopPos(), std::rint(target.position - 10), 1e-9);
    EXPECT_EQ(motion.scrollPosFlag(), -1);
    tickAt(5);
    EXPECT_EQ(target.ended, std::vector<std::int64_t>{-1});
}

TEST_F(ScrollMotionTest, aWheelTurnedAfterTheMotionIsOverButBeforeItsLastTickKeepsAddingUp) {
    motion.wheel(-10);
    now = 0.7; // no tick came since: the loop was busy
    motion.wheel(-10);
    now = 0.8;
    motion.wheel(-10);
    EXPECT_EQ(motion.scrollStopPos(), 130);
}

TEST_F(ScrollMotionTest, aRestPeriodForgetsTheDirectionOfTheWheel) {
    motion.wheel(-10);
    motion.wheel(-10);
    tickAt(1);
    motion.wheel(10);
    EXPECT_EQ(motion.scrollStopPos(), 110);
    motion.wheel(0);
    EXPECT_EQ(motion.scrollStopPos(), 110);
}

TEST_F(ScrollMotionTest, aNewTargetStartsFromWhereTheMotionIs) {
    motion.scrollToPosition(1100, true);
    now = 0.3; // not ticked yet
    motion.scrollToPosition(0, true);
    EXPECT_NEAR(target.position, 850, 1e-9);
    EXPECT_EQ(target.begun, 1);
    tickAt(0.3 + 0.6);
    EXPECT_EQ(target.position, 0);
}

TEST_F(ScrollMotionTest, contentThatMovesTakesTheMotionAlong) {
    motion.scrollToPosition(200, true);
    tickAt(0.3);
    const double before = target.position;
    motion.updateScrollAmtByOffset(1000);
    tickAt(0.3);
    EXPECT_NEAR(target.position, before + 1000, 1e-9);
    tickAt(0.6);
    EXPECT_EQ(target.position, 1200);
    motion.updateScrollAmtByOffset(1000); // at rest: nothing
    EXPECT_EQ(target.position, 1200);
}

} // namespace
