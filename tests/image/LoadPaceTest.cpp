#include "image/large/LoadPace.h"

#include "support/Support.h"

using namespace std::chrono_literals;
using Duration = LoadPace::Duration;

namespace {

constexpr double pixels = 24e6;

LoadPace::Load loadOf(int index, bool isOriginal = false) {
    return {.index = index, .pixels = pixels, .isOriginal = isOriginal};
}

struct LoadPaceTest : testing::Test {
    /// To the index in single steps, as far apart.
    void step(int to, Duration interval) {
        while (index != to) {
            now += interval;
            pace.didStep(index += index < to ? 1 : -1);
        }
    }
    /// How far ahead the nearest load lies that may begin.
    int nearest() const {
        int ahead = 0;
        while (ahead < 99 && !pace.mayBegin(loadOf(index + ahead)))
            ++ahead;
        return ahead;
    }

    int index = 0;
    LoadPace::Time now{};
    LoadPace pace{[this] { return now; }};
};

} // namespace

TEST_F(LoadPaceTest, WhatBeginsWhileAKeyIsHeldShouldEndBeforeItIsPassed) {
    step(3, 40ms);
    EXPECT_EQ(nearest(), 4) << "before any was seen: 150 ms, and a quarter more";
    pace.didLoad(18ms, loadOf(0));
    EXPECT_EQ(nearest(), 0);
    pace.didLoad(1s, loadOf(0)); // bad luck counts for four times the others at most: 45 ms
    EXPECT_EQ(nearest(), 1);
    for (const Duration stoppedAfter : {90ms, 10ms})
        pace.didStop(stoppedAfter, loadOf(0));
    EXPECT_EQ(nearest(), 2) << "they take longer than that";
    for (int load = 0; load < 2; ++load)
        pace.didLoad(10ms, loadOf(0)); // quick ones are believed slowly: 55 ms
    pace.didLoad(1s, {});
    pace.didStop(1s, {}); // of nothing
    EXPECT_EQ(nearest(), 1);
    now += 30ms;
    EXPECT_EQ(nearest(), 2) << "the next step is near";
    step(4, 50ms);
    EXPECT_EQ(nearest(), 1) << "it was late, and counts for half";
}

TEST_F(LoadPaceTest, APauseOrTheKeyLetGoEndsTheHasteAndSingleStepsAreNone) {
    step(2, 400ms);
    EXPECT_TRUE(pace.mayBegin(loadOf(2)));
    const auto hurry = [&] {
        step(index + 3, 33ms);
        EXPECT_FALSE(pace.mayBegin(loadOf(index)));
    };
    hurry();
    const auto wait = pace.untilPause();
    ASSERT_TRUE(wait);
    EXPECT_LE(*wait, 150ms);
    now += *wait - 1ms;
    EXPECT_FALSE(pace.mayBegin(loadOf(index)));
    now += 1ms;
    EXPECT_TRUE(pace.mayBegin(loadOf(index)));
    EXPECT_FALSE(pace.untilPause());
    hurry();
    pace.didEndStepping();
    EXPECT_TRUE(pace.mayBegin(loadOf(index)));
    // Going back, what lies ahead has lower indices; and small pictures are there at once.
    hurry();
    step(index - 1, 33ms);
    EXPECT_FALSE(pace.mayBegin(loadOf(index + 10)));
    EXPECT_TRUE(pace.mayBegin(loadOf(index - 10)));
    EXPECT_TRUE(pace.mayBegin({.index = index - 2, .pixels = pixels / 50}));
    // What was seen of the one kind of loads says nothing of the other.
    pace.didLoad(1ms, loadOf(index));
    EXPECT_TRUE(pace.mayBegin(loadOf(index)));
    EXPECT_FALSE(pace.mayBegin(loadOf(index, true)));
}
