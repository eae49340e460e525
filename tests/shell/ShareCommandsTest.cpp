#include "shell/files/ShareCommands.h"
#include "shell/files/ExportCommands.h"
#include "shell/files/ExportSheet.h"

#include "shell/FilesFixture.h"

#include <QMenu>
#include <QMessageBox>

#include <sys/stat.h>

namespace {

using platform::Wallpaper::Result;

/// Photographs of 8 x 4 pixels, all chosen: a.png as it is, b.png turned in the catalogue, c.png by
/// what was stored of it, and another a.png, of another folder, turned upside down.
struct ShareCommandsTest : FilesFixture {
    ShareCommandsTest() : FilesFixture(std::chrono::hours(1)) {
        add(u"a"_s, 1, 0);
        add(u"b"_s, 1, 90);
        add(u"c"_s, 1, 0);
        add(u"b"_s, 2, 180);
        PBCatalogue(db).insertTiffWithImageFileId(3, {{u"Orientation"_s, 6}});
        PBCatalogue(db).insertTiffWithImageFileId(1, {{u"Orientation"_s, 1}});
        window.show();
    }
    void add(const QString& name, qint64 folder, double angle) {
        items.push_back(support::makeItem(name + u".png"_s, std::ssize(items) + 1, 0, 0, folder));
        items.back()->setRotateAngle(angle);
        support::writePicture(pathOf(*items.back()), {8, 4});
    }
    QString pathOf(const PBImageFileItem& item) const {
        return folders.pathOfFolderId(item.folderId()) + u'/' + item.fileName();
    }
    ShareService service(const QString& title, bool isProgram) {
        const auto perform = [this, title](const QStringList& paths, const auto& done) {
            handed = paths;
            taker = title;
            done(isTaken);
        };
        return {.title = title, .image = {}, .performWithItems = perform, .isProgram = isProgram};
    }
    static QString entries(const QMenu& menu) {
        QStringList texts;
        for (const QAction* entry : menu.actions())
            texts += entry->isEnabled() ? entry->text() : u'(' + entry->text() + u')';
        return texts.join(u' ');
    }
    void share(int entry = 0) {
        QMenu menu;
        shares.menuNeedsUpdate(menu);
        menu.actions().at(entry)->trigger();
        wait();
    }
    /// The folders of copies.
    QStringList cached() const {
        return QDir(cache).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    }
    /// What the window says, once.
    QString alert() {
        auto* box = window.findChild<QMessageBox*>();
        if (!box) return {};
        const QString text = box->text() + u'|' + box->informativeText();
        delete box;
        return text;
    }

    std::vector<ShareService> found{service(u"View & Co"_s, true), service(u"Mail"_s, false)};
    std::vector<ShareServices::Found> asked;
    QStringList types;
    bool isTaken = true;
    QStringList handed;
    QString taker;
    Result wallpaper = Result::Done;
    const QString cache = path(u"cache/SharingService");
    ShareCommands shares{
        {.imageImporterManager = importers,
         .folderPaths = folders,
         .mainFileDb = db,
         .tasks = tasks,
         .window = window,
         .chosen = choice,
         .sharingServicesForItems =
             [this](const QStringList& mimeTypes, const ShareServices::Found& tell) {
                 types = mimeTypes;
                 asked.push_back(tell);
                 if (!found.empty()) tell(found);
             },
         .setDesktopImage =
             [this](const QString& image, const std::function<void(Result)>& answered) {
                 handed = {image};
                 answered(wallpaper);
             },
         .cacheFolder = cache,
         .dataFolder = path(u"data")}};
};

TEST_F(ShareCommandsTest, menusShowWhatTakesThePhotographsAsSoonAsThatIsKnown) {
    QMenu menu;
    shares.menuNeedsUpdate(menu);
    EXPECT_EQ(entries(menu), u"View && Co Mail");
    EXPECT_EQ(types, QStringList{u"image/png"_s});
    shares.openWithMenuNeedsUpdate(menu);
    EXPECT_EQ(entries(menu), u"View && Co");
    menu.actions().front()->trigger();
    EXPECT_EQ(handed.size(), 4);
    EXPECT_EQ(handed.at(1), pathOf(*items[1])) << "the original";

    const auto late = std::exchange(found, {});
    QMenu other;
    shares.menuNeedsUpdate(other);
    EXPECT_EQ(entries(other), u"(Looking for programs…)");
    asked.front()(late); // of a menu that has asked once more since
    EXPECT_EQ(entries(menu), u"View && Co");
    asked.back()({});
    EXPECT_EQ(entries(other), u"(No program for sharing was found.)");
    asked.back()(late);
    EXPECT_EQ(entries(other), u"View && Co Mail");
    shares.openWithMenuNeedsUpdate(other);
    asked.back()({late.back()});
    EXPECT_EQ(entries(other), u"(No program opens all of these photographs.)");
    items.clear();
    shares.menuNeedsUpdate(other);
    asked.back()(late); // for those before
    EXPECT_EQ(entries(other), u"(No Photo Selected)");
}

TEST_F(ShareCommandsTest, whoAsksForProgramsWhileAnotherWaitsIsToldToo) {
    ShareServices programs;
    int told = 0;
    const auto ask = [&] { programs.find({u"image/none"_s}, [&told](const auto&) { ++told; }); };
    ask();
    ask();
    EXPECT_TRUE(support::spinUntil([&] { return told == 2; }));
    ask();
    EXPECT_EQ(told, 3) << "at once";
}

TEST_F(ShareCommandsTest, whatIsTurnedIsHandedOverUprightAndStaysOnlyIfSomebodyTookIt) {
    share(1);
    EXPECT_EQ(taker, u"Mail");
    ASSERT_EQ(handed.size(), 4);
    const QStringList folder = cached();
    ASSERT_EQ(folder.size(), 1);
    const QString base = cache + u'/' + folder.front();
    const QStringList expected{
        pathOf(*items[0]), base + u"/b.jpg"_s, base + u"/c.jpg"_s, base + u"/1/b.jpg"_s};
    EXPECT_EQ(handed, expected);
    EXPECT_EQ(QImage(handed.at(1)).size(), QSize(4, 8));
    EXPECT_EQ(QImage(handed.at(3)).size(), QSize(8, 4));
    struct stat status {};
    EXPECT_EQ(::stat(QFile::encodeName(base).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);

    isTaken = false;
    share();
    EXPECT_TRUE(support::spinUntil([&] { return cached() == folder; }));
    EXPECT_EQ(alert(), u"“View & Co” could not be started with these photographs.|");

    // One that can't be read: nobody gets anything.
    handed.clear();
    support::writeFile(pathOf(*items[2]), "none");
    share();
    EXPECT_EQ(questions.log, QStringList{u"failed 1 c.png"_s});
    EXPECT_TRUE(handed.isEmpty());
    EXPECT_TRUE(support::spinUntil([&] { return cached() == folder; }));
    EXPECT_EQ(alert(), QString());
}

TEST_F(ShareCommandsTest, aPhotographThatCantBeReadIsToldBeforeAPlaceForItsExportIsChosen) {
    ExportDialogs dialogs(window);
    ExportCommands exports(
        {.imageImporterManager = importers,
         .folderPaths = folders,
         .tasks = tasks,
         .questions = questions,
         .exportQuestions = dialogs,
         .chosen = choice,
         .finished = {}});
    items.resize(1);
    support::writeFile(pathOf(*items[0]), "none");
    exports.exportImage();
    EXPECT_TRUE(window.findChild<ExportSheet*>());
    EXPECT_TRUE(support::spinUntil([this] { return !window.findChild<ExportSheet*>(); }));
    EXPECT_EQ(questions.log, QStringList(u"failed 1 a.png"_s));
}

TEST_F(ShareCommandsTest, theDesktopGetsAFileThatItCanShowAndKeepsOneCopy) {
    const QString copies = path(u"data") + u"/Wallpaper"_s;
    const auto set = [&] {
        shares.setDesktop();
        wait();
        return handed.value(0);
    };
    EXPECT_EQ(set(), pathOf(*items[0]));
    items.erase(items.begin());
    const QString first = set();
    EXPECT_TRUE(first.startsWith(copies) && first.endsWith(u"/b.jpg"_s)) << first.toStdString();
    EXPECT_EQ(QImage(first).size(), QSize(4, 8));
    const QString second = set();
    EXPECT_NE(second, first) << "desktops keep what they have read by its name";
    EXPECT_TRUE(support::spinUntil([&] { return !QFile::exists(first); }));
    EXPECT_TRUE(QFile::exists(second));
    wallpaper = Result::Cancelled;
    set();
    EXPECT_EQ(alert(), QString());
    wallpaper = Result::Nobody;
    const QString third = set();
    EXPECT_TRUE(QFile::exists(second)) << "it is still shown";
    EXPECT_TRUE(support::spinUntil([&] { return !QFile::exists(third); }));
    EXPECT_EQ(
        alert(),
        u"The picture of the desktop can’t be changed.|This desktop offers no way to do so "
        "that Velmora knows.");
}

} // namespace
