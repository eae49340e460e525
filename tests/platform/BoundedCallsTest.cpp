#include "platform/tasks/BoundedCalls.h"
#include "platform/tasks/MainLoop.h"

#include "support/Support.h"

#include <barrier>
#include <semaphore>

using namespace platform;
using namespace std::chrono_literals;

namespace {

struct BoundedCallsTest : testing::Test {
    /// Work that stands still until it is let go, as on a server that is gone.
    std::function<int()> hanging(int result) {
        return [gate = _gate, result] {
            gate->acquire();
            return result;
        };
    }
    void letGo() { _gate->release(100); }
    static auto quick(int result) {
        return [result] { return result; };
    }

    MainLoop loop;
    std::vector<int> late;
    const std::function<void(int)> note = [this](int result) { late.push_back(result); };
    /// What was promised; waited for is nothing, or as long as it takes.
    std::vector<std::chrono::milliseconds> limits;
    std::chrono::milliseconds waited = 0ms;
    const BoundedCalls::Post post = [this](auto function) {
        loop.post(MainLoop::Mode::Common, std::move(function));
    };
    const BoundedCalls::WaitFor waitFor = [this](auto limit) {
        limits.push_back(limit);
        return waited;
    };
    std::optional<BoundedCalls> calls{std::in_place, post, waitFor};

private:
    using Gate = std::counting_semaphore<>;
    std::shared_ptr<Gate> _gate = std::make_shared<Gate>(0);
};

const QString disk = u"disk"_s;
const QString server = u"server"_s;
const QString job = u"job"_s;

TEST_F(BoundedCallsTest, hangingLaneCostsOneWaitAndQuickWorkAnswersAtOnce) {
    EXPECT_FALSE(calls->hasWork());
    EXPECT_FALSE(calls->call<int>(server, job, 1h, hanging(1), note));
    EXPECT_TRUE(calls->hasWork());
    waited = 20s; // would never end if a late lane were waited for
    EXPECT_FALSE(calls->call<int>(server, u"second"_s, 1h, quick(2), note));
    EXPECT_FALSE(calls->call<int>(server, u"third"_s, 1h, quick(3), note));
    EXPECT_FALSE(calls->call<int>(server, u"second"_s, 1h, quick(4), note));
    EXPECT_FALSE(calls->call<int>(server, job, 1h, quick(7), note)) << "the first runs";
    EXPECT_EQ(calls->call<int>(disk, job, 1h, quick(5), note), 5);
    letGo();
    EXPECT_TRUE(support::spinUntil([&] { return late.size() == 4; }));
    EXPECT_EQ(late, (std::vector{1, 4, 3, 7}));
    EXPECT_TRUE(support::spinUntil([&] { return !calls->hasWork(); }));
    limits.clear();
    for (int round = 0; round < 100; ++round)
        EXPECT_EQ(calls->call<int>(server, job, 200ms, quick(round), note), round);
    EXPECT_EQ(limits, std::vector(100, 200ms));
    QCoreApplication::processEvents();
    EXPECT_EQ(late.size(), 4U) << "what came in time does not come again";
}

TEST_F(BoundedCallsTest, callsThatWereBegunWorkAtTheSameTimeAndShareOneLimit) {
    // Each waits for the other two: one after the other they would never end.
    auto together = std::make_shared<std::barrier<>>(3);
    std::vector<BoundedCalls::Begun<int>> begun;
    for (const int number : {1, 2, 3}) {
        const std::function<int()> work = [together, number] {
            together->arrive_and_wait();
            return number;
        };
        begun.push_back(calls->begin<int>(QString::number(number), job, work, note));
    }
    begun.push_back(calls->begin<int>(u"1"_s, u"behind"_s, std::function(quick(4)), note));
    begun.push_back(calls->begin<int>(server, job, hanging(5), note));
    waited = 20s;
    const auto end = calls->deadline(200ms);
    for (const int number : {1, 2, 3, 4})
        EXPECT_EQ(calls->take(begun.at(static_cast<std::size_t>(number - 1)), end), number);
    EXPECT_FALSE(calls->take(begun.back(), std::chrono::steady_clock::now()));
    letGo();
    EXPECT_TRUE(support::spinUntil([&] { return !late.empty(); }));
    EXPECT_EQ(late, std::vector{5});
    EXPECT_EQ(limits, std::vector{200ms});
}

TEST_F(BoundedCallsTest, answersOnTheirWayAtTheEndAreDropped) {
    std::vector<std::function<void()>> posted;
    calls.emplace([&](auto function) { posted.push_back(std::move(function)); }, waitFor);
    EXPECT_FALSE(calls->call<int>(server, job, 1h, hanging(1), note));
    letGo();
    ASSERT_TRUE(support::spinUntil([&] { return !calls->hasWork(); }));
    ASSERT_EQ(posted.size(), 1U);
    calls.reset();
    posted.front()();
    EXPECT_TRUE(late.empty());
}

TEST_F(BoundedCallsTest, endLeavesWorkThatHangsBehindAndDropsWhatWaits) {
    auto held = std::make_shared<std::atomic<int>>(0);
    const auto count = [held, hang = hanging(1)] { return ++*held, hang(); };
    EXPECT_FALSE(calls->call<int>(server, job, 1h, count, note));
    EXPECT_FALSE(calls->call<int>(server, u"second"_s, 1h, count, note));
    calls.reset();
    EXPECT_EQ(limits, (std::vector<std::chrono::milliseconds>{1h, 1h, 500ms}));
    letGo();
    EXPECT_TRUE(support::spinUntil([&] { return held.use_count() == 2; })); // ours, and `count`
    QCoreApplication::processEvents();
    EXPECT_EQ(*held, 1);
    EXPECT_TRUE(late.empty());
}

} // namespace
