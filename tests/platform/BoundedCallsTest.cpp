#include "platform/BoundedCalls.h"
#include "platform/MainLoop.h"

#include "support/Support.h"

#include <semaphore>

using namespace platform;
using namespace std::chrono_literals;

namespace {

struct BoundedCallsTest : testing::Test {
    static BoundedCalls::Post post() {
        return [](std::function<void()> function) {
            MainLoop::instance()->post(MainLoop::Mode::Common, std::move(function));
        };
    }
    /// Work that stands still until it is let go, as on a server that is gone.
    std::function<int()> hanging(int result) {
        return [gate = _gate, result] {
            gate->acquire();
            return result;
        };
    }
    void letGo() { _gate->release(100); }
    static std::function<int()> quick(int result) {
        return [result] { return result; };
    }
    std::function<void(int)> note() {
        return [this](int result) { late.push_back(result); };
    }

    MainLoop loop;
    std::vector<int> late;

private:
    std::shared_ptr<std::counting_semaphore<>> _gate =
        std::make_shared<std::counting_semaphore<>>(0);
};

const QString disk = u"disk"_s;
const QString server = u"server"_s;
const QString job = u"job"_s;

TEST_F(BoundedCallsTest, quickWorkAnswersAtOnceAndNeverTwice) {
    BoundedCalls calls(post());
    for (int round = 0; round < 100; ++round)
        EXPECT_EQ(calls.call<int>(disk, job, 20s, quick(round), note()), round);
    EXPECT_FALSE(calls.isLate(disk));
    QCoreApplication::processEvents();
    EXPECT_TRUE(late.empty());
}

TEST_F(BoundedCallsTest, hangingLaneCostsOneWaitAndOthersGoOn) {
    BoundedCalls calls(post());
    EXPECT_FALSE(calls.call<int>(server, job, 1ms, hanging(1), note()));
    EXPECT_TRUE(calls.isLate(server));
    // With an hour's limit this would never end if it waited.
    EXPECT_FALSE(calls.call<int>(server, u"second"_s, 1h, quick(2), note()));
    EXPECT_FALSE(calls.call<int>(server, u"third"_s, 1h, quick(3), note()));
    EXPECT_FALSE(calls.call<int>(server, u"second"_s, 1h, quick(4), note()));
    EXPECT_EQ(calls.call<int>(disk, job, 20s, quick(5), note()), 5);
    letGo();
    EXPECT_TRUE(support::spinUntil([&] { return late.size() == 3; }));
    EXPECT_EQ(late, (std::vector{1, 4, 3}));
    EXPECT_TRUE(support::spinUntil([&] { return !calls.isLate(server); }));
    EXPECT_EQ(calls.call<int>(server, job, 20s, quick(6), note()), 6);
}

TEST_F(BoundedCallsTest, endDropsLateAnswers) {
    {
        BoundedCalls calls(post());
        EXPECT_FALSE(calls.call<int>(server, job, 1ms, hanging(1), note()));
        EXPECT_FALSE(calls.call<int>(server, u"b"_s, 1ms, quick(2), note()));
        letGo();
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(late.empty());
}

} // namespace
