#include "platform/tasks/MainLoop.h"

#include "support/Support.h"

using namespace std::chrono_literals;
using platform::MainLoop;
using platform::TrackingScope;
using support::spinUntil;

namespace {

struct MainLoopTest : testing::Test {
    static void runEvents() {
        for (int i = 0; i < 20; ++i)
            QCoreApplication::processEvents();
    }
    auto note(int name) {
        return [this, name] { ran.push_back(name); };
    }

    void expectToRun(const std::vector<int>& names) {
        EXPECT_TRUE(spinUntil([&] { return ran.size() >= names.size(); }));
        EXPECT_EQ(ran, names);
    }

    MainLoop loop;
    std::vector<int> ran;
    int target = 0;
    int other = 0;
};

TEST_F(MainLoopTest, defaultCallsWaitForTheEndOfTracking) {
    std::optional<TrackingScope> outer(std::in_place);
    loop.post(MainLoop::Mode::Default, note(1));
    loop.performAfterDelay(&target, "delayed", 0ms, note(2));
    loop.post(MainLoop::Mode::Common, note(3));
    { const TrackingScope inner; }
    ASSERT_TRUE(spinUntil([this] { return !ran.empty(); }));
    runEvents();
    EXPECT_EQ(ran, std::vector{3});
    outer.reset();
    ASSERT_TRUE(spinUntil([this] { return ran.size() == 3; }));
    EXPECT_TRUE(std::ranges::count(ran, 1) == 1 && std::ranges::count(ran, 2) == 1);
}

TEST_F(MainLoopTest, trackingBegunByACallHoldsBackTheCallsBehindIt) {
    std::optional<TrackingScope> scope;
    loop.post(MainLoop::Mode::Default, [&] {
        scope.emplace();
        loop.post(MainLoop::Mode::Default, note(3)); // behind those that came before it
    });
    loop.post(MainLoop::Mode::Default, note(1));
    loop.post(MainLoop::Mode::Default, note(2));
    ASSERT_TRUE(spinUntil([&] { return scope.has_value(); }));
    runEvents();
    EXPECT_TRUE(ran.empty());
    scope.reset();
    expectToRun({1, 2, 3});
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
    expectToRun({3, 4, 9});

    ran.clear();
    loop.performAfterDelay(&target, "a", 0ms, note(1));
    loop.performAfterDelay(&other, "a", 0ms, [this] {
        ran.push_back(2);
        loop.cancelPreviousPerformRequestsWithTarget(&target); // one that is due in this round
    });
    loop.performAfterDelay(&target, "late", 0ms, note(5));
    EXPECT_TRUE(ran.empty()) << "never at once";
    loop.performAfterDelay(&other, "end", 0ms, note(9));
    expectToRun({1, 2, 9});
}

TEST_F(MainLoopTest, delayedCallsRunByDeadlineThenByArrivalAndLeaveTimeForOthers) {
    loop.performAfterDelay(&target, "a", 20ms, note(3));
    loop.performAfterDelay(&target, "b", 0ms, note(1));
    loop.performAfterDelay(&other, "c", 0ms, note(2));
    expectToRun({1, 2, 3});
    bool done = false;
    std::function<void()> again = [&] {
        if (!done) loop.performAfterDelay(&target, "again", 0ms, again);
    };
    again();
    loop.post(MainLoop::Mode::Default, [&] { done = true; });
    EXPECT_TRUE(spinUntil([&] { return done; }));
    loop.cancelPreviousPerformRequestsWithTarget(&target);
}

} // namespace
