#include "app/SingleInstance.h"

#include "support/Support.h"

#include <sys/wait.h>
#include <unistd.h>

TEST(SingleInstanceTest, laterStartHandsItsRequestOver) {
    const QTemporaryDir folder;
    SingleInstance first;
    ASSERT_EQ(first.take(folder.path(), {}), SingleInstance::Outcome::First);
    QStringList paths;
    QStringList added;
    QObject::connect(
        &first, &SingleInstance::requested, &first, [&](const SingleInstance::Request& request) {
            paths = request.paths;
            added = request.add;
        });
    const QStringList many(20'000, QString::fromUtf8("/ümlaut \n/😀"));
    std::atomic<int> outcome = -1;
    std::jthread later([&] {
        SingleInstance second;
        outcome = static_cast<int>(second.take(folder.path(), {many, {u"/a"_s}}));
    });
    ASSERT_TRUE(support::spinUntil([&] { return outcome >= 0; }));
    EXPECT_EQ(outcome, static_cast<int>(SingleInstance::Outcome::HandedOver));
    EXPECT_EQ(paths, many);
    EXPECT_EQ(added, QStringList{u"/a"_s});
}

TEST(SingleInstanceTest, whoAsksGetsTheStateOfTheFirstAndNothingElseHappens) {
    const QTemporaryDir folder;
    EXPECT_EQ(SingleInstance::stateOf(folder.path()), std::nullopt);
    SingleInstance first;
    ASSERT_EQ(first.take(folder.path(), {}), SingleInstance::Outcome::First);
    const QByteArray state(3'000'000, 's'); // more than a socket holds
    first.setStateSource([&] { return state; });
    int requests = 0;
    QObject::connect(&first, &SingleInstance::requested, &first, [&] { ++requests; });
    std::atomic<bool> hasAsked = false;
    std::optional<QByteArray> answer;
    std::jthread later([&] {
        answer = SingleInstance::stateOf(folder.path());
        hasAsked = true;
    });
    ASSERT_TRUE(support::spinUntil([&] { return hasAsked.load(); }));
    EXPECT_EQ(answer, state);
    EXPECT_EQ(requests, 0);
}

TEST(SingleInstanceTest, lockGoesWithTheProcessThatHeldIt) {
    const QTemporaryDir folder;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        SingleInstance held;
        const auto outcome = held.take(folder.path(), {});
        ::_exit(outcome == SingleInstance::Outcome::First ? 7 : 1); // leaves lock and socket behind
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_EQ(WEXITSTATUS(status), 7);
    SingleInstance next;
    EXPECT_EQ(next.take(folder.path(), {}), SingleInstance::Outcome::First);
}
