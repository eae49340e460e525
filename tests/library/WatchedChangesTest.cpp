#include "library/WatchedChanges.h"

#include "library/SCEvents.h"
#include "platform/EventStream.h"
#include "platform/MainLoop.h"
#include "support/Support.h"

using namespace platform;

namespace {

/// Events told as texts, one a word: letters for what it is and what befell it, and the path.
std::vector<SCEvent> eventsOf(const char* told) {
    static const std::map<QChar, std::uint32_t> flagOf{
        {u'f', EventItemIsFile},  {u'd', EventItemIsDir},   {u'c', EventItemCreated},
        {u'x', EventItemRemoved}, {u'n', EventItemRenamed}, {u'l', EventMustScanSubDirs},
        {u'r', EventRootChanged}};
    std::vector<SCEvent> events;
    for (const QString& event : QString::fromLatin1(told).split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype path = event.indexOf(u'/');
        std::uint32_t flags = 0;
        for (const QChar letter : event.left(path))
            flags |= flagOf.at(letter);
        events.push_back(SCEvent::eventWithEventId(1, {}, event.mid(path), flags));
    }
    return events;
}

} // namespace

TEST(WatchedChangesTest, OnlyWhatTouchesTheSelectedFolderIsLookedAtAgain) {
    // Events, folders to scan again and folders of the sidebar to refresh, those with what is below
    // them with "+"; and whether files may be gone. Selected is "/r/a".
    const std::tuple<const char*, const char*, bool, const char*> cases[] = {
        // Images elsewhere, beside, above; in the folder and below.
        {"fc/r/b/x.jpg fc/r/ab/x.jpg fc/r/x.jpg fx/r/x.jpg", "", false, ""},
        {"fc/r/a/x.jpg fc/r/A/y.JPG", "/r/a", false, ""},
        {"fc/r/a/b/c/x.jpg", "/r/a/b/c", false, ""},
        {"fx/r/a/b/x.jpg", "", true, ""},
        {"fn/r/a/x.jpg", "/r/a", true, ""},
        // No images; written in place; neither file nor folder.
        {"fc/r/a/x.txt fx/r/a/x fn/r/a/y.doc f/r/a/x.jpg c/r/a/x.jpg", "", false, ""},
        // Folders: new, removed, the selected one, one above, one elsewhere, touched only.
        {"dc/r/a/b", "", false, "/r/a"},
        {"dx/r/a/b", "", true, "/r/a"},
        {"dx/r/a", "", true, "/r"},
        {"dx/r", "", false, "/"},
        {"fc/r/a/b/x.jpg dn/r/a/b", "/r/a/b+", true, "/r/a"},
        {"dn/r/b", "", false, "/r"},
        {"d/r/a", "", false, ""},
        // Events were lost above and at the selection.
        {"dnl/r", "/r/a+", true, "/+"},
        {"dnl/r/a/", "/r/a+", true, "/r+"}};
    for (const auto& [events, rescans, checkExist, refreshes] : cases) {
        SCOPED_TRACE(events);
        QStringList refreshed;
        const WatchedChangesQuestions questions{
            [](const QString&) { return false; },
            [&](const QString& path, bool children) {
                refreshed.append(children ? path + u'+' : path);
                return true;
            },
            [](const QString& uti) { return uti == u"public.jpeg"; }};
        const WatchedChanges changes =
            watchedChangesOfEvents(eventsOf(events), u"/r/a"_s, questions);
        QStringList scanned;
        for (const FolderRescan& rescan : changes.rescans)
            scanned.append(
                rescan == FolderRescan{rescan.path, true} ? rescan.path + u'+' : rescan.path);
        EXPECT_EQ(scanned.join(u' '), QString::fromLatin1(rescans));
        EXPECT_EQ(changes.checkExist, checkExist);
        EXPECT_EQ(refreshed.join(u' '), QString::fromLatin1(refreshes));
        EXPECT_EQ(changes.sidebarChanged, !refreshed.isEmpty());
        EXPECT_FALSE(changes.rootsChanged);
        refreshed.clear();
        // With nothing selected only the sidebar is of interest.
        const WatchedChanges none = watchedChangesOfEvents(eventsOf(events), {}, questions);
        EXPECT_TRUE(none.rescans.empty() && !none.checkExist);
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
    WatchedChanges changes =
        watchedChangesOfEvents(eventsOf("r/q dn/s fx/r/x.jpg"), u"/elsewhere"_s, questions);
    EXPECT_EQ(asked, (QStringList{u"/q"_s, u"/s"_s}));
    EXPECT_FALSE(changes.rootsChanged || changes.sidebarChanged);
    // A root event is nothing else besides.
    changes = watchedChangesOfEvents(eventsOf("rdn/r"), u"/r"_s, questions);
    EXPECT_TRUE(changes.rootsChanged && changes.sidebarChanged);
    EXPECT_TRUE(changes.rescans.empty() && !changes.checkExist);
}

namespace {

struct Listener final : SCEventListenerProtocol {
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
    events.setExcludedPaths({root + u"/b.jpg"_s});

    EXPECT_FALSE(events.startWatchingPaths({}) || events.flushEventStreamSync());
    EXPECT_TRUE(events.startWatchingPaths({root}));
    EXPECT_FALSE(events.startWatchingPaths({u"/"_s}));
    EXPECT_EQ(events.watchedPaths(), QStringList{root});
    events.flushEventStreamSync();

    support::writeFile(root + u"/a.jpg"_s, "a");
    support::writeFile(root + u"/b.jpg"_s, "b");
    EXPECT_TRUE(events.flushEventStreamSync());
    ASSERT_TRUE(support::spinUntil([&] { return !listener.paths.isEmpty(); }));
    EXPECT_EQ(listener.paths, QStringList{root + u"/a.jpg"_s});
    EXPECT_TRUE(events.stopWatchingPaths());
    EXPECT_FALSE(events.stopWatchingPaths());
}
