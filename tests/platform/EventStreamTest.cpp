#include "platform/EventStream.h"

#include "platform/GrowingFiles.h"
#include "platform/MainLoop.h"
#include "support/Support.h"

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

struct EventStreamTest : testing::Test {
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
        ASSERT_EQ(::rename(qPrintable(path(from)), qPrintable(path(to))), 0);
    }
    using Events = std::map<QString, std::uint32_t>;
    /// What is told is this and nothing else.
    void expect(const Events& expected, int line = __builtin_LINE()) {
        SCOPED_TRACE(line);
        EXPECT_EQ(events(), expected);
    }

    MainLoop _loop;
    QTemporaryDir _folder;
    std::atomic<std::chrono::milliseconds> _ticks{0ms};
    std::unique_ptr<EventStream> _stream;
    std::map<QString, std::uint32_t> _events;
    std::uint64_t _lastId = 0;
    int _batches = 0;
};

} // namespace

TEST_F(EventStreamTest, FilesThatComeGoAndAreRenamedAreToldOnceEach) {
    write(u"old.jpg"_s);
    write(u"a.jpg"_s);
    watch({_folder.path()});
    expect({});

    write(u"new.jpg"_s);
    write(u".hidden.jpg"_s);
    QFile::remove(path(u"old.jpg"_s));
    rename(u"a.jpg"_s, u"b.jpg"_s);
    expect(
        {{u"new.jpg"_s, createdFile},
         {u"old.jpg"_s, EventItemRemoved | EventItemIsFile},
         {u"a.jpg"_s, renamedFile},
         {u"b.jpg"_s, renamedFile}});
    EXPECT_EQ(_batches, 1);

    write(u"b.jpg"_s); // rewritten in place
    expect({});
    // A writer's usual way to replace a file.
    write(u".b.jpg.tmp"_s);
    rename(u".b.jpg.tmp"_s, u"b.jpg"_s);
    expect({{u"b.jpg"_s, renamedFile}});
}

TEST_F(EventStreamTest, FoldersAreFollowedUnderTheirNewNames) {
    makeFolder(u"root/one/deep"_s);
    makeFolder(u"root/two"_s);
    makeFolder(u"outside/in"_s);
    watch({path(u"root"_s)});

    rename(u"root/one"_s, u"root/two/three"_s);
    expect({{u"root/one"_s, renamedFolder}, {u"root/two/three"_s, renamedFolder}});
    write(u"root/two/three/deep/x.jpg"_s);
    expect({{u"root/two/three/deep/x.jpg"_s, createdFile}});

    // From and to places that are not watched.
    rename(u"outside/in"_s, u"root/in"_s);
    rename(u"root/two/three"_s, u"outside/three"_s);
    expect({{u"root/in"_s, renamedFolder}, {u"root/two/three"_s, renamedFolder}});
    write(u"root/in/y.jpg"_s);
    write(u"outside/three/deep/z.jpg"_s);
    expect({{u"root/in/y.jpg"_s, createdFile}});

    // Hiding a folder is moving it away, and showing it is moving it in.
    rename(u"root/in"_s, u"root/.in"_s);
    write(u"root/.in/unseen.jpg"_s);
    expect({{u"root/in"_s, renamedFolder}});
    rename(u"root/.in"_s, u"root/again"_s);
    expect({{u"root/again"_s, renamedFolder}});
    write(u"root/again/seen.jpg"_s);
    expect({{u"root/again/seen.jpg"_s, createdFile}});

    ASSERT_TRUE(QDir(path(u"root/again"_s)).removeRecursively());
    const Events gone = events();
    EXPECT_EQ(gone.at(u"root/again"_s), EventItemRemoved | EventItemIsDir);
    makeFolder(u"root/again"_s);
    write(u"root/again/z.jpg"_s);
    _stream->flushSync();
    tick(1s); // if the file stood there when the folder was listed
    EXPECT_EQ(events().at(u"root/again/z.jpg"_s), createdFile);
}

TEST_F(EventStreamTest, ARootThatMovesOrVanishesIsReported) {
    makeFolder(u"a/root/inner/deep"_s);
    watch({path(u"a/root"_s), path(u"a/root/inner/deep"_s)});
    // A place that nothing is moved to stands for removal.
    const std::tuple<QString, QString, QStringList> cases[] = {
        {u"a/root/inner"_s, u"a/root/moved"_s, {u"a/root/inner/deep"_s}},
        {u"a"_s, u"b"_s, {u"a/root"_s, u"a/root/inner/deep"_s}},
        {u"b/root"_s, u"root"_s, {u"a/root"_s}},
        {u"root"_s, {}, {u"a/root"_s}}};
    for (const auto& [from, to, changed] : cases) {
        if (to.isEmpty())
            QDir(path(from)).removeRecursively();
        else
            rename(from, to);
        const Events told = events();
        for (const QString& root : changed) {
            ASSERT_TRUE(told.contains(root)) << root.toStdString() << " by " << from.toStdString();
            EXPECT_TRUE(told.at(root) & EventRootChanged) << root.toStdString();
        }
    }
}

TEST_F(EventStreamTest, AFileIsToldOnceWhenItsWriterHasFinished) {
    watch({_folder.path()});
    QFile file(path(u"slow.jpg"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(file.write("more"), 4);
        ASSERT_TRUE(file.flush());
        tick(1s);
        expect({});
        EXPECT_TRUE(_stream->isBeingWritten(file.fileName()));
    }
    file.close();
    expect({{u"slow.jpg"_s, createdFile}});
    EXPECT_FALSE(_stream->isBeingWritten(file.fileName()));
    tick(1min);
    expect({});

    // The folder is renamed while the file in it grows.
    makeFolder(u"f"_s);
    QFile inside(path(u"f/x.jpg"_s));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    expect({{u"f"_s, createdFolder}});
    rename(u"f"_s, u"g"_s);
    inside.write("all");
    inside.close();
    EXPECT_EQ(events().at(u"g/x.jpg"_s), createdFile);

    // Linked here, so that nobody closes it.
    ASSERT_TRUE(::link(qPrintable(path(u"slow.jpg"_s)), qPrintable(path(u"linked.jpg"_s))) == 0);
    expect({});
    tick(GrowingFiles::quietTime);
    expect({{u"linked.jpg"_s, createdFile}});
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
    std::thread([&] {
        std::mt19937 random(7);
        for (int i = 0; i < 300; ++i) {
            const QString folder = u"%1/%2/%3"_s.arg(i).arg(random() % 3).arg(i % 2);
            for (int file = 0; file < 6; ++file)
                write(*made.insert(u"%1/%2.jpg"_s.arg(folder).arg(file)).first);
        }
    }).join();
    _stream->flushSync();
    tick(1s); // those that were complete when their folder was listed
    const Events told = events();
    for (const QString& name : made)
        EXPECT_TRUE(told.contains(name)) << name.toStdString();
}

TEST_F(EventStreamTest, NoBatchComesAfterTheStreamIsGone) {
    watch({_folder.path()});
    write(u"a.jpg"_s);
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
        ASSERT_TRUE(QDir().mkpath(u"%1/%2"_s.arg(folder.path()).arg(i)));
    // The limit can be set in a name space of the child's own.
    const QByteArray script = "ulimit -c 0; echo 20 > /proc/sys/user/max_inotify_watches && exec " +
                              QFile::encodeName(QFileInfo(u"/proc/self/exe"_s).symLinkTarget()) +
                              " --gtest_also_run_disabled_tests "
                              "--gtest_filter=EventStreamLimitTest.DISABLED_WithTheLimit 2>&1";
    if (std::system("unshare -Ur sh -c 'echo 20 > /proc/sys/user/max_inotify_watches' "
                    "2>/dev/null") != 0)
        GTEST_SKIP() << "name spaces of users are not permitted here";
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
