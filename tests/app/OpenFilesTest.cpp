#include "app/OpenedPaths.h"
#include "app/RunningProgram.h"
#include "library/OpenedRoots.h"
#include "platform/program/TextLanguages.h"
#include "shell/commands/MarkCommands.h"
#include "support/Rows.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

struct OpenFilesTest : RunningProgramTest {
    LargeView& large() { return window().largeView(); }
    /// What the large view has, with the focus in brackets, once all of it is there and nothing is
    /// scanned.
    testing::AssertionResult showsLarge(const QString& names) {
        QString shown;
        const auto isShown = [&] {
            shown.clear();
            const PhotoBin& bin = large().controller().bin();
            QStringList sorted;
            for (const auto& item : bin.fileItemArray()) {
                const bool isFocus = item == bin.focusImageFileItem();
                sorted += isFocus ? u'[' + item->fileName() + u']' : item->fileName();
            }
            // Their order is that of the group.
            std::ranges::sort(sorted, {}, [](QString name) { return name.remove(u'['); });
            shown = sorted.join(u' ');
            return large().isShown() && shown == names && !controller->isScanning() &&
                   large().chosenImageFileItem();
        };
        if (support::spinUntil(isShown)) return testing::AssertionSuccess();
        return testing::AssertionFailure() << shown.toStdString();
    }
    /// What the program has of a request for the photograph; answers that one.
    OpenFilesRequest::NamedFile request(const QString& picture) {
        const auto request = OpenFilesRequest::reduce(
            {picture}, [](const auto&) { return OpenFilesRequest::Kind::File; });
        controller->setOpenFiles(std::make_shared<PBOpenFiles>(request->folders));
        return request->firstFile;
    }
    testing::AssertionResult opens(const QStringList& paths, const QString& names) {
        controller->applicationOpenFiles(paths);
        return showsLarge(names);
    }
    QStringList openedRoots() { return OpenedRoots::paths(controller->aliasManager()); }
    QStringList rows(const char* sql) {
        return support::rowsOf(controller->shellServices().mainFileDb, QLatin1StringView(sql));
    }
};

TEST_F(OpenFilesTest, photographsAreShownLargeAndTheirFoldersAreThereForThisRun) {
    for (const QString& name : {u"p/a.png"_s, u"p/b.png"_s, u"n/two/c.png"_s})
        makePicture(name);
    const QString below = makePicture(u"p/q/d.png"_s);
    const QString hidden = makePicture(u"p/.kept/h.png"_s);
    const QString p = path(u"p"_s);
    controller->applicationOpenFiles({path(u"p/b.png"_s)});
    EXPECT_EQ(selectedFolder(), p);
    EXPECT_TRUE(showsLarge(u"a.png [b.png]"_s)) << "not what is below";
    EXPECT_TRUE(opens({below}, u"[d.png]"_s));
    EXPECT_TRUE(opens({path(u"p/b.png"_s), path(u"n/two/c.png"_s)}, u"[b.png] c.png"_s))
        << "of several folders, without what is above";
    EXPECT_EQ(openedRoots(), (QStringList{p, p + u"/q"_s, path(u"n/two"_s)}));
    EXPECT_EQ(openedRoots(), roots());
    EXPECT_TRUE(opens({path(u"p/b.png"_s), path(u"p/a.png"_s)}, u"a.png [b.png]"_s));
    large().view_ThumbnailView();
    EXPECT_TRUE(shows(2)) << "neither what is below, nor what else was opened";
    EXPECT_FALSE(controller->openFiles());

    // They are gone with the run; one that was kept stays, and has its folders.
    window().folderRootCommands().keepFolder(tree().dataSource().folderAliasItemWithAliasObject(
        *controller->aliasManager().findAliasObjectByPath(p)));
    EXPECT_EQ(selectedFolder(), p);
    EXPECT_TRUE(shows(3));
    EXPECT_EQ(openedRoots(), QStringList{path(u"n/two"_s)}) << "what lies in it is in it";
    start();
    const QStringList kept{p, p + u"/q"_s};
    EXPECT_EQ(roots(), kept);
    EXPECT_TRUE(selects(p));
    EXPECT_EQ(
        rows("select FileName from ImageFile order by FileName"),
        support::words("a.png b.png d.png"));
    EXPECT_TRUE(opens({below}, u"[d.png]"_s));
    EXPECT_EQ(roots(), kept);
    // What the sidebar hides is nobody's.
    EXPECT_TRUE(opens({hidden}, u"[h.png]"_s));
    EXPECT_EQ(openedRoots(), QStringList{p + u"/.kept"_s});
    window().folderRootCommands().removeFolderAlias();
    EXPECT_FALSE(large().isShown());
    EXPECT_TRUE(opens({hidden}, u"[h.png]"_s)) << "removed by hand, and opened once more";
    // What lies behind a link is where it really is.
    ASSERT_TRUE(QFile::link(path(u"n/two"_s), p + u"/link"_s));
    EXPECT_TRUE(opens({p + u"/link/c.png"_s}, u"[c.png]"_s));
    EXPECT_EQ(selectedFolder(), path(u"n/two"_s));

    // As a run leaves it that was ended by force.
    PBCatalogue catalogue(controller->shellServices().mainFileDb);
    const qint64 left = catalogue.insertFolderAliasWithData(
        {}, 0, path(u"n"_s), static_cast<qint64>(OpenedRoots::openedState));
    ASSERT_GT(catalogue.insertFolderWithAliasId(left, {}), 0);
    start();
    EXPECT_EQ(roots(), kept);
    EXPECT_TRUE(
        support::spinUntil([&] { return rows("select ReservePath from FolderAlias") == kept; }));
    EXPECT_EQ(
        rows("select count(*) from Folder where AliasId not in (select Id from FolderAlias)"),
        QStringList{u"0"_s});
}

TEST_F(OpenFilesTest, aFolderThatIsToldLateLeavesThePhotographOnShow) {
    const QString picture = makePicture(u"p/q/a.png"_s);
    controller->addFolders({path(u"p"_s)});
    ASSERT_TRUE(shows(1));
    // As a disk has it that takes long to list its folders.
    large().openFilesEnterToLargeView(request(picture));
    window().sourceSelection().selectFolder(path(u"p/q"_s));
    EXPECT_TRUE(showsLarge(u"[a.png]"_s));
    EXPECT_TRUE(controller->openFiles());
    window().sourceSelection().selectFolder(path(u"p"_s));
    EXPECT_TRUE(shows(1)) << "the user has chosen another folder";
}

TEST_F(OpenFilesTest, aRootThatIsFoundLateHasItsPhotographsOnce) {
    const QString picture = makePicture(u"p/q/a.png"_s);
    makePicture(u"p/q/b.png"_s);
    const QString p = path(u"p"_s);
    const QString q = p + u"/q"_s;
    controller->addFolders({p});
    ASSERT_TRUE(shows(2));
    const auto root = controller->aliasManager().findAliasObjectByPath(p);
    const auto isFound = [&](const PBAliasResolution& answer) {
        const PBAliasArray changed = controller->aliasManager().aliasDidAnswer(*root, answer);
        SourceSelection& selection = window().sourceSelection();
        root->isMounted() ? selection.volumesDidMount(changed)
                          : selection.volumesDidUnmount(changed);
    };
    isFound({.outcome = PBAliasResolution::Outcome::VolumeAbsent});
    ASSERT_EQ(roots(), QStringList{QString()});
    controller->applicationOpenFiles({picture});
    EXPECT_EQ(roots(), QStringList{p}) << "asked for once more";
    EXPECT_TRUE(showsLarge(u"[a.png] b.png"_s));

    // Its disk answers later still.
    large().view_ThumbnailView();
    isFound({.outcome = PBAliasResolution::Outcome::VolumeAbsent});
    ASSERT_TRUE(window().folderRootCommands().openFolder(q));
    const auto asked = request(picture);
    window().sourceSelection().selectFolder(q);
    large().openFilesEnterToLargeView(asked);
    ASSERT_TRUE(showsLarge(u"[a.png] b.png"_s));
    // Whoever watches may have found it by now, since its disk is there.
    ASSERT_TRUE(openedRoots() == QStringList{q} || roots() == QStringList{p});
    isFound({.outcome = PBAliasResolution::Outcome::Found, .path = p});
    EXPECT_EQ(roots(), QStringList{p});
    EXPECT_EQ(selectedFolder(), q);
    EXPECT_TRUE(showsLarge(u"[a.png] b.png"_s)) << "what is looked at stays";
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(rows("select count(*) from ImageFile"), QStringList{u"2"_s});
}

TEST_F(OpenFilesTest, aPhotographThatIsLeftBeforeTheScanHasItIsSelectedWhenItComes) {
    for (const QString& name : {u"p/a.png"_s, u"p/b.png"_s, u"p/q/c.png"_s})
        makePicture(name);
    controller->applicationOpenFiles({path(u"p/b.png"_s)});
    ASSERT_TRUE(large().isShown() && !large().chosenImageFileItem());
    large().view_ThumbnailView();
    EXPECT_TRUE(support::spinUntil(
        [this] { return !selectedNames().isEmpty() && !controller->isScanning(); }));
    EXPECT_EQ(selectedNames(), QStringList{u"b.png"_s});
}

TEST_F(OpenFilesTest, whatTheUserTurnedIsTurnedFromTheFirstPaintOnInALaterRun) {
    const QString picture = path(u"p/a.jpg"_s);
    support::writePicture(picture, {80, 60});
    ASSERT_TRUE(opens({picture}, u"[a.jpg]"_s));
    window().markCommands().rotateLeft();
    window().markCommands().ratingWithStar(4);
    ASSERT_TRUE(support::spinUntil([&] {
        return controller->isIdle() && large().controller().bin().focusImageFileItem()->star() == 4;
    }));
    controller.reset();
    const QString rowCount =
        u"select (select count(*) from ImageFile) + count(*) from FolderAlias"_s;
    EXPECT_EQ(support::rowsOf(catalogue(), rowCount), QStringList{u"0"_s});
    start();
    controller->applicationOpenFiles({picture});
    double first = -1;
    EXPECT_TRUE(support::spinUntil([&] {
        const auto shown = large().controller().bin().focusImageFileItem();
        if (shown && first < 0) first = shown->rotateAngle();
        return shown && large().chosenImageFileItem() && !controller->isScanning();
    }));
    EXPECT_EQ(first, 90);
    EXPECT_EQ(large().chosenImageFileItem()->rotateAngle(), 90);
    EXPECT_EQ(large().chosenImageFileItem()->star(), 4) << "marks come back";
}

TEST_F(OpenFilesTest, whatCannotBeOpenedIsToldInASentenceEach) {
    const QString picture = makePicture(u"p/a.png"_s);
    const QString text = path(u"p/notes.txt"_s);
    const QString locked = path(u"p/locked.png"_s);
    const QString pipe = path(u"p/pipe.png"_s);
    for (const QString& file : {text, locked})
        support::writeFile(file, "x");
    ASSERT_TRUE(QFile::setPermissions(locked, {}));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    std::vector<UnopenedPath> told;
    QStringList openable = openablePaths(
        {picture + u'x', picture, text, locked, pipe, temporary.path()},
        [&](const UnopenedPath& unopened) { told.push_back(unopened); });
    if (::geteuid() == 0) // who may read the locked one, too
        EXPECT_TRUE(openable.removeOne(locked));
    else
        EXPECT_EQ(std::exchange(told[2], told.back()).error, EACCES);
    EXPECT_EQ(openable, (QStringList{picture, temporary.path()}));
    using enum UnopenedPath::Fault;
    told.resize(3);
    EXPECT_EQ(
        told, (std::vector<UnopenedPath>{
                  {Missing, picture + u'x', ENOENT},
                  {NoPhotograph, text, 0},
                  {NeitherFileNorFolder, pipe, 0}}));
    NoticeBar& notice = controller->mainWindowController().noticeBar();
    platform::LocalizedTexts::setLanguage(u"de"_s);
    EXPECT_EQ(
        localizedSentenceOf(told[1]),
        text + u" ist kein Foto einer Art, die angezeigt werden kann."_s);
    platform::LocalizedTexts::setLanguage(u"en"_s);
    QLocale::setDefault(QLocale::c());
    controller->tellUnopened(told);
    EXPECT_FALSE(notice.text().isEmpty());
    controller->tellUnopened({});
    EXPECT_TRUE(notice.text().isEmpty()) << "the next request is another";
}

} // namespace
