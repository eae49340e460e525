#include "library/WatchedChanges.h"

#include "library/SCEvents.h"
#include "platform/EventStream.h"
#include "platform/MainLoop.h"
#include "support/Support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace platform;

namespace {

struct Told {
    const char* path;
    std::uint32_t flags;
};

constexpr std::uint32_t file = EventItemIsFile;
constexpr std::uint32_t folder = EventItemIsDir;
constexpr std::uint32_t created = EventItemCreated;
constexpr std::uint32_t removed = EventItemRemoved;
constexpr std::uint32_t renamed = EventItemRenamed;
constexpr std::uint32_t mustScan = EventMustScanSubDirs;

struct Case {
    const char* name;
    const char* selected;
    std::vector<Told> events;
    std::vector<FolderRescan> rescans;
    bool checkExist = false;
    QStringList refreshed = {}; // with "+" for those with their children
};

FolderRescan flat(const char* path) {
    return {QString::fromLatin1(path), false};
}
FolderRescan deep(const char* path) {
    return {QString::fromLatin1(path), true};
}

std::vector<SCEvent> eventsOf(const std::vector<Told>& told) {
    std::vector<SCEvent> events;
    for (const auto& [path, flags] : told)
        events.push_back(SCEvent::eventWithEventId(1, {}, QString::fromLatin1(path), flags));
    return events;
}

} // namespace

TEST(WatchedChangesTest, OnlyWhatTouchesTheSelectedFolderIsLookedAtAgain) {
    const QString sidebar = QStringLiteral("/r");
    const std::vector<Case> cases{
        {"new image elsewhere", "/r/a", {{"/r/b/x.jpg", file | created}}, {}},
        {"new image beside", "/r/a", {{"/r/ab/x.jpg", file | created}}, {}},
        {"new image above", "/r/a", {{"/r/x.jpg", file | created}}, {}},
        {"new images in one folder",
         "/r/a",
         {{"/r/a/x.jpg", file | created}, {"/r/A/y.JPG", file | created}},
         {flat("/r/a")}},
        {"new image below", "/r/a", {{"/r/a/b/c/x.jpg", file | created}}, {flat("/r/a/b/c")}},
        {"no image",
         "/r/a",
         {{"/r/a/x.txt", file | created},
          {"/r/a/x", file | removed},
          {"/r/a/y.doc", file | renamed}},
         {}},
        {"removed image", "/r/a", {{"/r/a/b/x.jpg", file | removed}}, {}, true},
        {"removed image elsewhere", "/r/a", {{"/r/x.jpg", file | removed}}, {}},
        {"renamed image", "/r/a", {{"/r/a/x.jpg", file | renamed}}, {flat("/r/a")}, true},
        {"written in place", "/r/a", {{"/r/a/x.jpg", file}}, {}},
        {"neither file nor folder", "/r/a", {{"/r/a/x.jpg", created}}, {}},
        {"new folder", "/r/a", {{"/r/a/b", folder | created}}, {}, false, {QStringLiteral("/r/a")}},
        {"removed folder",
         "/r/a",
         {{"/r/a/b", folder | removed}},
         {},
         true,
         {QStringLiteral("/r/a")}},
        {"removed selected folder", "/r/a", {{"/r/a", folder | removed}}, {}, true, {sidebar}},
        {"removed folder above",
         "/r/a",
         {{"/r", folder | removed}},
         {},
         false,
         {QStringLiteral("/")}},
        {"renamed folder after its file",
         "/r/a",
         {{"/r/a/b/x.jpg", file | created}, {"/r/a/b", folder | renamed}},
         {deep("/r/a/b")},
         true,
         {QStringLiteral("/r/a")}},
        {"renamed folder elsewhere", "/r/a", {{"/r/b", folder | renamed}}, {}, false, {sidebar}},
        {"folder touched", "/r/a", {{"/r/a", folder}}, {}},
        {"lost above",
         "/r/a/b",
         {{"/r/a", folder | renamed | mustScan}},
         {deep("/r/a/b")},
         true,
         {QStringLiteral("/r+")}},
        {"lost at the selection",
         "/r/a",
         {{"/r/a/", folder | renamed | mustScan}},
         {deep("/r/a")},
         true,
         {QStringLiteral("/r+")}},
        {"nothing selected",
         "",
         {{"/r/x.jpg", file | renamed}, {"/r/a", folder | renamed | mustScan}},
         {},
         false,
         {QStringLiteral("/r+")}},
    };
    for (const Case& one : cases) {
        QStringList refreshed;
        const WatchedChangesQuestions questions{
            [](const QString&) { return false; },
            [&](const QString& path, bool children) {
                refreshed.append(children ? path + u'+' : path);
                return true;
            },
            [](const QString& uti) { return uti == u"public.jpeg"; }};
        const WatchedChanges changes = watchedChangesOfEvents(
            eventsOf(one.events), QString::fromLatin1(one.selected), questions);
        EXPECT_EQ(changes.rescans, one.rescans) << one.name;
        EXPECT_EQ(changes.checkExist, one.checkExist) << one.name;
        EXPECT_EQ(refreshed, one.refreshed) << one.name;
        EXPECT_EQ(changes.sidebarChanged, !one.refreshed.isEmpty()) << one.name;
        EXPECT_FALSE(changes.rootsChanged) << one.name;
    }
}

TEST(WatchedChangesTest, RootsAreAskedOfRootEventsAndOfFoldersOnly) {
    QStringList asked;
    const WatchedChangesQuestions questions{
        [&](const QString& path) {
            asked.append(path);
            return path == u"/r";
        },
        [](const QString&, bool) { return false; }, [](const QString&) { return true; }};
    WatchedChanges changes = watchedChangesOfEvents(
        eventsOf(
            {{"/q", EventRootChanged}, {"/s", folder | renamed}, {"/r/x.jpg", file | removed}}),
        QStringLiteral("/elsewhere"), questions);
    EXPECT_EQ(asked, (QStringList{QStringLiteral("/q"), QStringLiteral("/s")}));
    EXPECT_FALSE(changes.rootsChanged || changes.sidebarChanged);
    // A root event is nothing else besides.
    changes = watchedChangesOfEvents(
        eventsOf({{"/r", EventRootChanged | folder | renamed}}), QStringLiteral("/r"), questions);
    EXPECT_TRUE(changes.rootsChanged && changes.sidebarChanged);
    EXPECT_TRUE(changes.rescans.empty() && !changes.checkExist);
}

namespace {

class Listener final : public SCEventListenerProtocol {
public:
    void pathWatcher(SCEvents&, std::span<const SCEvent> events) override {
        for (const SCEvent& event : events)
            paths.append(event.eventPath());
    }
    QStringList paths;
};

} // namespace

TEST(SCEventsTest, OneStreamAtATimeAndItsDelegateHearsWhatIsNotExcluded) {
    MainLoop loop;
    const QTemporaryDir temporary;
    const QString root = temporary.path();
    Listener listener;
    EventStream::Options options;
    options.latency = std::chrono::hours(1);
    SCEvents events(options);
    events.setDelegate(&listener);
    events.setIgnoreEventsFromSubDirs(false);
    events.setExcludedPaths({root + QStringLiteral("/b.jpg")});

    EXPECT_FALSE(events.startWatchingPaths({}));
    EXPECT_FALSE(events.flushEventStreamSync());
    EXPECT_TRUE(events.startWatchingPaths({root}));
    EXPECT_FALSE(events.startWatchingPaths({QStringLiteral("/")}));
    EXPECT_EQ(events.watchedPaths(), QStringList{root});
    events.flushEventStreamSync();

    support::writeFile(root + QStringLiteral("/a.jpg"), "a");
    support::writeFile(root + QStringLiteral("/b.jpg"), "b");
    EXPECT_TRUE(events.flushEventStreamSync());
    ASSERT_TRUE(support::spinUntil([&] { return !listener.paths.isEmpty(); }));
    EXPECT_EQ(listener.paths, QStringList{root + QStringLiteral("/a.jpg")});

    EXPECT_TRUE(events.stopWatchingPaths());
    EXPECT_FALSE(events.stopWatchingPaths());
    EXPECT_EQ(events.watchedPaths(), QStringList{root});
}
