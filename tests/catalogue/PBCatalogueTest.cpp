#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveThumbOperation.h"
#include "catalogue/marks/TagNames.h"

#include "support/Operations.h"
#include "support/Rows.h"

#include <sqlite3.h>

namespace {

/// The connection to the catalogue keeps its statements, as the program's does.
struct PBCatalogueTest : ::testing::Test {
    PBCatalogueTest() {
        _filesDb.setShouldCacheStatements(true);
        EXPECT_TRUE(_files.checkTables_FilesDb() && _thumbs.checkTables_Thumbnail());
    }

    qint64 countOf(const QString& table) {
        return support::rowsOf(_filesDb, u"select 1 from "_s + table).size();
    }

    support::Database _filesDb;
    support::Database _thumbDb;
    PBCatalogue _files{_filesDb};
    PBCatalogue _thumbs{_thumbDb};
};

struct OneRoot : FolderRootPaths {
    QString path;
    QString mountedPathOfAliasId(qint64 aliasId) const override {
        return aliasId == 7 ? path : QString();
    }
};

TEST_F(PBCatalogueTest, rootFolderIsStoredAsNullAndPathsGoOnFromThePlaceOfTheRoot) {
    const qint64 root = _files.insertFolderWithAliasId(7, QString());
    const qint64 below = _files.insertFolderWithAliasId(7, u"2024/May"_s);
    const qint64 orphan = _files.insertFolderWithAliasId(9, u"a"_s);
    ASSERT_TRUE(root > 0 && below > root && orphan > below);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, std::nullopt), root);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, QString()), 0);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, u"2024/May"_s), below);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, u"2024/may"_s), 0);
    EXPECT_EQ(_files.findFolderIdByAliasId(8, std::nullopt), 0);

    OneRoot roots;
    const auto paths = [&] {
        return support::listed(std::array{root, below, orphan, qint64(99)}, [&](qint64 folder) {
            return _files.pathOfFolderId(folder, roots);
        });
    };
    EXPECT_EQ(paths(), QStringList(4, QString()));
    roots.path = u"/photos"_s;
    EXPECT_EQ(paths(), QStringList({roots.path, u"/photos/2024/May"_s, {}, {}}));
    roots.path = u"/"_s;
    EXPECT_EQ(paths(), QStringList({roots.path, u"/2024/May"_s, {}, {}}));

    EXPECT_TRUE(_files.updateFolderWithId(below, 8, QString()));
    EXPECT_EQ(_files.findFolderIdByAliasId(8, std::nullopt), below);
    EXPECT_TRUE(_files.removeFolderWithFolderId(root));
    EXPECT_EQ(paths(), QStringList(4, QString()));
}

TEST_F(PBCatalogueTest, imageFilesAreFoundByExactNameAndIdsAreNeverUsedAgain) {
    PBDictionary row = support::entries(
        "FolderId=3 FileName=A.jpg FileSize=5000000000 ModificationDate=1234567890.123456");
    row[u"Tag"_s] = PBNull();
    const qint64 id = _files.insertImageFileWithDictionary(row);
    ASSERT_EQ(id, 1);
    qint64 size = -1;
    double date = -1;
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, u"a.jpg"_s, &size, &date), 0);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, u"A.jpg"_s, &size, &date), id);
    EXPECT_EQ(size, 5'000'000'000);
    EXPECT_EQ(date, 1234567890.123456);
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, u"A.jpg"_s, size, date), id);
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, u"A.jpg"_s, size, date + 1), 0);

    EXPECT_TRUE(_files.updateImageFileWithIdFileName(id, u"B.jpg"_s));
    const PBArray values = _files.imageFileDataWithIdAndFields(id, {u"FileName"_s, u"Tag"_s});
    EXPECT_EQ(values, (PBArray{u"B.jpg"_s, PBNull()}));

    EXPECT_TRUE(_files.removeImageFileWithFileId(id));
    EXPECT_EQ(_files.insertImageFileWithDictionary(row), 2);
}

TEST_F(PBCatalogueTest, dictionariesWithoutKeysOrWithUnknownOnesFailWhereTheyMust) {
    EXPECT_EQ(_files.insertImageFileWithDictionary({}), 0);
    EXPECT_EQ(_files.insertImageFileWithDictionary({{u"NoColumn"_s, 1}}), 0);
    EXPECT_TRUE(_files.insertExifWithImageFileId(1, {}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(1, {}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(2, {{u"NoColumn"_s, 1}}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(3, {{u"a) values (1)--"_s, 1}}));
    EXPECT_EQ(countOf(u"Exif"_s), 1);
    EXPECT_TRUE(_files.insertGPSWithImageFileId(1, {}));
    const PBArray row = _files.gpsDataWithFileIdAndFields(1);
    ASSERT_GT(row.size(), 4U);
    EXPECT_EQ(row[0], PBValue(1));
    EXPECT_TRUE(row[1].isNull());
    EXPECT_TRUE(_files.gpsDataWithFileIdAndFields(2).empty());
    EXPECT_TRUE(_files.imageFileDataWithIdAndFields(99).empty());
    EXPECT_TRUE(_files.gpsDataWithFileIdAndFields(1, {u"NoColumn"_s}).empty());
}

TEST_F(PBCatalogueTest, imageIsRemovedFromEveryTableThatLetsItAndOthersStay) {
    const auto insert = [this] {
        const qint64 id = _files.insertImageFileWithDictionary({{u"FolderId"_s, 1}});
        EXPECT_TRUE(_files.insertExifWithImageFileId(id, {{u"FNumber"_s, 2.8}}));
        EXPECT_TRUE(_files.insertExifAuxWithImageFileId(id, {{u"LensID"_s, u"1"_s}}));
        EXPECT_TRUE(_files.insertTiffWithImageFileId(id, {{u"Make"_s, u"M"_s}}));
        EXPECT_TRUE(_files.insertIPTCWithImageFileId(id, {{u"City"_s, u"Bern"_s}}));
        EXPECT_TRUE(_files.insertGPSWithImageFileId(id, {{u"Latitude"_s, 46.9}}));
        return id;
    };
    const qint64 other = insert();
    const QStringList tables = u"ImageFile Exif ExifAux Tiff IPTC GPS"_s.split(u' ');
    for (const QString& refusing : tables) {
        const qint64 id = insert();
        support::refuse(_filesDb, u"delete on "_s + refusing);
        EXPECT_FALSE(_files.removeImageFileAndMetadataWithFileId(id));
        for (const QString& table : tables)
            EXPECT_EQ(countOf(table), table == refusing ? 2 : 1) << table.toStdString();
        support::permit(_filesDb);
        EXPECT_TRUE(_files.removeImageFileAndMetadataWithFileId(id));
    }
    EXPECT_EQ(
        support::rowsOf(
            _filesDb, u"select LensID,City,Make from ExifAux join IPTC using (FileId) "
                      "join Tiff using (FileId) where FileId = %1"_s.arg(other)),
        QStringList(u"1|Bern|M"_s));
}

void cancelOperation(sqlite3_context* context, int, sqlite3_value**) {
    static_cast<platform::Operation*>(sqlite3_user_data(context))->cancel();
}

TEST_F(PBCatalogueTest, thumbnailsAreRemovedInOneTransactionThatEnds) {
    const auto leftAfter = [this](std::vector<qint64> ids) {
        const auto removal = std::make_shared<PBRemoveThumbOperation>(std::move(ids), _thumbDb);
        sqlite3_create_function(
            _thumbDb.sqliteHandle(), "cancelIt", 0, SQLITE_UTF8, removal.get(), cancelOperation,
            nullptr, nullptr);
        support::perform(removal);
        EXPECT_FALSE(_thumbDb.inTransaction());
        return support::rowsOf(_thumbDb, u"select FileId from Thumbnail"_s).join(u' ');
    };
    for (const qint64 id : {1, 2, 3, 4, 5})
        ASSERT_TRUE(_thumbs.insertThumbnailWithFileId(id, "x"));
    for (const char16_t* sql :
         {u"pragma foreign_keys = on",
          u"create table User (Id INTEGER references Thumbnail(FileId) deferrable initially "
          u"deferred)",
          u"insert into User values (2)",
          u"create trigger Cancel after delete on Thumbnail when old.FileId = 4 "
          u"begin select cancelIt(); end"})
        ASSERT_TRUE(_thumbDb.executeUpdate(QString::fromUtf16(sql)));
    EXPECT_EQ(leftAfter({1, 2}), u"1 2 3 4 5"_s) << "the commit fails: 2 is referred to";
    EXPECT_EQ(leftAfter({1, 7, 3}), u"2 4 5"_s);
    EXPECT_EQ(leftAfter({4, 5}), u"2 5"_s) << "cancelled in between";
}

TEST_F(PBCatalogueTest, tagsAreCompletedByUse) {
    const qint64 beach = support::addTag(_filesDb, u"beach"_s);
    const qint64 city = support::addTag(_filesDb, u"CITY at night"_s);
    const qint64 sea = support::addTag(_filesDb, u"Sea"_s);
    ASSERT_TRUE(beach > 0 && city > beach && sea > city);
    EXPECT_EQ(_files.tagWithTagId(city), u"CITY at night"_s);
    EXPECT_TRUE(_files.tagWithTagId(99).isEmpty());

    for (const qint64 used : {sea, sea, city})
        EXPECT_TRUE(_files.database().executeUpdate(
            u"update Tags set UseCount = UseCount + 1 where Id = ?"_s, used));
    const QStringList all{u"Sea"_s, u"CITY at night"_s, u"beach"_s};
    EXPECT_EQ(_files.completionArrayByTag(u"A"_s, 2), all.mid(0, 2));
    for (const int most : {-1, 0, 5})
        EXPECT_EQ(_files.completionArrayByTag(most > 0 ? QString() : u"a"_s, most), all);
    EXPECT_TRUE(_files.completionArrayByTag(u"t_a"_s, 0).isEmpty());
    EXPECT_EQ(_files.completionArrayByTag(u"y_a"_s, 0), QStringList(u"CITY at night"_s));
    EXPECT_TRUE(_files.completionArrayByTag(u"a'"_s, 0).isEmpty());
    support::addTag(_filesDb, u"Österreich"_s);
    for (const QString& typed : {u"Öst"_s, u"öst"_s, u"ÖST"_s})
        EXPECT_EQ(_files.completionArrayByTag(typed, 0), QStringList(u"Österreich"_s));
    EXPECT_TRUE(_files.completionArrayByTag(u"üst"_s, 0).isEmpty());
    marks::TagNames names(_files.database());
    EXPECT_EQ(names.tagWithTagId(sea), u"Sea"_s);
    EXPECT_EQ(names.tagWithTagId(support::addTag(_filesDb, u"later"_s)), u"later"_s);
    EXPECT_TRUE(
        _files.database().executeUpdate(u"update Tags set Tag = 'Lake' where Id = ?"_s, sea));
    names.forget();
    EXPECT_EQ(names.tagWithTagId(sea), u"Lake"_s);
}

} // namespace
