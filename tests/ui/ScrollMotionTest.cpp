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
    /// Where the motion leads after a turn.
    double turned(double time, double delta) {
        now = time;
        motion.wheel(delta);
        return motion.scrollStopPos();
    }

    double now = 0;
    FakeTarget target;
    ScrollMotion motion{target, [this] { return now; }};
};

TEST_F(ScrollMotionTest, turnsOfTheWheelAddUpAndTheFirstTwoAgainstThemAreSwallowed) {
    for (int turn = 0; turn < 4; ++turn)
        motion.wheel(-10);
    for (const double delta : {-10, 10, 10})
        EXPECT_EQ(turned(0.1, delta), 150);
    // Against a motion the way counts from where it is now.
    const double stop = turned(0.1, 10);
    EXPECT_NEAR(stop, std::rint(target.position - 10), 1e-9);
    EXPECT_EQ(motion.scrollPosFlag(), -1);
    tickAt(5);
    EXPECT_EQ(target.ended, std::vector<std::int64_t>{-1});
}

TEST_F(ScrollMotionTest, turnsAddUpUntilTheLastTickAndARestForgetsTheirDirection) {
    turned(0, -10);
    EXPECT_EQ(turned(0.7, -10), 120); // the motion is over, but no tick came: the loop was busy
    EXPECT_EQ(turned(0.8, -10), 130);
    tickAt(2);
    for (const double delta : {10, 0})
        EXPECT_EQ(turned(2, delta), 120);
}

TEST_F(ScrollMotionTest, aNewTargetStartsFromWhereTheMotionIsAndEndsWhereItMayRest) {
    motion.scrollToPosition(1100, true);
    now = 0.3; // not ticked yet
    target.step = 80;
    motion.scrollToPosition(110, true);
    EXPECT_NEAR(target.position, 850, 1e-9);
    EXPECT_EQ(target.begun, 1);
    tickAt(1);
    EXPECT_EQ(target.position, 80);
    motion.scrollToPosition(400, true);
    motion.scrollToPosition(210, false);
    EXPECT_TRUE(target.position == 240 && !motion.isRunning());
    EXPECT_EQ(target.ended, (std::vector<std::int64_t>{0, 0}));
}

} // namespace
