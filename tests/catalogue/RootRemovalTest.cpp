#include "catalogue/CatalogueIdentity.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBCleanThumbOperation.h"
#include "catalogue/PBClearThumbOperation.h"
#include "catalogue/PBRemoveAliasOperation.h"
#include "support/Operations.h"
#include "support/Rows.h"

using Outcome = ThumbnailCleaning::Outcome;

namespace {

const QStringList tables = support::words("Folder ImageFile Exif ExifAux Tiff IPTC GPS");

struct RootRemovalTest : testing::Test {
    RootRemovalTest() {
        EXPECT_TRUE(PBCatalogue(db).checkTables_FilesDb());
        EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
        EXPECT_EQ(CatalogueIdentity::match(db, thumbnails), CatalogueIdentity::Match::Agree);
    }
    static void run(FMDatabase& on, const QString& sql) {
        EXPECT_TRUE(on.executeUpdate(sql)) << sql.toStdString();
    }
    /// A root with so many photographs, half of them in a folder below.
    qint64 addRoot(int photographs) {
        const qint64 aliasId = PBCatalogue(db).insertFolderAliasWithData("b", 0, u"/r"_s, 4);
        const QString count = u"with recursive n(i) as (values(1) union all select i+1 from n "
                              "where i<%1) insert into "_s;
        for (const QString& below : {QString(), u"x"_s}) {
            const qint64 folderId = PBCatalogue(db).insertFolderWithAliasId(aliasId, below);
            run(db, (count + u"ImageFile(FolderId) select %2 from n"_s)
                        .arg(photographs / 2)
                        .arg(folderId));
        }
        for (const QString& table : tables.mid(2))
            run(db, u"insert or ignore into %1(FileId) select Id from ImageFile"_s.arg(table));
        run(thumbnails, (count + u"Thumbnail(Data) select 't' from n"_s).arg(photographs));
        return aliasId;
    }
    /// Rows of each table, and the states of the roots.
    QString rows() {
        QStringList counts;
        for (const QString& table : tables)
            counts += support::rowsOf(db, u"select count(*) from "_s + table);
        return counts.join(u' ') + u" states "_s +
               support::rowsOf(db, u"select State from FolderAlias"_s).join(u' ');
    }
    QStringList ids() { return support::rowsOf(thumbnails, u"select FileId from Thumbnail"_s); }
    /// By an operation, as the program does.
    Outcome clean(const QString& path) {
        Outcome outcome = Outcome::More;
        const auto cleaning = std::make_shared<ThumbnailCleaning>();
        for (steps = 0; outcome == Outcome::More; ++steps) {
            const auto before = ids().size();
            support::perform(std::make_shared<PBCleanThumbOperation>(
                cleaning, path, thumbnails, [&](Outcome of) { outcome = of; }));
            EXPECT_LE(before - ids().size(), ThumbnailCleaning::removedAtOnce);
        }
        return outcome;
    }

    QTemporaryDir folder;
    support::Database db{folder.filePath(u"files.db"_s)};
    support::Database thumbnails;
    int steps = 0;
};

TEST_F(RootRemovalTest, rootsGoWithAllTheirRowsOrStayAsTheyWere) {
    const qint64 first = addRoot(4);
    const qint64 second = addRoot(2);
    addRoot(2);
    run(db, u"create trigger Full before delete on Folder begin select raise(rollback, ''); end"_s);
    const QString all = u"6 8 8 8 8 8 8 states %1 4 4"_s;
    for (const auto& [when, state] :
         {std::pair("delete on GPS", 4),
          {"update on FolderAlias when new.State & 1", 4},
          // The next start removes what is still marked.
          {"update on FolderAlias when not new.State & 1", 5}}) {
        support::refuse(db, QLatin1StringView(when));
        EXPECT_FALSE(PBRemoveAliasOperation::remove({{first, second}, first}, db)) << when;
        EXPECT_EQ(rows(), all.arg(state)) << when;
        support::permit(db);
    }
    run(db, u"drop trigger Full"_s);
    EXPECT_TRUE(PBRemoveAliasOperation::remove({{first, second}, 0}, db));
    EXPECT_EQ(rows(), u"2 2 2 2 2 2 2 states 4"_s);
}

TEST_F(RootRemovalTest, itIsDoneThoughTheQueueIsCancelledAndGivesUpOnALockedCatalogue) {
    const qint64 root = addRoot(2);
    FMDatabase other(db.databasePath());
    for (const bool isLocked : {true, false}) {
        ASSERT_TRUE(other.open() && (!isLocked || other.beginTransaction()));
        std::vector<bool> ended;
        const auto removal = std::make_shared<PBRemoveAliasOperation>(
            PBRemoveAliasOperation::Roots{{root}, root}, db,
            [&](bool isRemoved) { ended.push_back(isRemoved); }, std::chrono::milliseconds(3));
        support::perform(removal, true);
        EXPECT_EQ(ended, std::vector{!isLocked});
        EXPECT_TRUE(other.close());
        EXPECT_EQ(rows(), isLocked ? u"2 2 2 2 2 2 2 states 4"_s : u"0 0 0 0 0 0 0 states "_s);
    }
}

TEST_F(RootRemovalTest, thumbnailsWithoutAPhotographGoInSmallSteps) {
    addRoot(4);
    const qint64 gone = addRoot(600); // 5 to 604
    addRoot(2400);                    // 605 to 3004
    EXPECT_EQ(clean(db.databasePath()), Outcome::Done);
    EXPECT_EQ(ids().size(), 3004);
    ASSERT_TRUE(PBRemoveAliasOperation::remove({{gone}, gone}, db));
    run(db, u"delete from ImageFile where Id in (2, 2000, 3004)"_s);
    // One that was given its id after the look at the catalogue has its photograph.
    run(thumbnails, u"insert into Thumbnail(FileId) values (3005)"_s);
    EXPECT_EQ(clean(db.databasePath()), Outcome::Done);
    EXPECT_EQ(ids(), support::rowsOf(db, u"select Id from ImageFile"_s) + QStringList{u"3005"_s});
    EXPECT_LE(steps, 8);
    run(db, u"delete from ImageFile"_s);
    EXPECT_EQ(clean(db.databasePath()), Outcome::Done);
    EXPECT_EQ(ids(), QStringList{u"3005"_s});
}

TEST_F(RootRemovalTest, allThumbnailsGoWithTheirRoomThoughTheQueueIsCancelled) {
    support::Database file(folder.filePath(u"thumbnail.db"_s));
    ASSERT_TRUE(PBCatalogue(file).checkTables_Thumbnail());
    ASSERT_EQ(CatalogueIdentity::match(db, file), CatalogueIdentity::Match::Agree);
    EXPECT_EQ(support::rowsOf(file, u"pragma journal_mode = wal"_s), QStringList{u"wal"_s});
    run(file, u"insert into Thumbnail(Data) values (zeroblob(3000000))"_s);
    const auto byteCount = [&] {
        return QFile(file.databasePath()).size() + QFile(file.databasePath() + u"-wal"_s).size();
    };
    EXPECT_GT(byteCount(), 3000000);
    bool isCleared = false;
    const auto tell = [&](bool isDone) { isCleared = isDone; };
    support::perform(std::make_shared<PBClearThumbOperation>(file, tell), true);
    EXPECT_TRUE(isCleared);
    EXPECT_LT(byteCount(), 100000);
    EXPECT_EQ(support::rowsOf(file, u"select count(*) from Thumbnail"_s), QStringList{u"0"_s});
    EXPECT_TRUE(CatalogueIdentity::agree(db, file));
}

TEST_F(RootRemovalTest, noThumbnailGoesWhereTheCatalogueCannotBeReadOrIsAnother) {
    addRoot(6);
    run(db, u"delete from ImageFile where Id > 2"_s);
    const QString identity =
        u"pragma user_version = "_s + support::rowsOf(db, u"pragma user_version"_s)[0];
    const QString nobody = u"pragma user_version = 0"_s;
    const QString none = folder.filePath(u"none.db"_s);
    EXPECT_EQ(clean(none), Outcome::Unknown);
    EXPECT_FALSE(QFile::exists(none));
    run(db, nobody);
    EXPECT_EQ(clean(db.databasePath()), Outcome::Unknown);
    run(thumbnails, nobody);
    EXPECT_EQ(clean(db.databasePath()), Outcome::Unknown) << "nobody's";
    run(thumbnails, identity);
    run(db, identity);
    run(db, u"alter table ImageFile rename to Lost"_s);
    EXPECT_EQ(clean(db.databasePath()), Outcome::Unknown);
    run(db, u"alter table Lost rename to ImageFile"_s);
    ASSERT_TRUE(db.beginTransaction());
    EXPECT_EQ(clean(db.databasePath()), Outcome::Unknown) << "locked";
    ASSERT_TRUE(db.rollback());
    EXPECT_EQ(ids().size(), 6);
    EXPECT_EQ(clean(db.databasePath()), Outcome::Done);
    EXPECT_EQ(ids().size(), 2);
}

} // namespace
