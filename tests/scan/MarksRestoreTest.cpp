#include "FMDB/FMTransaction.h"
#include "catalogue/marks/MarksFile.h"
#include "catalogue/marks/MarksUpkeep.h"
#include "scan/ScanSupport.h"
#include "scan/marks/MarksRestorer.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

PBDictionary camera(const char* make, int orientation = 1) {
    return {
        {u"{TIFF}"_s,
         PBDictionary{{u"Make"_s, QString::fromLatin1(make)}, {u"Orientation"_s, orientation}}}};
}

} // namespace

/// Scans with a ledger, of files that change in between.
struct MarksRestoreTest : ScanTest {
    MarksRestoreTest() {
        EXPECT_EQ(marks::settleLedger(marksPath, temporary.filePath(u"snapshots"_s)), QString());
        changeServices([this](ScanServices& changed) { changed.marks = &restorer; });
        both = connect();
    }
    /// Two photographs with marks and one without, in an empty folder.
    void beginAnew() {
        QDir(path({})).removeRecursively();
        EXPECT_TRUE(both->executeUpdate(u"delete from Marks"_s));
        importers.properties.clear();
        importers.properties[u"a.png"_s] = camera("One");
        makePicture(u"a.png"_s, {10, 8}, 1);
        makePicture(u"b.png"_s, {8, 10}, 2);
        makePicture(u"plain.png"_s, {30, 20}, 3);
        scan();
        mark(u"a.png"_s, {.stars = 4, .flag = {}, .tags = QStringList{u"sea"_s}, .rotation = {}});
        mark(u"b.png"_s, {.stars = 2, .flag = true, .tags = {}, .rotation = {}});
        readFiles();
        EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
    }
    ~MarksRestoreTest() override {
        scanQueue.cancelAllOperations();
        scanQueue.waitUntilAllOperationsAreFinished();
    }
    std::unique_ptr<FMDatabase> connect() const {
        auto made = marks::MarksLedger::connect(files.databasePath(), marksPath);
        if (made) made->executeUpdate(u"pragma synchronous = off"_s);
        return made;
    }
    marks::RootPaths roots() const {
        marks::RootPaths found;
        for (const auto& each : aliasManager.aliasArray())
            if (each->isMounted()) found.insert(each->aliasId(), each->path());
        return found;
    }
    void mark(const QString& name, const marks::MarksChange& change) {
        const auto id = rows(u"select Id from ImageFile where FileName = '%1'"_s.arg(name))
                            .value(0)
                            .toLongLong();
        const std::array ids{id};
        FMTransaction transaction(*both);
        marks::MarksLedger ledger(*both);
        EXPECT_TRUE(
            marks::bindLedger(*both, roots()) && ledger.changeCatalogue(ids, change) &&
            ledger.takeFromCatalogue(ids, roots()) && ledger.countEdit() && transaction.commit());
    }
    /// As the program does it behind the user's back.
    void readFiles() const {
        marks::MarksUpkeep upkeep({marksPath, temporary.filePath(u"snapshots"_s), {}, {}});
        upkeep.wake();
        EXPECT_TRUE(support::spinUntil([&] { return upkeep.isIdle(); }));
    }
    void rename(const char* from, const char* to) const {
        QDir().mkpath(QFileInfo(path(QLatin1StringView(to))).absolutePath());
        EXPECT_EQ(
            std::rename(
                qPrintable(path(QLatin1StringView(from))), qPrintable(path(QLatin1StringView(to)))),
            0);
    }
    /// Another inode with the same content.
    void copy(const char* from, const char* to) const {
        support::writeFile(
            path(QLatin1StringView(to)), support::readFile(path(QLatin1StringView(from))));
    }
    void remove(const char* name) const { QFile::remove(path(QLatin1StringView(name))); }
    /// As programs write a picture anew that they have read: under another name first.
    void rewrite(const char* name, QSize size, int seed) const {
        makePicture(u"unfinished.png"_s, size, seed);
        rename("unfinished.png", name);
    }
    /// The photographs with marks.
    QString marked() {
        return rows(u"select ifnull(RelativePath||'/','')||FileName||'='||FileStars||"
                    "replace(ifnull(Tag,''),'1','sea')||case when FileFlag then 'F' else '' end "
                    "from ImageFile join Folder on Folder.Id = FolderId "
                    "where FileStars or FileFlag or ifnull(Tag,'') <> '' order by 1"_s)
            .join(u' ');
    }
    /// The same of the items that are shown, without tags.
    QString shownMarks() const {
        QStringList all;
        for (const auto& item : items())
            if (item->star() != 0) all.append(item->fileName() + QString::number(item->star()));
        all.sort();
        return all.join(u' ');
    }

    const QString marksPath = temporary.filePath(u"marks.db"_s);
    std::unique_ptr<FMDatabase> both;
    std::atomic<int> cameBack{0};
    bool isRemovable = false;
    MarksRestorer restorer{
        {.connect = [this] { return connect(); },
         .mountedRoots = [this] { return roots(); },
         .isRemovable = [this](const QByteArray&) { return isRemovable; },
         .marksCameBack = [this](const PBImageFileList& back) { cameBack += int(back.size()); },
         .ledgerDidChange = [] {}}};
};

TEST_F(MarksRestoreTest, MarksGoWithTheirPhotographsWhateverBecomesOfTheirPlaces) {
    struct Case {
        const char* what;
        std::function<void()> change;
        const char* expected;
    };
    const std::vector<Case> cases{
        {"renamed", [this] { rename("a.png", "c.png"); }, "b.png=2F c.png=4sea"},
        {"moved into a folder", [this] { rename("a.png", "in/a.png"); }, "b.png=2F in/a.png=4sea"},
        {"swapped",
         [this] {
             rename("a.png", "t.png");
             rename("b.png", "a.png");
             rename("t.png", "b.png");
         },
         "a.png=2F b.png=4sea"},
        {"swapped with one without marks",
         [this] {
             rename("a.png", "t.png");
             rename("plain.png", "a.png");
             rename("t.png", "plain.png");
         },
         "b.png=2F plain.png=4sea"},
        {"moved across disks",
         [this] {
             copy("a.png", "in/c.png");
             remove("a.png");
         },
         "b.png=2F in/c.png=4sea"},
        {"copied", [this] { copy("a.png", "in/a.png"); }, "a.png=4sea b.png=2F"},
        {"written anew in place",
         [this] {
             makePicture(u"a.png"_s, {12, 9}, 7);
         },
         "a.png=4sea b.png=2F"},
        {"written anew under another name first",
         [this] {
             rewrite("a.png", {12, 9}, 7);
         },
         "a.png=4sea b.png=2F"},
        {"another photograph over the path of the moved one",
         [this] {
             rename("a.png", "in/c.png");
             makePicture(u"a.png"_s, {12, 9}, 7);
         },
         "b.png=2F in/c.png=4sea"},
        {"the same across disks",
         [this] {
             copy("a.png", "in/c.png");
             rewrite("a.png", {12, 9}, 7);
         },
         "b.png=2F in/c.png=4sea"},
        {"replaced by another camera's",
         [this] {
             importers.properties[u"a.png"_s] = camera("Two");
             rewrite("a.png", {12, 9}, 7);
         },
         "b.png=2F"},
    };
    for (const Case& each : cases) {
        beginAnew();
        each.change();
        scan();
        EXPECT_EQ(marked().toStdString(), each.expected) << each.what;
        scan();
        EXPECT_EQ(marked().toStdString(), each.expected) << each.what << ", again";
        expectConsistentCatalogue();
    }
}

/// Size and date are those of the other: only the files themselves tell.
TEST_F(MarksRestoreTest, NamesThatWereSwappedBetweenFilesOfOneSizeAndDate) {
    beginAnew();
    const auto pad = [&](const char* name) {
        QByteArray bytes = support::readFile(path(QLatin1StringView(name)));
        support::writeFile(path(QLatin1StringView(name)), bytes.leftJustified(4000, 'x'));
        const std::array<timespec, 2> times{timespec{1000, 5}, timespec{1000, 5}};
        EXPECT_EQ(
            ::utimensat(AT_FDCWD, qPrintable(path(QLatin1StringView(name))), times.data(), 0), 0);
    };
    pad("a.png");
    pad("b.png");
    scan();
    readFiles();
    rename("a.png", "t.png");
    rename("b.png", "a.png");
    rename("t.png", "b.png");
    scan();
    EXPECT_EQ(marked(), u"a.png=2F b.png=4sea"_s);
}

TEST_F(MarksRestoreTest, ACatalogueThatWasLostHasEveryMarkAgainAndShowsIt) {
    beginAnew();
    mark(u"b.png"_s, {.stars = {}, .flag = {}, .tags = {}, .rotation = std::optional(90)});
    const QString before = marked();
    for (const char* table : {"ImageFile", "Folder", "Tags", "Tiff"})
        ASSERT_TRUE(files.executeUpdate(u"delete from "_s + QLatin1StringView(table)));
    ASSERT_TRUE(files.executeUpdate(u"delete from sqlite_sequence"_s));
    ASSERT_TRUE(files.executeUpdate(u"pragma application_id = 0"_s));
    ASSERT_TRUE(files.executeUpdate(u"pragma user_version = 0"_s));
    makePicture(u"0.png"_s, {50, 50}, 9); // takes an id of the others
    root = addRoot({});
    scan();
    EXPECT_EQ(marked(), before);
    EXPECT_EQ(shownMarks(), u"a.png4 b.png2"_s) << "at once, without another scan";
    EXPECT_EQ(cameBack, 0);
    EXPECT_EQ(
        rows(u"select FileName from ImageFile where RotateAngle = 90"_s), QStringList{u"b.png"_s});
}

TEST_F(MarksRestoreTest, WhatIsDecidedAtTheEndOfAScanReachesTheItemsThatAreShown) {
    beginAnew();
    copy("a.png", "in/c.png");
    remove("a.png");
    scan();
    EXPECT_EQ(cameBack, 1);
}

TEST_F(MarksRestoreTest, ARotationComesBackToARewrittenFileOnlyIfNobodyElseTurnedIt) {
    struct Case {
        QSize size;
        int orientation;
        int expected;
    };
    for (const Case& each :
         std::vector<Case>{{{20, 16}, 6, 90}, {{16, 20}, 6, -90}, {{20, 16}, 3, 180}}) {
        beginAnew();
        importers.properties[u"a.png"_s] = camera("One", 6);
        makePicture(u"a.png"_s, {10, 9}, 1);
        scan();
        mark(u"a.png"_s, {.stars = {}, .flag = {}, .tags = {}, .rotation = std::optional(90)});
        readFiles();
        importers.properties[u"a.png"_s] = camera("One", each.orientation);
        rewrite("a.png", each.size, 5);
        scan();
        EXPECT_EQ(
            rows(u"select cast(RotateAngle as integer) from ImageFile where FileName = 'a.png'"_s),
            QStringList{QString::number(each.expected)});
        EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
    }
}

/// The photograph that was moved away turns up after another one has been taken for it.
TEST_F(MarksRestoreTest, WhatWasTakenForARewrittenFileLosesTheMarksWhenTheVeryFileTurnsUp) {
    beginAnew();
    const QString elsewhere = temporary.filePath(u"elsewhere.png"_s);
    ASSERT_EQ(std::rename(qPrintable(path(u"a.png"_s)), qPrintable(elsewhere)), 0);
    makePicture(u"a.png"_s, {12, 9}, 7);
    scan();
    EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
    ASSERT_EQ(std::rename(qPrintable(elsewhere), qPrintable(path(u"c.png"_s))), 0);
    scan();
    EXPECT_EQ(marked(), u"b.png=2F c.png=4sea"_s);
}

/// While the program runs, a file that is moved to another disk is there twice for a while.
TEST_F(MarksRestoreTest, AnOriginalThatGoesAfterItsCopyWasCataloguedHandsItsMarksOver) {
    beginAnew();
    const auto watch = [&](bool checkExist, const QString& folder) {
        WatchedChanges changes;
        changes.checkExist = checkExist;
        if (!folder.isNull()) changes.rescans.push_back({folder, true});
        factory->attachChanges(changes, workTree, browsing);
        waitForQueues();
    };
    copy("a.png", "in/c.png");
    watch(false, path(u"in"_s));
    EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
    remove("a.png");
    watch(true, {});
    EXPECT_EQ(marked(), u"b.png=2F in/c.png=4sea"_s);
    EXPECT_EQ(cameBack, 1);
}

/// The photograph turns up before anybody has seen that another one is in its place.
TEST_F(MarksRestoreTest, APlaceThatAPhotographHasLeftDoesNotKeepItsMarks) {
    beginAnew();
    rename("a.png", "in/c.png");
    makePicture(u"a.png"_s, {12, 9}, 7);
    WatchedChanges changes;
    changes.rescans.push_back({path(u"in"_s), true});
    factory->attachChanges(changes, workTree, browsing);
    waitForQueues();
    EXPECT_EQ(marked(), u"b.png=2F in/c.png=4sea"_s);
    EXPECT_EQ(cameBack, 1) << "and shows none";
}
