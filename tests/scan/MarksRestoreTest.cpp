#include "catalogue/MarksSupport.h"
#include "catalogue/marks/MarksUpkeep.h"
#include "scan/ScanSupport.h"
#include "scan/marks/MarksRestorer.h"

/// Scans with a ledger, of files that change in between.
struct MarksRestoreTest : ScanTest {
    MarksRestoreTest() {
        EXPECT_EQ(marks::settleLedger(marksPath, temporary.filePath(u"snapshots"_s)), QString());
        both = connectToBoth(files.databasePath(), marksPath);
        changeServices([this](ScanServices& changed) { changed.marks = &restorer; });
    }
    static PBDictionary camera(const QString& make, int orientation = 1) {
        const PBDictionary tiff{{u"Make"_s, make}, {u"Orientation"_s, orientation}};
        return {{u"{TIFF}"_s, tiff}};
    }
    /// Two photographs with marks and one without, in an empty folder.
    void beginAnew() {
        QDir(path({})).removeRecursively();
        EXPECT_TRUE(both->executeUpdate(u"delete from Marks"_s));
        importers.properties.clear();
        importers.properties[u"a.png"_s] = camera(u"One"_s);
        makePicture(u"a.png"_s, {10, 8});
        makePicture(u"b.png"_s, {8, 10});
        makePicture(u"plain.png"_s, {30, 20});
        scan();
        mark(u"a.png"_s, {.stars = 4, .flag = {}, .tags = QStringList{u"sea"_s}, .rotation = {}});
        mark(u"b.png"_s, {.stars = 2, .flag = true, .tags = {}, .rotation = {}});
        readFiles();
        EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
    }
    ~MarksRestoreTest() override { endQueues(); }
    marks::RootPaths roots() const {
        marks::RootPaths found;
        for (const auto& each : aliasManager.aliasArray())
            if (each->isMounted()) found.insert(each->aliasId(), each->path());
        return found;
    }
    void mark(const QString& name, const marks::MarksChange& change) {
        const QStringList ids = rows(u"select Id from ImageFile where FileName = '%1'"_s.arg(name));
        changeMarks(*both, roots(), {ids.value(0).toLongLong()}, change);
    }
    /// As the program does it behind the user's back.
    void readFiles() const {
        marks::MarksUpkeep upkeep({marksPath, temporary.filePath(u"snapshots"_s), {}, {}});
        upkeep.wake();
        EXPECT_TRUE(support::spinUntil([&] { return upkeep.isIdle(); }));
    }
    /// What people and programs do to files, such as "move a.png in/a.png, write a.png".
    void change(const char* steps) {
        for (const QString& step : QString::fromLatin1(steps).split(u", "_s)) {
            const QStringList words = step.split(u' ');
            const QString from = path(words.value(1));
            const QString to = path(words.last());
            QDir().mkpath(QFileInfo(to).absolutePath());
            if (words[0] == u"scan") {
                scan();
                readFiles();
            } else if (words[0] == u"write") {
                makePicture(words[1], {12, 9});
            } else if (words[0] == u"pad") { // to a size and a date that others have, too
                alter(words[1], 4000, QDateTime::fromMSecsSinceEpoch(1'000'005));
            } else if (words[0] == u"move") {
                EXPECT_EQ(std::rename(qPrintable(from), qPrintable(to)), 0);
            } else {
                support::writeFile(to, support::readFile(from)); // another inode
                if (words[0] == u"carry") QFile::remove(from);   // to another disk
            }
        }
    }
    /// The photographs with marks.
    QString marked() {
        return rows(u"select ifnull(RelativePath||'/','')||FileName||'='||FileStars||"
                    "replace(ifnull(Tag,''),'1','sea')||case when FileFlag then 'F' else '' end "
                    "from ImageFile join Folder on Folder.Id = FolderId "
                    "where FileStars or FileFlag or ifnull(Tag,'') <> '' order by 1"_s)
            .join(u' ');
    }

    const QString marksPath = temporary.filePath(u"marks.db"_s);
    std::unique_ptr<FMDatabase> both;
    std::atomic<int> cameBack{0};
    MarksRestorer restorer{
        {.connect = [this] { return connectToBoth(files.databasePath(), marksPath); },
         .mountedRoots = [this] { return roots(); },
         .isRemovable = [](const QByteArray&) { return false; },
         .marksCameBack = [this](const std::vector<qint64>& back) { cameBack += int(back.size()); },
         .ledgerDidChange = [] {}}};
};

TEST_F(MarksRestoreTest, MarksGoWithTheirPhotographsWhateverBecomesOfTheirPlaces) {
    struct Case {
        const char* change;
        const char* expected;
        const char* camera = "One"; ///< of a.png
    };
    const Case cases[] = {
        {"move a.png in/c.png", "b.png=2F in/c.png=4sea"},
        {"move a.png t.png, move b.png a.png, move t.png b.png", "a.png=2F b.png=4sea"},
        {"move a.png t.png, move plain.png a.png, move t.png plain.png", "b.png=2F plain.png=4sea"},
        {"carry a.png in/c.png", "b.png=2F in/c.png=4sea"},
        {"copy a.png in/a.png", "a.png=4sea b.png=2F"},
        {"write a.png", "a.png=4sea b.png=2F"},
        {"write new.png, move new.png a.png", "a.png=4sea b.png=2F"},
        {"write new.png, move new.png a.png", "b.png=2F", "Two"},
        // Another photograph over the path of one that was moved, on its disk or to another one.
        {"move a.png in/c.png, write a.png", "b.png=2F in/c.png=4sea"},
        {"copy a.png in/c.png, write new.png, move new.png a.png", "b.png=2F in/c.png=4sea"},
        // It turns up after another one has been taken for it.
        {"move a.png ../away.png, write a.png, scan, move ../away.png c.png",
         "b.png=2F c.png=4sea"},
        // Size and date are those of the other: only the files themselves tell.
        {"pad a.png, pad b.png, scan, move a.png t.png, move b.png a.png, move t.png b.png",
         "a.png=2F b.png=4sea"}};
    for (const Case& each : cases) {
        beginAnew();
        importers.properties[u"a.png"_s] = camera(QString::fromLatin1(each.camera));
        change(each.change);
        scan();
        EXPECT_EQ(marked().toStdString(), each.expected) << each.change;
        scan();
        EXPECT_EQ(marked().toStdString(), each.expected) << each.change << ", again";
        expectConsistentCatalogue();
    }
}

TEST_F(MarksRestoreTest, ACatalogueThatWasLostHasEveryMarkAgainAndShowsIt) {
    beginAnew();
    mark(u"b.png"_s, {.stars = {}, .flag = {}, .tags = {}, .rotation = std::optional(90)});
    const QString before = marked();
    for (const char* table : {"ImageFile", "Folder", "Tags", "Tiff", "sqlite_sequence"})
        execute(u"delete from "_s + QLatin1StringView(table));
    execute(u"pragma application_id = 0"_s);
    execute(u"pragma user_version = 0"_s);
    makePicture(u"0.png"_s, {50, 50}); // takes an id of the others
    root = addRoot({});
    scan();
    EXPECT_EQ(marked(), before);
    const QStringList stars = support::listed(
        items(), [](const auto& item) { return item->fileName() + QString::number(item->star()); });
    EXPECT_EQ(support::sorted(stars).join(u' '), u"0.png0 a.png4 b.png2 plain.png0")
        << "without another scan";
    EXPECT_EQ(cameBack, 0);
    EXPECT_EQ(rows(u"select FileName from ImageFile where RotateAngle = 90"_s)[0], u"b.png");
}

TEST_F(MarksRestoreTest, ARotationComesBackToARewrittenFileOnlyIfNobodyElseTurnedIt) {
    const std::tuple<QSize, int, int> cases[] = {
        {{20, 16}, 6, 90}, {{16, 16}, 6, 90}, {{16, 20}, 6, -90}, {{20, 16}, 3, 180}};
    for (const auto& [size, orientation, expected] : cases) {
        beginAnew();
        importers.properties[u"a.png"_s] = camera(u"One"_s, 6);
        makePicture(u"a.png"_s, {10, 9});
        scan();
        mark(u"a.png"_s, {.stars = {}, .flag = {}, .tags = {}, .rotation = std::optional(90)});
        readFiles();
        importers.properties[u"a.png"_s] = camera(u"One"_s, orientation);
        makePicture(u"new.png"_s, size);
        change("move new.png a.png");
        scan();
        const auto angle = rows(u"select RotateAngle from ImageFile where FileName = 'a.png'"_s);
        EXPECT_EQ(angle.value(0).toDouble(), expected);
        EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
    }
}

/// While the program runs, a file that is moved to another disk is there twice for a while. A
/// filter keeps the second one from the tree, where it belongs by then.
TEST_F(MarksRestoreTest, AnOriginalThatGoesAfterItsCopyWasCataloguedHandsItsMarksOver) {
    for (const quint64 filter : {quint64{0}, quint64{group::FilterRated}}) {
        browsing.filter = 0;
        beginAnew();
        change("copy a.png in/c.png");
        watch(false, {{path(u"in"_s), true}});
        EXPECT_EQ(marked(), u"a.png=4sea b.png=2F"_s);
        browsing.filter = filter;
        if (filter != 0) scan();
        cameBack = 0;
        QFile::remove(path(u"a.png"_s));
        watch(true);
        EXPECT_EQ(marked(), u"b.png=2F in/c.png=4sea"_s);
        EXPECT_EQ(cameBack, 1) << filter;
    }
}

/// The photograph turns up before anybody has seen that another one is in its place.
TEST_F(MarksRestoreTest, APlaceThatAPhotographHasLeftDoesNotKeepItsMarks) {
    beginAnew();
    change("move a.png in/c.png, write a.png");
    watch(false, {{path(u"in"_s), true}});
    EXPECT_EQ(marked(), u"b.png=2F in/c.png=4sea"_s);
    EXPECT_EQ(cameBack, 1) << "and shows none";
}
