#include "library/WatchedChanges.h"

#include "platform/files/EventStream.h"
#include "support/Support.h"

using namespace platform;

namespace {

/// Events told as texts, one a word: letters for what it is and what befell it, and the path.
std::vector<SCEvent> eventsOf(const char* told) {
    static const std::map<QChar, std::uint32_t> flagOf{
        {u'f', EventItemIsFile},  {u'd', EventItemIsDir},   {u'c', EventItemCreated},
        {u'x', EventItemRemoved}, {u'n', EventItemRenamed}, {u'l', EventMustScanSubDirs},
        {u'r', EventRootChanged}, {u'm', EventItemModified}};
    std::vector<SCEvent> events;
    for (const QString& event : support::words(told)) {
        const qsizetype path = event.indexOf(u'/');
        std::uint32_t flags = 0;
        for (const QChar letter : event.left(path))
            flags |= flagOf.at(letter);
        events.emplace_back(event.mid(path), flags);
    }
    return events;
}

TEST(WatchedChangesTest, OnlyWhatTouchesTheSelectedFolderIsLookedAtAgain) {
    // Events, folders to scan again and folders of the sidebar to refresh, those with what is below
    // them with "+"; and whether files may be gone. Selected is "/r/a".
    const std::tuple<const char*, const char*, bool, const char*> cases[] = {
        // Images elsewhere, beside, above; in the folder and below.
        {"fc/r/b/x.jpg fc/r/ab/x.jpg fc/r/x.jpg fx/r/x.jpg", "", false, ""},
        {"fc/r/a/x.jpg fc/r/a/y.JPG fc/r/A/z.jpg fx/r/A/x.jpg", "/r/a", false, ""},
        {"fc/r/a/t/b/x.jpg fc/r/a/T/x.jpg", "/r/a/t/b /r/a/T", false, ""},
        {"fx/r/a/b/x.jpg", "", true, ""},
        {"fn/r/a/x.jpg", "/r/a", true, ""},
        {"fm/r/a/x.jpg fm/r/b/x.jpg fm/r/a/x.txt", "/r/a", false, ""},
        // No images; written in place; neither file nor folder.
        {"fc/r/a/x.txt fx/r/a/x fn/r/a/y.doc f/r/a/x.jpg c/r/a/x.jpg", "", false, ""},
        // Folders: removed, the selected one, one above, one elsewhere, touched only.
        {"dx/r/a/b", "", true, "/r/a"},
        {"dx/r/a", "", true, "/r"},
        {"dx/r dn/r/b", "", false, "/ /r"},
        {"fc/r/a/b/x.jpg dn/r/a/b", "/r/a/b+", true, "/r/a"},
        {"dn/r/a/b fc/r/a/b/x.jpg", "/r/a/b+", true, "/r/a"},
        {"d/r/a", "", false, ""},
        // Events were lost above and at the selection.
        {"dnl/r", "/r/a+", true, "/+"},
        {"dnl/r/a/", "/r/a+", true, "/r+"},
        // Each folder is listed once, with what is below it if any event says so.
        {"dc/r/a/b dc/r/a/c dcl/r/a/d dc/r/a/b/e dc/r/a/f", "", false, "/r/a+ /r/a/b"}};
    for (const auto& [events, rescans, checkExist, refreshes] : cases) {
        SCOPED_TRACE(events);
        QStringList refreshed;
        const WatchedChangesQuestions questions{
            [](const QString&, const QString&) { return false; },
            [&](const QString& path, bool children) {
                refreshed.append(children ? path + u'+' : path);
                return true;
            },
            [](const QString& uti) { return uti == u"public.jpeg"; }};
        const auto changes = watchedChangesOfEvents(eventsOf(events), u"/r/a"_s, questions);
        const QStringList scanned = support::listed(changes.rescans, [](const auto& rescan) {
            return rescan == FolderRescan{rescan.path, true} ? rescan.path + u'+' : rescan.path;
        });
        EXPECT_EQ(scanned, support::words(rescans));
        EXPECT_EQ(changes.checkExist, checkExist);
        EXPECT_EQ(refreshed, support::words(refreshes));
        EXPECT_EQ(changes.sidebarChanged, !refreshed.isEmpty());
        EXPECT_FALSE(changes.rootsChanged);
        // With nothing selected only the sidebar is of interest.
        const auto none = watchedChangesOfEvents(eventsOf(events), {}, questions);
        EXPECT_TRUE(none.rescans.empty() && !none.checkExist);
        // Without sub-folders, what is new in one does not come on display.
        WatchedChangesQuestions flat = questions;
        flat.showsSubFolders = false;
        for (const auto& rescan : watchedChangesOfEvents(eventsOf(events), u"/r/a"_s, flat).rescans)
            EXPECT_EQ(rescan.path, u"/r/a");
    }
}

TEST(WatchedChangesTest, RootsAreAskedOfRootEventsAndOfFoldersOnly) {
    QStringList asked;
    const WatchedChangesQuestions questions{
        [&](const QString& path, const QString& movedTo) {
            asked.append(path + movedTo);
            return path == u"/r";
        },
        [](const QString&, bool) { return false; },
        [](const QString& uti) { return uti == u"public.jpeg"; }};
    WatchedChanges changes =
        watchedChangesOfEvents(eventsOf("r/q dn/s fx/r/x.jpg"), u"/elsewhere"_s, questions);
    EXPECT_EQ(asked, (QStringList{u"/q"_s, u"/s"_s}));
    EXPECT_FALSE(changes.rootsChanged || changes.sidebarChanged);
    // A root event is nothing else besides.
    changes = watchedChangesOfEvents(eventsOf("rdn/r"), u"/r"_s, questions);
    EXPECT_TRUE(changes.rootsChanged && changes.sidebarChanged);
    EXPECT_TRUE(changes.rescans.empty() && !changes.checkExist);
    asked.clear();
    const SCEvent moved(u"/r"_s, EventRootChanged, u">/x"_s);
    (void)watchedChangesOfEvents({&moved, 1}, {}, questions);
    EXPECT_EQ(asked, QStringList{u"/r>/x"_s});
    // Of files below the selection: what was made anew, put in its place or written.
    changes = watchedChangesOfEvents(
        eventsOf("fc/r/a/new.jpg fn/r/a/b/put.JPG fm/r/a/written.jpg fx/r/a/gone.jpg fm/r/a/x.txt "
                 "fm/r/b/beside.jpg dn/r/a/folder.jpg c/r/a/neither.jpg"),
        u"/r/a"_s, questions);
    EXPECT_EQ(
        changes.rewrittenFiles, support::words("/r/a/new.jpg /r/a/b/put.JPG /r/a/written.jpg"));
}

} // namespace
