#include "platform/MainLoop.h"

#include "support/Support.h"

#include <gtest/gtest.h>

#include <thread>

using namespace std::chrono_literals;
using platform::MainLoop;
using platform::TrackingScope;
using support::spinUntil;

namespace {

class MainLoopTest : public testing::Test {
protected:
    std::function<void()> note(int name) {
        return [this, name] { ran.push_back(name); };
    }

    MainLoop loop;
    std::vector<int> ran;
    int target = 0;
    int other = 0;
};

TEST_F(MainLoopTest, postedCallsRunInOrderAndNeverAtOnce) {
    loop.post(MainLoop::Mode::Default, [this] {
        ran.push_back(1);
        loop.post(MainLoop::Mode::Default, note(3));
    });
    loop.post(MainLoop::Mode::Default, note(2));
    EXPECT_TRUE(ran.empty());
    ASSERT_TRUE(spinUntil([this] { return ran.size() == 3; }));
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

TEST_F(MainLoopTest, defaultCallsWaitForTheEndOfTracking) {
    {
        const TrackingScope outer;
        loop.post(MainLoop::Mode::Default, note(1));
        loop.performAfterDelay(&target, "delayed", 0ms, note(2));
        loop.post(MainLoop::Mode::Common, note(3));
        { const TrackingScope inner; }
        ASSERT_TRUE(spinUntil([this] { return !ran.empty(); }));
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
        EXPECT_EQ(ran, std::vector{3});
    }
    ASSERT_TRUE(spinUntil([this] { return ran.size() == 3; }));
    EXPECT_TRUE(std::ranges::count(ran, 1) == 1 && std::ranges::count(ran, 2) == 1);
}

TEST_F(MainLoopTest, trackingBegunByACallHoldsBackTheCallsBehindIt) {
    std::optional<TrackingScope> scope;
    loop.post(MainLoop::Mode::Default, [&] { scope.emplace(); });
    loop.post(MainLoop::Mode::Default, note(1));
    loop.post(MainLoop::Mode::Default, note(2));
    ASSERT_TRUE(spinUntil([&] { return scope.has_value(); }));
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
    EXPECT_TRUE(ran.empty());
    scope.reset();
    loop.post(MainLoop::Mode::Default, note(3));
    ASSERT_TRUE(spinUntil([this] { return ran.size() == 3; }));
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

TEST_F(MainLoopTest, delayedCallsRunByDeadlineThenByArrival) {
    loop.performAfterDelay(&target, "a", 20ms, note(3));
    loop.performAfterDelay(&target, "b", 0ms, note(1));
    loop.performAfterDelay(&other, "c", 0ms, note(2));
    EXPECT_TRUE(ran.empty());
    ASSERT_TRUE(spinUntil([this] { return ran.size() == 3; }));
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

TEST_F(MainLoopTest, delayedCallsAreCancelledByTargetNameAndArgument) {
    const auto argument = std::make_shared<PBCancelDelayArg>();
    loop.performAfterDelay(&target, "a", 0ms, note(1), argument);
    loop.performAfterDelay(&target, "b", 0ms, note(2), argument);
    loop.performAfterDelay(&target, "b", 0ms, note(3));
    loop.performAfterDelay(&other, "a", 0ms, note(4));
    // Any fresh argument removes the call made with another one, but not one made without.
    loop.cancelPreviousPerformRequestsWithTarget(&target, "b", PBCancelDelayArg());
    loop.cancelPreviousPerformRequestsWithTarget(&target, "a");
    loop.performAfterDelay(&target, "end", 0ms, note(9));
    ASSERT_TRUE(spinUntil([this] { return !ran.empty() && ran.back() == 9; }));
    EXPECT_EQ(ran, (std::vector{3, 4, 9}));

    ran.clear();
    loop.performAfterDelay(&target, "a", 0ms, note(1));
    loop.performAfterDelay(&other, "a", 0ms, [this] {
        ran.push_back(2);
        loop.cancelPreviousPerformRequestsWithTarget(&target); // one that is due in this round
    });
    loop.performAfterDelay(&target, "late", 0ms, note(5));
    loop.performAfterDelay(&other, "end", 0ms, note(9));
    ASSERT_TRUE(spinUntil([this] { return !ran.empty() && ran.back() == 9; }));
    EXPECT_EQ(ran, (std::vector{1, 2, 9}));
}

TEST_F(MainLoopTest, callThatSchedulesItselfLeavesTheLoopTimeForOthers) {
    bool done = false;
    std::function<void()> again = [&] {
        ran.push_back(1);
        if (!done) loop.performAfterDelay(&target, "again", 0ms, again);
    };
    loop.performAfterDelay(&target, "again", 0ms, again);
    loop.post(MainLoop::Mode::Default, [&] { done = true; });
    EXPECT_TRUE(spinUntil([&] { return done; }));
    loop.cancelPreviousPerformRequestsWithTarget(&target);
}

TEST_F(MainLoopTest, callsOfOneThreadKeepTheirOrderAmongThoseOfMany) {
    constexpr int count = 500;
    std::vector<std::vector<int>> seen(3);
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < seen.size(); ++thread) {
            threads.emplace_back([&, thread] {
                for (int i = 0; i < count; ++i) {
                    loop.post(
                        MainLoop::Mode::Default, [&, thread, i] { seen[thread].push_back(i); });
                }
            });
        }
        ASSERT_TRUE(spinUntil([&] {
            return std::ranges::all_of(seen, [](const auto& one) { return one.size() == count; });
        }));
    }
    for (const auto& one : seen)
        EXPECT_TRUE(std::ranges::is_sorted(one));
}

} // namespace
