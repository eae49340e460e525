#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"
#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

/// Both kinds of connection: with and without kept statements.
class PBCatalogueTest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        for (FMDatabase* db : {&_filesDb, &_thumbDb}) {
            db->setShouldCacheStatements(GetParam());
            ASSERT_TRUE(db->open());
        }
        ASSERT_TRUE(_files.checkTables_FilesDb());
        ASSERT_TRUE(_thumbs.checkTables_Thumbnail());
    }

    qint64 countOf(const QString& table) {
        FMResultSet row = _filesDb.executeQuery(QStringLiteral("select count(*) from ") + table);
        return row.next() ? row.longLongIntForColumnIndex(0) : -1;
    }

    FMDatabase _filesDb{QString()};
    FMDatabase _thumbDb{QString()};
    PBCatalogue _files{_filesDb};
    PBCatalogue _thumbs{_thumbDb};
};

INSTANTIATE_TEST_SUITE_P(Cache, PBCatalogueTest, ::testing::Bool(), [](const auto& param) {
    return std::string(param.param ? "on" : "off");
});

QString text(const char16_t* literal) {
    return QString::fromUtf16(literal);
}

TEST_P(PBCatalogueTest, rootFolderIsStoredAsNullAndFoundWithoutAPathOnly) {
    const qint64 root = _files.insertFolderWithAliasId(7, QString());
    const qint64 below = _files.insertFolderWithAliasId(7, text(u"2024/May"));
    ASSERT_GT(root, 0);
    ASSERT_GT(below, root);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, std::nullopt), root);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, QString()), 0);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, text(u"2024/May")), below);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, text(u"2024/may")), 0);
    EXPECT_EQ(_files.findFolderIdByAliasId(8, std::nullopt), 0);
    EXPECT_TRUE(_files.updateFolderWithId(below, 8, QString()));
    EXPECT_EQ(_files.findFolderIdByAliasId(8, std::nullopt), below);
}

TEST_P(PBCatalogueTest, imageFilesAreFoundByExactNameAndIdsAreNeverUsedAgain) {
    const PBDictionary row{
        {text(u"FolderId"), 3},
        {text(u"FileName"), text(u"A.jpg")},
        {text(u"FileSize"), qint64(5'000'000'000)},
        {text(u"ModificationDate"), 1234567890.123456},
        {text(u"Tag"), PBNull()},
    };
    const qint64 id = _files.insertImageFileWithDictionary(row);
    ASSERT_EQ(id, 1);
    qint64 size = -1;
    double date = -1;
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, text(u"a.jpg"), &size, &date), 0);
    EXPECT_EQ(size, -1);
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, text(u"A.jpg"), &size, &date), id);
    EXPECT_EQ(size, 5'000'000'000);
    EXPECT_EQ(date, 1234567890.123456);
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, text(u"A.jpg"), size, date), id);
    EXPECT_EQ(_files.findImageFileIdByFolderId(3, text(u"A.jpg"), size, date + 1), 0);

    EXPECT_TRUE(_files.updateImageFileWithIdFileName(id, text(u"B.jpg")));
    EXPECT_TRUE(_files.updateImageFileWithIdFlag(id, 1));
    EXPECT_TRUE(_files.updateImageFileWithIdStar(id, 5));
    const PBArray values = _files.imageFileDataWithIdAndFields(
        id, {text(u"FileName"), text(u"FileFlag"), text(u"FileStars"), text(u"Tag")});
    EXPECT_EQ(values, (PBArray{text(u"B.jpg"), 1, 5, PBNull()}));

    EXPECT_TRUE(_files.removeImageFileWithFileId(id));
    EXPECT_EQ(_files.insertImageFileWithDictionary(row), 2);
}

TEST_P(PBCatalogueTest, dictionariesWithoutKeysOrWithUnknownOnesFailWhereTheyMust) {
    EXPECT_EQ(_files.insertImageFileWithDictionary({}), 0);
    EXPECT_EQ(_files.insertImageFileWithDictionary({{text(u"NoColumn"), 1}}), 0);
    EXPECT_TRUE(_files.insertExifWithImageFileId(1, {}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(1, {}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(2, {{text(u"NoColumn"), 1}}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(3, {{text(u"a) values (1)--"), 1}}));
    EXPECT_EQ(countOf(text(u"Exif")), 1);
    const PBArray row = _files.exifDataWithFileIdAndFields(1);
    ASSERT_EQ(row.size(), 64U);
    EXPECT_EQ(row[0], PBValue(1));
    EXPECT_TRUE(row[1].isNull());
    EXPECT_TRUE(_files.exifDataWithFileIdAndFields(2).empty());
    EXPECT_TRUE(_files.imageFileDataWithIdAndFields(99).empty());
    EXPECT_TRUE(_files.exifDataWithFileIdAndFields(1, {text(u"NoColumn")}).empty());
}

TEST_P(PBCatalogueTest, imageIsRemovedFromEveryTableAndOthersStay) {
    for (qint64 id = 1; id <= 2; ++id) {
        ASSERT_EQ(_files.insertImageFileWithDictionary({{text(u"FolderId"), 1}}), id);
        EXPECT_TRUE(_files.insertExifWithImageFileId(id, {{text(u"FNumber"), 2.8}}));
        EXPECT_TRUE(_files.insertExifAuxWithImageFileId(id, {{text(u"LensID"), text(u"1")}}));
        EXPECT_TRUE(_files.insertTiffWithImageFileId(id, {{text(u"Make"), text(u"M")}}));
        EXPECT_TRUE(_files.insertIPTCWithImageFileId(id, {{text(u"City"), text(u"Bern")}}));
        EXPECT_TRUE(_files.insertGPSWithImageFileId(id, {{text(u"Latitude"), 46.9}}));
    }
    EXPECT_TRUE(_files.removeImageFileAndMetadataWithFileId(1));
    EXPECT_TRUE(_files.imageFileDataWithIdAndFields(1).empty());
    EXPECT_TRUE(_files.exifDataWithFileIdAndFields(1).empty());
    EXPECT_TRUE(_files.exifAuxDataWithFileIdAndFields(1).empty());
    EXPECT_TRUE(_files.tiffDataWithFileIdAndFields(1).empty());
    EXPECT_TRUE(_files.iptcDataWithFileIdAndFields(1).empty());
    EXPECT_TRUE(_files.gpsDataWithFileIdAndFields(1).empty());
    EXPECT_EQ(_files.imageFileDataWithIdAndFields(2).size(), 16U);
    EXPECT_EQ(_files.exifAuxDataWithFileIdAndFields(2, {text(u"LensID")}), PBArray{text(u"1")});
    EXPECT_EQ(_files.iptcDataWithFileIdAndFields(2, {text(u"City")}), PBArray{text(u"Bern")});
    EXPECT_EQ(_files.tiffDataWithFileIdAndFields(2, {text(u"Make")}), PBArray{text(u"M")});
    EXPECT_EQ(_files.gpsDataWithFileIdAndFields(2, {text(u"Latitude")}), PBArray{46.9});
    EXPECT_EQ(_files.exifDataWithFileIdAndFields(2, {text(u"FNumber")}), PBArray{2.8});
}

TEST_P(PBCatalogueTest, anglesAreAddedAsWholeNumbersWithTheSignOfTheSum) {
    struct Row {
        double angle;
        double added;
        double stored;
    };
    const Row rows[] = {{300, 90, 30},     {270, 180, 90},  {0, -90, -90},
                        {-270, -180, -90}, {45.7, 0.6, 46}, {360, 0, 0}};
    const qint64 id = _files.insertImageFileWithDictionary({{text(u"FolderId"), 1}});
    for (const Row& row : rows) {
        ASSERT_TRUE(_files.updateImageFileWithIdRotateAngle(id, row.angle));
        ASSERT_TRUE(_files.updateImageFileWithIdAddRotateAngle(id, row.added));
        const PBArray stored = _files.imageFileDataWithIdAndFields(id, {text(u"RotateAngle")});
        ASSERT_EQ(stored.size(), 1U);
        EXPECT_TRUE(stored[0].isFloating());
        EXPECT_EQ(stored[0].toDouble(), row.stored) << row.angle << " + " << row.added;
    }
}

TEST_P(PBCatalogueTest, tagsAreUniqueWithoutCaseAndCompletedByUse) {
    const qint64 beach = _files.insertTag(text(u"beach"));
    const qint64 city = _files.insertTag(text(u"CITY at night"));
    const qint64 sea = _files.insertTag(text(u"Sea"));
    ASSERT_TRUE(beach > 0 && city > beach && sea > city);
    EXPECT_EQ(_files.findTagIdByTag(text(u"BeAch")), beach);
    EXPECT_EQ(_files.findTagIdByTag(text(u"city at NIGHT")), city);
    EXPECT_EQ(_files.findTagIdByTag(text(u"beac")), 0);
    EXPECT_EQ(_files.tagWithTagId(city), text(u"CITY at night"));
    EXPECT_TRUE(_files.tagWithTagId(99).isEmpty());

    EXPECT_TRUE(_files.increaseTagCountWithTagId(sea));
    EXPECT_TRUE(_files.increaseTagCountWithTagId(sea));
    EXPECT_TRUE(_files.increaseTagCountWithTagId(city));
    const QStringList all{text(u"Sea"), text(u"CITY at night"), text(u"beach")};
    EXPECT_EQ(_files.completionArrayByTag(text(u"A"), 2), all.mid(0, 2));
    EXPECT_EQ(_files.completionArrayByTag(text(u"a"), 0), all);
    EXPECT_EQ(_files.completionArrayByTag(text(u"a"), -1), all);
    EXPECT_EQ(_files.completionArrayByTag(QString(), 5), all);
    EXPECT_TRUE(_files.completionArrayByTag(text(u"t_a"), 0).isEmpty());
    EXPECT_EQ(_files.completionArrayByTag(text(u"y_a"), 0), QStringList(text(u"CITY at night")));
    EXPECT_TRUE(_files.completionArrayByTag(text(u"a'"), 0).isEmpty());
}

TEST_P(PBCatalogueTest, tagsOfAFileStartEmptyAndUpdatesOfUnknownFilesAreNoFailure) {
    const qint64 id = _files.insertImageFileWithDictionary({{text(u"FolderId"), 1}});
    EXPECT_TRUE(_files.tagWithFileId(id).isEmpty());
    EXPECT_TRUE(_files.updateImageFileWithIdTag(id, text(u"3,17")));
    EXPECT_EQ(_files.tagWithFileId(id), text(u"3,17"));
    EXPECT_TRUE(_files.updateImageFileWithIdTag(99, text(u"1")));
}

TEST_P(PBCatalogueTest, rootsPlacesAndThumbnailsKeepTheirBytes) {
    const QByteArray bytes("\0bytes\xff", 7);
    const qint64 alias = _files.insertFolderAliasWithData(bytes, 2, text(u"/media/card"), 0);
    ASSERT_EQ(alias, 1);
    EXPECT_TRUE(_files.updateFolderAliasWithIdState(alias, 1));
    EXPECT_TRUE(_files.updateFolderAliasWithIdReservePath(alias, text(u"/media/it's")));
    FMResultSet row = _filesDb.executeQuery(text(u"select * from FolderAlias"));
    ASSERT_TRUE(row.next());
    EXPECT_EQ(row.dataForColumn(text(u"Data")), bytes);
    EXPECT_EQ(row.intForColumn(text(u"Type")), 2);
    EXPECT_EQ(row.stringForColumn(text(u"ReservePath")), text(u"/media/it's"));
    EXPECT_EQ(row.intForColumn(text(u"State")), 1);
    row.close();
    EXPECT_TRUE(_files.removeFolderAliasWithAliasId(alias));
    EXPECT_EQ(countOf(text(u"FolderAlias")), 0);

    const qint64 geo = _files.insertGeoWithLongitudeData("a", "b", "c");
    EXPECT_TRUE(_files.updateGeoWithGeoId(geo, bytes, "d"));
    FMResultSet place = _filesDb.executeQuery(text(u"select * from Geo where GeoId = ?"), geo);
    ASSERT_TRUE(place.next());
    EXPECT_EQ(place.dataForColumnIndex(1), bytes);
    EXPECT_EQ(place.dataForColumnIndex(2), QByteArray("d"));
    EXPECT_EQ(place.dataForColumnIndex(3), QByteArray("c"));

    EXPECT_TRUE(_thumbs.insertThumbnailWithFileId(5, bytes));
    EXPECT_FALSE(_thumbs.insertThumbnailWithFileId(5, bytes));
    EXPECT_EQ(_thumbs.thumbnailDataWithFileIdAndFields(5, {text(u"Data")}), PBArray{bytes});
    EXPECT_TRUE(_thumbs.removeThumbnailWithFileId(5));
    EXPECT_TRUE(_thumbs.thumbnailDataWithFileIdAndFields(5).empty());
    EXPECT_FALSE(_files.insertThumbnailWithFileId(5, bytes));
}

class OneRoot : public FolderRootPaths {
public:
    QString path;
    QString mountedPathOfAliasId(qint64 aliasId) const override {
        return aliasId == 4 ? path : QString();
    }
};

TEST_P(PBCatalogueTest, folderPathIsTheRootsPlaceAndTheRelativePath) {
    OneRoot roots;
    const qint64 root = _files.insertFolderWithAliasId(4, QString());
    const qint64 below = _files.insertFolderWithAliasId(4, text(u"a/b"));
    const qint64 orphan = _files.insertFolderWithAliasId(9, text(u"a"));
    EXPECT_TRUE(_files.pathOfFolderId(root, roots).isEmpty());
    EXPECT_TRUE(_files.pathOfFolderId(below, roots).isEmpty());
    roots.path = text(u"/photos");
    EXPECT_EQ(_files.pathOfFolderId(root, roots), text(u"/photos"));
    EXPECT_EQ(_files.pathOfFolderId(below, roots), text(u"/photos/a/b"));
    EXPECT_TRUE(_files.pathOfFolderId(orphan, roots).isEmpty());
    EXPECT_TRUE(_files.pathOfFolderId(99, roots).isEmpty());
    roots.path = text(u"/");
    EXPECT_EQ(_files.pathOfFolderId(below, roots), text(u"/a/b"));
    EXPECT_TRUE(_files.removeFolderWithFolderId(below));
    EXPECT_TRUE(_files.pathOfFolderId(below, roots).isEmpty());
}

} // namespace
