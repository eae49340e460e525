#include "app/SingleInstance.h"

#include "support/Support.h"

TEST(SingleInstanceTest, aLaterStartHandsItsRequestOverAndWhoAsksGetsTheState) {
    const QTemporaryDir folder;
    EXPECT_EQ(SingleInstance::stateOf(folder.path()), std::nullopt);
    SingleInstance first;
    ASSERT_EQ(first.take(folder.path(), {}), SingleInstance::Outcome::First);
    first.listen();
    const QByteArray state(3'000'000, 's'); // more than a socket holds
    first.setStateSource([&] { return state; });
    std::vector<SingleInstance::Request> requests;
    QObject::connect(
        &first, &SingleInstance::requested, &first,
        [&](const SingleInstance::Request& request) { requests.push_back(request); });
    const QStringList many(20'000, QString::fromUtf8("/ümlaut \n/😀"));
    const UnopenedPath unopened{UnopenedPath::Fault::NotOfThisComputer, u"a://b"_s, 13};
    std::atomic<bool> isOver = false;
    std::optional<QByteArray> answer;
    SingleInstance::Outcome outcome = SingleInstance::Outcome::First;
    std::jthread later([&] {
        answer = SingleInstance::stateOf(folder.path());
        SingleInstance second;
        SingleInstance::Request request{many, {u"/a"_s}, {unopened}};
        request.isFullScreen = request.isSlideshow = true;
        request.activation = {"id_TIME1", "a token"};
        outcome = second.take(folder.path(), request);
        isOver = true;
    });
    ASSERT_TRUE(support::spinUntil([&] { return isOver.load(); }));
    EXPECT_EQ(answer, state);
    EXPECT_EQ(outcome, SingleInstance::Outcome::HandedOver);
    ASSERT_EQ(requests.size(), 1U) << "to ask is no request";
    EXPECT_TRUE(
        requests[0].paths == many && requests[0].add == QStringList{u"/a"_s} &&
        requests[0].faults == std::vector{unopened});
    EXPECT_TRUE(requests[0].isFullScreen && requests[0].isSlideshow);
    EXPECT_EQ(requests[0].activation, (platform::Activation{"id_TIME1", "a token"}));
}

TEST(SingleInstanceTest, whoBringsMarksWaitsForTheirAnswerAndNobodyElseDoes) {
    const QTemporaryDir folder;
    SingleInstance first;
    ASSERT_EQ(first.take(folder.path(), {}), SingleInstance::Outcome::First);
    first.listen();
    SingleInstance::Answer answer;
    first.setMarksSource({}, [&](const QByteArray& lines, const SingleInstance::Answer& later) {
        EXPECT_EQ(lines, "marks");
        answer = later;
    });
    SingleInstance::Request marks;
    marks.importMarks = "marks";
    std::optional<QByteArray> said;
    std::atomic<int> over = 0;
    SingleInstance::Outcome outcome = SingleInstance::Outcome::First;
    std::jthread import([&] {
        said = SingleInstance::ask(folder.path(), marks);
        ++over;
    });
    ASSERT_TRUE(support::spinUntil([&] { return answer != nullptr; }));
    std::jthread start([&] {
        SingleInstance second;
        outcome = second.take(folder.path(), {});
        ++over;
    });
    ASSERT_TRUE(support::spinUntil([&] { return over == 1; }));
    EXPECT_EQ(outcome, SingleInstance::Outcome::HandedOver);
    answer("stored");
    ASSERT_TRUE(support::spinUntil([&] { return over == 2; }));
    EXPECT_EQ(said, "stored");
}

TEST(SingleInstanceTest, aStartWaitsForTheEndOfARunThatHasTheCatalogueForAMoment) {
    const QTemporaryDir folder;
    std::optional<SingleInstance> marks(std::in_place);
    ASSERT_TRUE(marks->takeForAMoment(folder.path()));
    const QString lock = folder.filePath(u"lock"_s);
    EXPECT_EQ(support::readFile(lock), "moment");
    std::atomic<bool> isOver = false;
    SingleInstance::Outcome outcome = SingleInstance::Outcome::NoAnswer;
    std::jthread start([&] {
        SingleInstance later;
        outcome = later.take(folder.path(), {});
        isOver = true;
    });
    marks.reset();
    ASSERT_TRUE(support::spinUntil([&] { return isOver.load(); }));
    EXPECT_EQ(outcome, SingleInstance::Outcome::First);
    EXPECT_EQ(support::readFile(lock), QByteArray());
}
