#include "fileactions/ScriptedFiles.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using Kind = fileactions::TransferPlan::Kind;
using Answer = fileactions::FilePrompts::Answer;

namespace {

constexpr int fileCount = 8;

/// Each file says its number all through, in a size of its own, so that a torn one shows.
QByteArray contentOf(int number) {
    return QByteArray(200'000 + 70'000 * number, static_cast<char>('a' + number));
}

struct Transferring : support::Transfers {
    /// Writes a byte each time that something has been done.
    [[noreturn]] void work(int round, int told) {
        prompts.onProgress = [told](const auto&) { static_cast<void>(::write(told, "x", 1) == 1); };
        files.otherDisk = round % 3 == 0 ? path("b") : QByteArray();
        std::vector<QByteArray> names;
        for (int number = 0; number < fileCount; ++number)
            names.push_back("a/" + QByteArray::number(number));
        prompts.answers.assign(2, {Answer::Replace, true});
        const auto kind = round % 2 == 0 ? Kind::Move : Kind::Copy;
        run(plan(kind, names));
        ::_exit(0);
    }
};

/// A real process is killed at a random moment of a copy or a move, half of them over files that
/// are there; nothing is torn or lost, and what it left half-written goes with the next start.
TEST(FileKillTest, aKillAtAnyMomentLeavesWholeFilesAndLosesNone) {
    const int kills = std::max(12, qEnvironmentVariableIntValue("VELMORA_KILLS"));
    std::mt19937 random(7);
    int killed = 0;
    int halfDone = 0;
    for (int round = 0; round < kills; ++round) {
        Transferring transferring;
        const bool hasFormer = round % 4 < 2;
        const QByteArray former(1000, 'z');
        for (int number = 0; number < fileCount; ++number) {
            transferring.put("a/" + QByteArray::number(number), contentOf(number));
            if (hasFormer) transferring.put("b/" + QByteArray::number(number), former);
        }
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) transferring.work(round, ends[1]);
        ::close(ends[1]);
        char told = 0;
        for (auto steps = random() % (2 * fileCount); steps > 0; --steps)
            if (::read(ends[0], &told, 1) != 1) break;
        const auto moment = std::chrono::microseconds(random() % 300);
        const auto end = std::chrono::steady_clock::now() + moment;
        while (std::chrono::steady_clock::now() < end) {
        }
        ::kill(child, SIGKILL);
        ::close(ends[0]);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        killed += WIFSIGNALED(status) ? 1 : 0;

        fileactions::TemporaryFiles::removeLeft(transferring.files, transferring.path("journal"));
        int arrived = 0;
        for (int number = 0; number < fileCount; ++number) {
            SCOPED_TRACE(round * 100 + number);
            const QByteArray name = QByteArray::number(number);
            const QByteArray source = transferring.read("a/" + name);
            const QByteArray made = transferring.read("b/" + name);
            EXPECT_TRUE(source.isEmpty() || source == contentOf(number));
            EXPECT_TRUE(made == contentOf(number) || made == (hasFormer ? former : QByteArray()));
            EXPECT_TRUE(!source.isEmpty() || made == contentOf(number));
            arrived += made == contentOf(number) ? 1 : 0;
        }
        halfDone += arrived > 0 && arrived < fileCount ? 1 : 0;
        for (const QString& name : transferring.names(u"b"_s))
            EXPECT_FALSE(name.startsWith(u'.'));
    }
    // Otherwise it says nothing.
    EXPECT_GT(killed, kills / 4);
    EXPECT_GT(halfDone, 0);
}

} // namespace
