#include "platform/EventStream.h"

#include "platform/GrowingFiles.h"
#include "platform/MainLoop.h"
#include "support/Support.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <set>
#include <thread>

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace platform;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t createdFile = EventItemCreated | EventItemIsFile;
constexpr std::uint32_t createdFolder = EventItemCreated | EventItemIsDir;
constexpr std::uint32_t renamedFile = EventItemRenamed | EventItemIsFile;
constexpr std::uint32_t renamedFolder = EventItemRenamed | EventItemIsDir;

class EventStreamTest : public testing::Test {
protected:
    void watch(const QStringList& roots) {
        EventStream::Options options;
        options.latency = 24h; // batches come by flushing only
        options.now = [this] { return EventStream::Clock::time_point(1h + _ticks.load()); };
        _stream = std::make_unique<EventStream>(
            roots,
            [this](std::vector<FileSystemEvent> events) {
                ++_batches;
                for (const FileSystemEvent& event : events) {
                    EXPECT_GT(event.eventId, _lastId);
                    _lastId = event.eventId;
                    _events[shortName(event.path)] |= event.flags;
                }
            },
            options);
        _stream->flushSync();
    }
    /// All events since the last call, by their paths below the temporary folder.
    std::map<QString, std::uint32_t> events() {
        _stream->flushSync();
        bool posted = false;
        _loop.post(MainLoop::Mode::Default, [&] { posted = true; });
        EXPECT_TRUE(support::spinUntil([&] { return posted; }));
        return std::exchange(_events, {});
    }
    void tick(std::chrono::milliseconds time) { _ticks = _ticks.load() + time; }

    QString path(const QString& name) const { return _folder.path() + u'/' + name; }
    QString shortName(const QString& file) const {
        return file.startsWith(_folder.path() + u'/') ? file.mid(_folder.path().size() + 1) : file;
    }
    void write(const QString& name) const { support::writeFile(path(name), "bytes"); }
    void makeFolder(const QString& name) const { ASSERT_TRUE(QDir().mkpath(path(name))); }
    void rename(const QString& from, const QString& to) const {
        ASSERT_EQ(
            ::rename(
                QFile::encodeName(path(from)).constData(), QFile::encodeName(path(to)).constData()),
            0);
    }

    MainLoop _loop;
    QTemporaryDir _folder;
    std::atomic<std::chrono::milliseconds> _ticks{0ms};
    std::unique_ptr<EventStream> _stream;
    std::map<QString, std::uint32_t> _events;
    std::uint64_t _lastId = 0;
    int _batches = 0;
};

using Events = std::map<QString, std::uint32_t>;

} // namespace

TEST_F(EventStreamTest, FilesThatComeGoAndAreRenamedAreToldOnceEach) {
    write(QStringLiteral("old.jpg"));
    write(QStringLiteral("a.jpg"));
    watch({_folder.path()});
    EXPECT_EQ(events(), Events());

    write(QStringLiteral("new.jpg"));
    write(QStringLiteral(".hidden.jpg"));
    QFile::remove(path(QStringLiteral("old.jpg")));
    rename(QStringLiteral("a.jpg"), QStringLiteral("b.jpg"));
    EXPECT_EQ(
        events(), (Events{
                      {QStringLiteral("new.jpg"), createdFile},
                      {QStringLiteral("old.jpg"), EventItemRemoved | EventItemIsFile},
                      {QStringLiteral("a.jpg"), renamedFile},
                      {QStringLiteral("b.jpg"), renamedFile},
                  }));
    EXPECT_EQ(_batches, 1);

    write(QStringLiteral("b.jpg")); // rewritten in place
    EXPECT_EQ(events(), Events());
    // A writer's usual way to replace a file.
    write(QStringLiteral(".b.jpg.tmp"));
    rename(QStringLiteral(".b.jpg.tmp"), QStringLiteral("b.jpg"));
    EXPECT_EQ(events(), (Events{{QStringLiteral("b.jpg"), renamedFile}}));
}

TEST_F(EventStreamTest, FoldersAreFollowedUnderTheirNewNames) {
    makeFolder(QStringLiteral("root/one/deep"));
    makeFolder(QStringLiteral("root/two"));
    makeFolder(QStringLiteral("outside/in"));
    watch({path(QStringLiteral("root"))});

    rename(QStringLiteral("root/one"), QStringLiteral("root/two/three"));
    EXPECT_EQ(
        events(), (Events{
                      {QStringLiteral("root/one"), renamedFolder},
                      {QStringLiteral("root/two/three"), renamedFolder},
                  }));
    write(QStringLiteral("root/two/three/deep/x.jpg"));
    EXPECT_EQ(events(), (Events{{QStringLiteral("root/two/three/deep/x.jpg"), createdFile}}));

    // From and to places that are not watched.
    rename(QStringLiteral("outside/in"), QStringLiteral("root/in"));
    rename(QStringLiteral("root/two/three"), QStringLiteral("outside/three"));
    EXPECT_EQ(
        events(), (Events{
                      {QStringLiteral("root/in"), renamedFolder},
                      {QStringLiteral("root/two/three"), renamedFolder},
                  }));
    write(QStringLiteral("root/in/y.jpg"));
    write(QStringLiteral("outside/three/deep/z.jpg"));
    EXPECT_EQ(events(), (Events{{QStringLiteral("root/in/y.jpg"), createdFile}}));

    // Hiding a folder is moving it away, and showing it is moving it in.
    rename(QStringLiteral("root/in"), QStringLiteral("root/.in"));
    write(QStringLiteral("root/.in/unseen.jpg"));
    EXPECT_EQ(events(), (Events{{QStringLiteral("root/in"), renamedFolder}}));
    rename(QStringLiteral("root/.in"), QStringLiteral("root/again"));
    EXPECT_EQ(events(), (Events{{QStringLiteral("root/again"), renamedFolder}}));
    write(QStringLiteral("root/again/seen.jpg"));
    EXPECT_EQ(events(), (Events{{QStringLiteral("root/again/seen.jpg"), createdFile}}));

    ASSERT_TRUE(QDir(path(QStringLiteral("root/again"))).removeRecursively());
    const Events gone = events();
    EXPECT_EQ(gone.at(QStringLiteral("root/again")), EventItemRemoved | EventItemIsDir);
    makeFolder(QStringLiteral("root/again"));
    write(QStringLiteral("root/again/z.jpg"));
    _stream->flushSync();
    tick(1s); // if the file stood there when the folder was listed
    EXPECT_EQ(events().at(QStringLiteral("root/again/z.jpg")), createdFile);
}

TEST_F(EventStreamTest, ARootThatMovesOrVanishesIsReported) {
    struct Case {
        QString from;
        QString to; // empty: removed
        QStringList changed;
    };
    makeFolder(QStringLiteral("a/root/inner/deep"));
    watch({path(QStringLiteral("a/root")), path(QStringLiteral("a/root/inner/deep"))});
    for (const auto& [from, to, changed] : {
             Case{
                 QStringLiteral("a/root/inner"),
                 QStringLiteral("a/root/moved"),
                 {QStringLiteral("a/root/inner/deep")}},
             Case{
                 QStringLiteral("a"),
                 QStringLiteral("b"),
                 {QStringLiteral("a/root"), QStringLiteral("a/root/inner/deep")}},
             Case{QStringLiteral("b/root"), QStringLiteral("root"), {QStringLiteral("a/root")}},
             Case{QStringLiteral("root"), {}, {QStringLiteral("a/root")}},
         }) {
        if (to.isEmpty()) {
            QDir(path(from)).removeRecursively();
        } else {
            rename(from, to);
        }
        const Events told = events();
        for (const QString& root : changed) {
            ASSERT_TRUE(told.contains(root)) << root.toStdString() << " by " << from.toStdString();
            EXPECT_TRUE(told.at(root) & EventRootChanged) << root.toStdString();
        }
    }
}

TEST_F(EventStreamTest, AFileIsToldOnceWhenItsWriterHasFinished) {
    watch({_folder.path()});
    QFile file(path(QStringLiteral("slow.jpg")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(file.write("more"), 4);
        ASSERT_TRUE(file.flush());
        tick(1s);
        EXPECT_EQ(events(), Events());
        EXPECT_TRUE(_stream->isBeingWritten(file.fileName()));
    }
    file.close();
    EXPECT_EQ(events(), (Events{{QStringLiteral("slow.jpg"), createdFile}}));
    EXPECT_FALSE(_stream->isBeingWritten(file.fileName()));
    tick(1min);
    EXPECT_EQ(events(), Events());

    // The folder is renamed while the file in it grows.
    makeFolder(QStringLiteral("f"));
    QFile inside(path(QStringLiteral("f/x.jpg")));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    EXPECT_EQ(events(), (Events{{QStringLiteral("f"), createdFolder}}));
    rename(QStringLiteral("f"), QStringLiteral("g"));
    inside.write("all");
    inside.close();
    EXPECT_EQ(events().at(QStringLiteral("g/x.jpg")), createdFile);

    // Linked here, so that nobody closes it.
    ASSERT_EQ(
        ::link(
            QFile::encodeName(path(QStringLiteral("slow.jpg"))).constData(),
            QFile::encodeName(path(QStringLiteral("linked.jpg"))).constData()),
        0);
    EXPECT_EQ(events(), Events());
    tick(GrowingFiles::quietTime);
    EXPECT_EQ(events(), (Events{{QStringLiteral("linked.jpg"), createdFile}}));
}

TEST(GrowingFilesTest, AWriterThatPausesIsWaitedForLongerThanAFileThatNeverGrew) {
    GrowingFiles::State state{1, 1};
    GrowingFiles files([&](const QByteArray&) { return state; });
    GrowingFiles::Clock::time_point now;
    files.add("a", createdFile, now);
    EXPECT_TRUE(files.takeComplete(now += 100ms).empty());
    state.size = 2;
    EXPECT_TRUE(files.takeComplete(now += 1s).empty());
    EXPECT_TRUE(files.takeComplete(now += 9s).empty());
    EXPECT_EQ(files.takeComplete(now += 1s).size(), 1U);
    EXPECT_TRUE(files.isEmpty());
}

TEST_F(EventStreamTest, NothingSlipsThroughInFoldersThatAreBeingFilled) {
    watch({_folder.path()});
    std::set<QString> made;
    std::thread writer([&] {
        std::mt19937 random(7);
        for (int i = 0; i < 300; ++i) {
            const QString folder = QStringLiteral("%1/%2/%3").arg(i).arg(random() % 3).arg(i % 2);
            QDir().mkpath(path(folder));
            for (int file = 0; file < 6; ++file) {
                const QString name = QStringLiteral("%1/%2.jpg").arg(folder).arg(file);
                write(name);
                made.insert(name);
            }
        }
    });
    writer.join();
    _stream->flushSync();
    tick(1s); // those that were complete when their folder was listed
    const Events told = events();
    for (const QString& name : made)
        EXPECT_TRUE(told.contains(name)) << name.toStdString();
}

TEST_F(EventStreamTest, NoBatchComesAfterTheStreamIsGone) {
    watch({_folder.path()});
    write(QStringLiteral("a.jpg"));
    _stream->flushSync();
    _stream.reset();
    bool posted = false;
    _loop.post(MainLoop::Mode::Default, [&] { posted = true; });
    ASSERT_TRUE(support::spinUntil([&] { return posted; }));
    EXPECT_EQ(_batches, 0);
}

TEST(EventStreamLimitTest, AnExhaustedLimitIsToldAndTheRootIsToBeScanned) {
    QTemporaryDir folder;
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(QDir().mkpath(QStringLiteral("%1/%2").arg(folder.path()).arg(i)));
    // The limit can be set in a name space of the child's own.
    const QByteArray script =
        "ulimit -c 0; echo 20 > /proc/sys/user/max_inotify_watches && exec " +
        QFile::encodeName(QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget()) +
        " --gtest_also_run_disabled_tests "
        "--gtest_filter=EventStreamLimitTest.DISABLED_WithTheLimit 2>&1";
    if (std::system("unshare -Ur sh -c 'echo 20 > /proc/sys/user/max_inotify_watches' "
                    "2>/dev/null") != 0) {
        GTEST_SKIP() << "name spaces of users are not permitted here";
    }
    qputenv("WATCHED_FOLDER", QFile::encodeName(folder.path()));
    std::unique_ptr<FILE, int (*)(FILE*)> child(
        ::popen(("unshare -Ur sh -c '" + script + "'").constData(), "r"), &::pclose);
    ASSERT_TRUE(child);
    QByteArray output;
    std::array<char, 4096> buffer{};
    while (const std::size_t length = ::fread(buffer.data(), 1, buffer.size(), child.get()))
        output.append(buffer.data(), static_cast<qsizetype>(length));
    EXPECT_EQ(::pclose(child.release()), 0) << output.constData();
    EXPECT_EQ(output.count("user.max_inotify_watches = 20"), 1) << output.constData();
}

/// Runs in the name space of the test above.
TEST(EventStreamLimitTest, DISABLED_WithTheLimit) {
    MainLoop loop;
    const QString folder = qEnvironmentVariable("WATCHED_FOLDER");
    std::vector<FileSystemEvent> told;
    EventStream stream({folder}, [&](std::vector<FileSystemEvent> events) {
        told.insert(told.end(), events.begin(), events.end());
    });
    stream.flushSync();
    ASSERT_TRUE(support::spinUntil([&] { return !told.empty(); }));
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].path, folder);
    EXPECT_EQ(told[0].flags, EventMustScanSubDirs | EventItemRenamed | EventItemIsDir);
}
