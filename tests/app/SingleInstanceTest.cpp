#include "app/SingleInstance.h"

#include "support/MemoryDisk.h"
#include "support/Support.h"

#include <future>

namespace {

using Outcome = SingleInstance::Outcome;

struct SingleInstanceTest : testing::Test {
    void takeFirst() {
        ASSERT_EQ(first.take(folder.path(), {}), Outcome::First);
        first.listen();
    }
    /// Another start of the program, in a thread.
    std::future<Outcome> startLater(const SingleInstance::Request& request = {}) const {
        return std::async(std::launch::async, [this, request] {
            SingleInstance later;
            return later.take(folder.path(), request);
        });
    }
    /// Waits with a loop, by which the first one hears of the others.
    static auto resultOf(auto future) {
        EXPECT_TRUE(support::spinUntil([&] { return isReady(future); }));
        return future.get();
    }
    static bool isReady(const auto& future) {
        return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    const QTemporaryDir folder;
    SingleInstance first;
};

TEST_F(SingleInstanceTest, aLaterStartHandsItsRequestOverAndWhoAsksGetsTheState) {
    EXPECT_EQ(SingleInstance::stateOf(folder.path()), std::nullopt);
    takeFirst();
    const QByteArray state(3'000'000, 's'); // more than a socket holds
    first.setStateSource([&] { return state; });
    std::vector<SingleInstance::Request> requests;
    QObject::connect(
        &first, &SingleInstance::requested, &first,
        [&](const SingleInstance::Request& request) { requests.push_back(request); });
    const QStringList many(20'000, QString::fromUtf8("/ümlaut \n/😀"));
    const UnopenedPath unopened{UnopenedPath::Fault::NotOfThisComputer, u"a://b"_s, 13};
    EXPECT_EQ(
        resultOf(std::async(
            std::launch::async, [this] { return SingleInstance::stateOf(folder.path()); })),
        state);
    SingleInstance::Request request{many, {u"/a"_s}, {unopened}};
    request.isFullScreen = request.isSlideshow = true;
    request.activation = {"id_TIME1", "a token"};
    EXPECT_EQ(resultOf(startLater(request)), Outcome::HandedOver);
    ASSERT_EQ(requests.size(), 1U) << "to ask is no request";
    EXPECT_TRUE(
        requests[0].paths == many && requests[0].add == QStringList{u"/a"_s} &&
        requests[0].faults == std::vector{unopened});
    EXPECT_TRUE(requests[0].isFullScreen && requests[0].isSlideshow);
    EXPECT_EQ(requests[0].activation, (platform::Activation{"id_TIME1", "a token"}));
}

TEST_F(SingleInstanceTest, aLaterStartFindsTheFirstOneOnAReadOnlyDisk) {
    const support::MemoryDisk disk(folder.path());
    if (!disk.isMounted()) GTEST_SKIP() << "mounting a disk takes root";
    support::writeFile(folder.filePath(u"lock"_s), {});
    disk.setReadOnly(true);
    takeFirst();
    EXPECT_EQ(resultOf(startLater()), Outcome::HandedOver);
}

TEST_F(SingleInstanceTest, whoBringsMarksWaitsForTheirAnswerAndNobodyElseDoes) {
    takeFirst();
    SingleInstance::Answer answer;
    first.setMarksSource({}, [&](const QByteArray& lines, const SingleInstance::Answer& later) {
        EXPECT_EQ(lines, "marks");
        answer = later;
    });
    SingleInstance::Request marks;
    marks.importMarks = "marks";
    auto said =
        std::async(std::launch::async, [&] { return SingleInstance::ask(folder.path(), marks); });
    ASSERT_TRUE(support::spinUntil([&] { return answer != nullptr; }));
    EXPECT_EQ(resultOf(startLater()), Outcome::HandedOver);
    EXPECT_FALSE(isReady(said));
    answer("stored");
    EXPECT_EQ(resultOf(std::move(said)), "stored");
}

TEST_F(SingleInstanceTest, aStartWaitsForTheEndOfARunThatHasTheCatalogueForAMoment) {
    std::optional<SingleInstance> marks(std::in_place);
    ASSERT_TRUE(marks->takeForAMoment(folder.path()));
    const QString lock = folder.filePath(u"lock"_s);
    EXPECT_EQ(support::readFile(lock), "moment");
    auto start = startLater();
    marks.reset();
    EXPECT_EQ(resultOf(std::move(start)), Outcome::First);
    EXPECT_EQ(support::readFile(lock), QByteArray());
}

} // namespace
