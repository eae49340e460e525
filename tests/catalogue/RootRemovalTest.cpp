#include "catalogue/CatalogueIdentity.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBCleanThumbOperation.h"
#include "catalogue/PBRemoveAliasOperation.h"
#include "platform/work/OperationQueue.h"
#include "support/Rows.h"

using Outcome = ThumbnailCleaning::Outcome;

namespace {

/// Both files on disk, with roots, photographs and thumbnails.
struct RootRemovalTest : testing::Test {
    RootRemovalTest() {
        EXPECT_TRUE(db.open() && thumbnails.open());
        for (FMDatabase* each : {&db, &thumbnails})
            EXPECT_TRUE(each->executeUpdate(u"pragma synchronous = off"_s));
        EXPECT_TRUE(files.checkTables_FilesDb() && thumbs.checkTables_Thumbnail());
        EXPECT_EQ(CatalogueIdentity::match(db, thumbnails), CatalogueIdentity::Match::Agree);
    }
    /// A root with two folders that have so many photographs each.
    qint64 addRoot(int photographs) {
        const qint64 aliasId = files.insertFolderAliasWithData("b", 0, u"/r"_s, 4);
        for (const QString& relativePath : {QString(), u"x"_s}) {
            const qint64 folderId = files.insertFolderWithAliasId(aliasId, relativePath);
            for (int i = 0; i < photographs; ++i) {
                const qint64 id = files.insertImageFileWithDictionary({{u"FolderId"_s, folderId}});
                EXPECT_TRUE(
                    files.insertExifWithImageFileId(id, {}) &&
                    files.insertExifAuxWithImageFileId(id, {}) &&
                    files.insertTiffWithImageFileId(id, {}) &&
                    files.insertIPTCWithImageFileId(id, {}) &&
                    files.insertGPSWithImageFileId(id, {}));
                addThumbnails(id, id);
            }
        }
        return aliasId;
    }
    void addThumbnails(qint64 first, qint64 last) {
        for (qint64 id = first; id <= last; ++id)
            EXPECT_TRUE(thumbs.insertThumbnailWithFileId(id, "t"));
    }
    /// How many rows the tables have, and the marks of the roots.
    QString rows() {
        QStringList counts;
        for (const QString& table :
             support::words("FolderAlias Folder ImageFile Exif ExifAux Tiff IPTC GPS"))
            counts += support::rowsOf(db, u"select count(*) from "_s + table);
        return counts.join(u' ') + u" states "_s +
               support::rowsOf(db, u"select State from FolderAlias"_s).join(u' ');
    }
    qint64 thumbnailCount() {
        return support::rowsOf(thumbnails, u"select count(*) from Thumbnail"_s)[0].toLongLong();
    }
    /// Steps until there is no more to do, or nothing can be done.
    Outcome clean(ThumbnailCleaning& cleaning, int* steps = nullptr) {
        while (true) {
            const qint64 before = thumbnailCount();
            const Outcome outcome = cleaning.step(db, thumbnails);
            EXPECT_LE(before - thumbnailCount(), ThumbnailCleaning::removedAtOnce);
            if (steps) ++*steps;
            if (outcome != Outcome::More) return outcome;
        }
    }
    bool refuse(const char* when) {
        return db.executeUpdate(
            u"create trigger T before %1 begin select raise(abort, 'no'); end"_s.arg(
                QLatin1StringView(when)));
    }

    QTemporaryDir folder;
    FMDatabase db{folder.filePath(u"files.db"_s)};
    FMDatabase thumbnails{folder.filePath(u"thumbnail.db"_s)};
    PBCatalogue files{db};
    PBCatalogue thumbs{thumbnails};
};

TEST_F(RootRemovalTest, rootsGoWithAllTheirRowsOrStayAsTheyWere) {
    const qint64 first = addRoot(2);
    const qint64 second = addRoot(1);
    addRoot(1);
    const QString all = u"3 6 8 8 8 8 8 8 states 4 4 4"_s;
    const std::pair<const char*, QString> refusals[] = {
        {"update of State on FolderAlias when new.State & 1", all},
        {"delete on Exif", all},
        {"delete on GPS", all},
        {"delete on Folder", all},
        {"delete on FolderAlias when old.Id = 2", all},
        // The next start removes what is still marked.
        {"update of State on FolderAlias when not new.State & 1",
         u"3 6 8 8 8 8 8 8 states 5 4 4"_s}};
    for (const auto& [when, left] : refusals) {
        ASSERT_TRUE(refuse(when));
        if (left != all) {
            ASSERT_TRUE(db.executeUpdate(u"create trigger U before delete on Folder begin select "
                                         "raise(rollback, 'full'); end"_s));
        }
        EXPECT_FALSE(PBRemoveAliasOperation::remove({{first, second}, first}, db)) << when;
        EXPECT_EQ(rows(), left) << when;
        ASSERT_TRUE(db.executeUpdate(u"drop trigger T"_s));
    }
    ASSERT_TRUE(db.executeUpdate(u"drop trigger U"_s));
    EXPECT_TRUE(PBRemoveAliasOperation::remove({{first, second}, 0}, db));
    EXPECT_EQ(rows(), u"1 2 2 2 2 2 2 2 states 4"_s);
}

TEST_F(RootRemovalTest, itIsDoneThoughTheQueueIsCancelledAndGivesUpOnALockedCatalogue) {
    const qint64 root = addRoot(1);
    FMDatabase other(db.databasePath());
    ASSERT_TRUE(other.open());
    std::vector<bool> ended;
    const auto removeBehind = [&](const std::function<void()>& work) {
        platform::OperationQueue queue(u"test"_s);
        queue.setSuspended(true);
        queue.addOperation(std::make_shared<PBRemoveAliasOperation>(
            PBRemoveAliasOperation::Roots{{root}, root}, db,
            [&](bool isRemoved) { ended.push_back(isRemoved); }, 3));
        queue.cancelAllOperations();
        work();
        queue.setSuspended(false);
        queue.waitUntilAllOperationsAreFinished();
    };
    removeBehind([&] { ASSERT_TRUE(other.beginTransaction()); });
    ASSERT_TRUE(other.rollback());
    EXPECT_EQ(rows(), u"1 2 2 2 2 2 2 2 states 4"_s);
    // Who reads is neither kept waiting nor in the way for good.
    removeBehind([] {});
    EXPECT_EQ(rows(), u"0 0 0 0 0 0 0 0 states "_s);
    EXPECT_EQ(ended, (std::vector{false, true}));
}

TEST_F(RootRemovalTest, thumbnailsWithoutAPhotographGoInSmallSteps) {
    addRoot(2);                       // 1 to 4
    const qint64 gone = addRoot(300); // 5 to 604
    addRoot(1200);                    // 605 to 3004
    ThumbnailCleaning cleaning;
    EXPECT_EQ(clean(cleaning), Outcome::Done);
    EXPECT_EQ(thumbnailCount(), 3004);
    ASSERT_TRUE(PBRemoveAliasOperation::remove({{gone}, gone}, db));
    ASSERT_TRUE(db.executeUpdate(u"delete from ImageFile where Id in (2, 2000, 3004)"_s));
    // One that was given its id after the look at the catalogue has its photograph.
    addThumbnails(3005, 3006);
    int steps = 0;
    EXPECT_EQ(clean(cleaning, &steps), Outcome::Done);
    EXPECT_EQ(
        support::rowsOf(thumbnails, u"select FileId from Thumbnail"_s),
        support::rowsOf(db, u"select Id from ImageFile"_s) + support::words("3005 3006"));
    EXPECT_GE(steps, 603 / ThumbnailCleaning::removedAtOnce);
    EXPECT_LE(steps, 8);
    ASSERT_TRUE(db.executeUpdate(u"delete from ImageFile"_s));
    EXPECT_EQ(clean(cleaning), Outcome::Done);
    EXPECT_EQ(thumbnailCount(), 2);
}

TEST_F(RootRemovalTest, noThumbnailGoesWhereTheCatalogueCannotBeReadOrIsAnother) {
    addRoot(3);
    ASSERT_TRUE(db.executeUpdate(u"delete from ImageFile where Id > 2"_s));
    ThumbnailCleaning cleaning;
    const auto cleanWith = [&](const QString& path) {
        const auto outcome = std::make_shared<Outcome>(Outcome::More);
        platform::OperationQueue queue(u"test"_s);
        queue.addOperation(std::make_shared<PBCleanThumbOperation>(
            std::make_shared<ThumbnailCleaning>(), path, thumbnails,
            [outcome](Outcome of) { *outcome = of; }));
        queue.waitUntilAllOperationsAreFinished();
        return *outcome;
    };
    const auto identity = support::rowsOf(db, u"pragma user_version"_s)[0];
    for (const QString& other : {u"0"_s, u"77"_s}) {
        ASSERT_TRUE(db.executeUpdate(u"pragma user_version = "_s + other));
        EXPECT_EQ(cleaning.step(db, thumbnails), Outcome::Unknown);
        if (other == u"0"_s) {
            ASSERT_TRUE(thumbnails.executeUpdate(u"pragma user_version = 0"_s));
            EXPECT_EQ(cleaning.step(db, thumbnails), Outcome::Unknown) << "nobody's";
            ASSERT_TRUE(thumbnails.executeUpdate(u"pragma user_version = "_s + identity));
        }
    }
    ASSERT_TRUE(db.executeUpdate(u"pragma user_version = "_s + identity));
    ASSERT_TRUE(db.beginTransaction());
    EXPECT_EQ(cleanWith(db.databasePath()), Outcome::Unknown) << "locked";
    ASSERT_TRUE(db.executeUpdate(u"alter table ImageFile rename to Lost"_s) && db.commit());
    EXPECT_EQ(cleanWith(db.databasePath()), Outcome::Unknown) << "unreadable";
    const QString none = folder.filePath(u"none.db"_s);
    EXPECT_EQ(cleanWith(none), Outcome::Unknown);
    EXPECT_FALSE(QFile::exists(none));
    EXPECT_EQ(thumbnailCount(), 6);
    ASSERT_TRUE(db.executeUpdate(u"alter table Lost rename to ImageFile"_s));
    EXPECT_EQ(cleanWith(db.databasePath()), Outcome::Done);
    EXPECT_EQ(thumbnailCount(), 2);
}

} // namespace
