#include "platform/files/EventStream.h"

#include "platform/files/GrowingFiles.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/Mutex.h"

#include "support/FolderTest.h"

#include <unistd.h>

using namespace platform;
using namespace std::chrono_literals;

namespace {

constexpr std::uint32_t createdFile = EventItemCreated | EventItemIsFile;
constexpr std::uint32_t createdFolder = EventItemCreated | EventItemIsDir;
constexpr std::uint32_t renamedFile = EventItemRenamed | EventItemIsFile;
constexpr std::uint32_t renamedFolder = EventItemRenamed | EventItemIsDir;
using Events = std::map<QString, std::uint32_t>;

struct EventStreamTest : support::FolderTest {
    /// Batches come by flushing only, if nothing else is said.
    void watch(const QStringList& roots, const QStringList& flat = {}) {
        const auto now = [this] { return EventStream::Clock::time_point(1h + _ticks.load()); };
        watch(roots, {.latency = 24h, .now = now, .flat = flat});
    }
    void watch(const QStringList& roots, const EventStream::Options& options) {
        _stream = std::make_unique<EventStream>(
            roots,
            [this](std::vector<FileSystemEvent> events) {
                ++_batches;
                for (FileSystemEvent& event : events) {
                    EXPECT_GT(event.eventId, std::exchange(_lastId, event.eventId));
                    _events[event.path.remove(temporary.path() + u'/')] |= event.flags;
                }
            },
            options);
        _stream->flushSync();
    }
    /// All events since the last call, by their paths below the temporary folder.
    Events events() {
        _stream->flushSync();
        QCoreApplication::processEvents();
        return std::exchange(_events, {});
    }
    void tick(std::chrono::milliseconds time) { _ticks = _ticks.load() + time; }

    /// What is told is this and nothing else.
    void expect(const Events& expected, int line = __builtin_LINE()) {
        SCOPED_TRACE(line);
        EXPECT_EQ(events(), expected);
    }

    MainLoop _loop;
    std::atomic<std::chrono::milliseconds> _ticks{0ms};
    std::unique_ptr<EventStream> _stream;
    Events _events;
    std::uint64_t _lastId = 0;
    int _batches = 0;
};

TEST_F(EventStreamTest, FilesThatComeGoAndAreRenamedAreToldOnceEach) {
    write(u"old.jpg"_s);
    write(u"a.jpg"_s);
    watch({temporary.path()});
    expect({});

    write(u"new.jpg"_s);
    write(u".hidden.jpg"_s);
    QFile::remove(path(u"old.jpg"_s));
    move(u"a.jpg"_s, u"b.jpg"_s);
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
    move(u".b.jpg.tmp"_s, u"b.jpg"_s);
    expect({{u"b.jpg"_s, renamedFile}});
}

TEST_F(EventStreamTest, OfAFlatRootTheFolderItselfIsWatchedAndARootInItWithAllItsFolders) {
    make(u"before"_s);
    make(u"root/deep"_s);
    watch({temporary.path(), path(u"root"_s)}, QStringList(temporary.path()));
    make(u"made"_s);
    make(u".moved"_s);
    move(u".moved"_s, u"moved"_s);
    expect({{u"made"_s, createdFolder}, {u"moved"_s, renamedFolder}});
    for (const QString& place : {u""_s, u"before/"_s, u"made/"_s, u"moved/"_s, u"root/deep/"_s})
        write(place + u"a.jpg"_s);
    expect({{u"a.jpg"_s, createdFile}, {u"root/deep/a.jpg"_s, createdFile}});
}

TEST_F(EventStreamTest, FoldersAreFollowedUnderTheirNewNames) {
    make(u"root/one/deep"_s);
    make(u"root/two"_s);
    make(u"outside/in"_s);
    watch({path(u"root"_s)});

    move(u"root/one"_s, u"root/two/three"_s);
    expect({{u"root/one"_s, renamedFolder}, {u"root/two/three"_s, renamedFolder}});
    write(u"root/two/three/deep/x.jpg"_s);
    expect({{u"root/two/three/deep/x.jpg"_s, createdFile}});

    // From and to places that are not watched.
    move(u"outside/in"_s, u"root/in"_s);
    move(u"root/two/three"_s, u"outside/three"_s);
    expect({{u"root/in"_s, renamedFolder}, {u"root/two/three"_s, renamedFolder}});
    write(u"root/in/y.jpg"_s);
    write(u"outside/three/deep/z.jpg"_s);
    expect({{u"root/in/y.jpg"_s, createdFile}});

    // Hiding a folder is moving it away, and showing it is moving it in.
    move(u"root/in"_s, u"root/.in"_s);
    write(u"root/.in/unseen.jpg"_s);
    expect({{u"root/in"_s, renamedFolder}});
    move(u"root/.in"_s, u"root/again"_s);
    expect({{u"root/again"_s, renamedFolder}});
    write(u"root/again/seen.jpg"_s);
    expect({{u"root/again/seen.jpg"_s, createdFile}});

    ASSERT_TRUE(QDir(path(u"root"_s)).removeRecursively());
    Events told = events();
    EXPECT_EQ(told[u"root/again"_s], EventItemRemoved | EventItemIsDir);
    EXPECT_TRUE(told[u"root"_s] & EventRootChanged);
}

TEST_F(EventStreamTest, AFileIsToldOnceWhenItsWriterHasFinished) {
    watch({temporary.path()});
    QFile file(path(u"slow.jpg"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    _stream->flushSync(); // the first look is at an empty file
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(file.write("more"), 4);
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
    make(u"f"_s);
    QFile inside(path(u"f/x.jpg"_s));
    ASSERT_TRUE(inside.open(QIODevice::WriteOnly));
    expect({{u"f"_s, createdFolder}});
    move(u"f"_s, u"g"_s);
    inside.write("all");
    inside.close();
    EXPECT_EQ(events().at(u"g/x.jpg"_s), createdFile);
}

TEST_F(EventStreamTest, AWriterThatPausesIsWaitedForAndItsCloseIsNeverMissed) {
    // One was at it before anyone watched; the other's first bytes come before the first look.
    QFile before(path(u"before.jpg"_s));
    ASSERT_TRUE(before.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    watch({temporary.path()});
    QFile late(path(u"late.jpg"_s));
    ASSERT_TRUE(late.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    before.write("half");
    late.write("half");
    expect({});
    EXPECT_TRUE(_stream->isBeingWritten(before.fileName())) << "as the disk pass asks";
    tick(9s);
    expect({});
    EXPECT_TRUE(_stream->isBeingWritten(late.fileName()));
    // Not for ever: they are shown as they are.
    tick(2s);
    expect({{u"before.jpg"_s, createdFile}, {u"late.jpg"_s, createdFile}});
    EXPECT_FALSE(_stream->isBeingWritten(late.fileName()));
    move(u"late.jpg"_s, u"later.jpg"_s);
    expect({{u"late.jpg"_s, renamedFile}, {u"later.jpg"_s, renamedFile}});
    before.close();
    late.write("more");
    late.close();
    expect({{u"later.jpg"_s, EventItemModified | EventItemIsFile}});
}

/// Files as a test says they are.
struct ToldFiles {
    std::map<QByteArray, GrowingFiles::Sight> sights;
    std::map<QByteArray, Writers> writers;
    GrowingFiles files{
        {[this](const QByteArray& path) { return sights[path]; },
         [this](const QByteArray& path) { return writers[path]; }}};

    std::set<QByteArray> complete(std::chrono::milliseconds time) {
        std::set<QByteArray> paths; // in no order
        for (const auto& file : files.takeComplete(GrowingFiles::Clock::time_point(time)))
            paths.insert(file.path);
        return paths;
    }
};

TEST(GrowingFilesTest, QuietIsCompleteWhereNobodyWritesAndLongQuietWhereNobodyKnows) {
    ToldFiles told;
    told.sights["gone"].presence = Presence::Gone;
    for (const char* path : {"free", "written", "unknown", "closed", "changed"})
        told.sights[path] = {Presence::There, {1, 1}};
    told.sights["hidden"]; // can't be looked at
    told.writers = {
        {"written", Writers::Some}, {"unknown", Writers::Unknown}, {"hidden", Writers::Unknown}};
    for (const auto& [path, sight] : told.sights)
        told.files.add(path, createdFile, {});
    told.files.wasClosed("closed", 0, {});
    told.sights["changed"].state.size = 2;
    using Paths = std::set<QByteArray>;
    const std::pair<std::chrono::milliseconds, Paths> looks[] = {
        {499ms, {"closed"}},  {500ms, {"free"}}, {998ms, {}},
        {999ms, {"changed"}}, {9999ms, {}},      {10s, {"written", "unknown", "hidden"}}};
    for (const auto& [time, expected] : looks)
        EXPECT_EQ(told.complete(time), expected) << time.count();
    EXPECT_TRUE(told.files.isEmpty());

    // What was told early is told again when it is closed, if it has changed by then, and once.
    told.sights["written"].state.size = 2;
    for (const char* path : {"written", "unknown", "free"})
        told.files.wasClosed(path, EventItemModified, {});
    EXPECT_EQ(told.complete(10s), (Paths{"written", "free"})) << "and what stood, and is quiet";
    told.files.wasClosed("free", EventItemModified, GrowingFiles::Clock::time_point(10s));
    EXPECT_EQ(told.complete(10499ms), Paths{});
    EXPECT_EQ(told.complete(10500ms), Paths{"free"});
    EXPECT_TRUE(told.files.isEmpty());
}

TEST(GrowingFilesTest, AFileThatSomebodyWritesToIsHeldUnlessItIsOld) {
    ToldFiles told;
    const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
    for (const auto& [path, age] : {std::pair("new", 1min), {"old", 61min}, {"free", 0min}})
        told.sights[path] = {Presence::There, {1, (now - age).count()}};
    told.writers = {{"new", Writers::Some}, {"old", Writers::Some}};
    for (const char* path : {"new", "old", "free", "none"})
        EXPECT_EQ(told.files.holdIfWritten(path, createdFile, {}), path == QByteArray("new"))
            << path;
    EXPECT_EQ(told.complete(10s), std::set<QByteArray>{"new"});
    EXPECT_FALSE(told.files.holdIfWritten("new", createdFile, {})) << "told as it is";
}

TEST(GrowingFilesTest, RenamedFilesKeepTheirTimeAndTakeThePlaceOfOthers) {
    ToldFiles told;
    GrowingFiles& files = told.files;
    for (const char* path : {"f/a", "f/b", "fg/c", "g/b", "e"})
        told.sights[path] = {Presence::There, {1, 1}};
    const GrowingFiles::Clock::time_point start;
    for (const char* path : {"f/a", "f/b", "fg/c", "e"})
        files.add(path, createdFile, start);
    EXPECT_TRUE(files.rename("f/a", "f/b", EventItemRenamed));
    EXPECT_FALSE(files.rename("f/a", "e", EventItemRenamed)) << "what was there is gone";
    files.renameFolder("f", "g");
    files.renameFolder("fg", {});
    files.add("g/b", EventItemRemoved, start + 400ms); // known already
    std::map<QByteArray, std::uint32_t> complete;
    for (const auto& file : files.takeComplete(start + 500ms))
        complete[file.path] = file.flags;
    const auto flags = createdFile | EventItemRenamed | EventItemRemoved;
    EXPECT_EQ(complete, (decltype(complete){{"g/b", flags}}));
}

/// A clock that runs fifty times as fast: what the stream waits for passes by itself.
TEST_F(EventStreamTest, BatchesAndFilesThatNobodyClosesComeWithoutAFlush) {
    EXPECT_EQ(EventStream::Options().latency, 1s);
    const auto start = EventStream::Clock::now();
    const auto now = [start] { return start + 50 * (EventStream::Clock::now() - start); };
    watch({temporary.path() + u'/', temporary.path()}, {20ms, now});
    write(u".hidden"); // and linked, so that nobody closes it
    ASSERT_EQ(::link(qPrintable(path(u".hidden"_s)), qPrintable(path(u"linked.jpg"_s))), 0);
    EXPECT_TRUE(support::spinUntil([&] { return _events.contains(u"linked.jpg"_s); }));
    make(u"away"_s);
    EXPECT_TRUE(support::spinUntil([&] { return _events.contains(u"away"_s); }));
    move(u"away"_s, u".away"_s);
    EXPECT_TRUE(support::spinUntil([&] { return _events[u"away"_s] & EventItemRenamed; }));
}

/// The stream's thread is kept from reading until the kernel's queue has run over.
TEST_F(EventStreamTest, WhenEventsWereLostAllIsToBeScannedAndWatchedAnew) {
    platform::Mutex mutex;
    const auto now = [&] {
        const platform::Lock lock(mutex);
        return EventStream::Clock::time_point(1h);
    };
    watch({temporary.path()}, {24h, now});
    platform::Lock hold(mutex);
    make(u"a"_s);
    const int most = support::readFile(u"/proc/sys/fs/inotify/max_queued_events"_s).toInt();
    for (int i = 0; i <= most / 4; ++i) { // each time four events
        move(u"a"_s, u"b"_s);
        move(u"b"_s, u"a"_s);
    }
    testing::internal::CaptureStderr();
    hold.unlock();
    const Events told = events();
    const std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.at(temporary.path()), EventMustScanSubDirs | renamedFolder);
    EXPECT_NE(complaint.find("max_queued_events = " + std::to_string(most)), std::string::npos);
    make(u"a/after"_s);
    expect({{u"a/after"_s, createdFolder}});

    make(u"late"_s);
    _stream->flushSync();
    _stream.reset();
    QCoreApplication::processEvents();
    EXPECT_TRUE(_events.empty());
}

TEST(EventStreamLimitTest, AnExhaustedLimitIsToldAndTheRootIsToBeScanned) {
    QTemporaryDir folder;
    for (int i = 0; i < 30; ++i)
        ASSERT_TRUE(QDir().mkpath(u"%1/%2"_s.arg(folder.path()).arg(i)));
    // The limit can be set in a name space of the child's own.
    const QByteArray limit = "unshare -Ur sh -c 'echo 20 > /proc/sys/user/max_inotify_watches";
    if (std::system(limit + "' 2>/dev/null") != 0)
        GTEST_SKIP() << "name spaces of users are not permitted here";
    const QString self = QFileInfo(u"/proc/self/exe"_s).symLinkTarget();
    qputenv("WATCHED_FOLDER", QFile::encodeName(folder.path()));
    testing::internal::CaptureStderr();
    const int result = std::system(
        limit + " && ulimit -c 0 && exec " + QFile::encodeName(self) +
        " --gtest_also_run_disabled_tests --gtest_filter=*DISABLED_WithTheLimit >&2'");
    const auto output = QByteArray::fromStdString(testing::internal::GetCapturedStderr());
    EXPECT_EQ(result, 0) << output.constData();
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

} // namespace
