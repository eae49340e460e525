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
    std::atomic<bool> isOver = false;
    std::optional<QByteArray> answer;
    SingleInstance::Outcome outcome = SingleInstance::Outcome::First;
    std::jthread later([&] {
        answer = SingleInstance::stateOf(folder.path());
        SingleInstance second;
        SingleInstance::Request request{many, {u"/a"_s}, {u"no b"_s}};
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
        requests[0].faults == QStringList{u"no b"_s});
    EXPECT_TRUE(requests[0].isFullScreen && requests[0].isSlideshow);
    EXPECT_EQ(requests[0].activation, (platform::Activation{"id_TIME1", "a token"}));
}
