#include "catalogue/PBCatalogue.h"

#include "support/Rows.h"

namespace {

/// Both kinds of connection: with and without kept statements.
struct PBCatalogueTest : ::testing::TestWithParam<bool> {
    void SetUp() override {
        for (FMDatabase* db : {&_filesDb, &_thumbDb}) {
            db->setShouldCacheStatements(GetParam());
            ASSERT_TRUE(db->open());
        }
        ASSERT_TRUE(_files.checkTables_FilesDb());
        ASSERT_TRUE(_thumbs.checkTables_Thumbnail());
    }

    qint64 countOf(const QString& table) {
        FMResultSet row = _filesDb.executeQuery(u"select count(*) from "_s + table);
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

TEST_P(PBCatalogueTest, rootFolderIsStoredAsNullAndFoundWithoutAPathOnly) {
    const qint64 root = _files.insertFolderWithAliasId(7, QString());
    const qint64 below = _files.insertFolderWithAliasId(7, u"2024/May"_s);
    ASSERT_GT(root, 0);
    ASSERT_GT(below, root);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, std::nullopt), root);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, QString()), 0);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, u"2024/May"_s), below);
    EXPECT_EQ(_files.findFolderIdByAliasId(7, u"2024/may"_s), 0);
    EXPECT_EQ(_files.findFolderIdByAliasId(8, std::nullopt), 0);
    EXPECT_TRUE(_files.updateFolderWithId(below, 8, QString()));
    EXPECT_EQ(_files.findFolderIdByAliasId(8, std::nullopt), below);
}

TEST_P(PBCatalogueTest, imageFilesAreFoundByExactNameAndIdsAreNeverUsedAgain) {
    const PBDictionary row{
        {u"FolderId"_s, 3},
        {u"FileName"_s, u"A.jpg"_s},
        {u"FileSize"_s, qint64(5'000'000'000)},
        {u"ModificationDate"_s, 1234567890.123456},
        {u"Tag"_s, PBNull()}};
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
    EXPECT_TRUE(_files.updateImageFileWithIdFlag(id, 1));
    EXPECT_TRUE(_files.updateImageFileWithIdStar(id, 5));
    const PBArray values = _files.imageFileDataWithIdAndFields(
        id, {u"FileName"_s, u"FileFlag"_s, u"FileStars"_s, u"Tag"_s});
    EXPECT_EQ(values, (PBArray{u"B.jpg"_s, 1, 5, PBNull()}));

    EXPECT_TRUE(_files.removeImageFileWithFileId(id));
    EXPECT_EQ(_files.insertImageFileWithDictionary(row), 2);
}

TEST_P(PBCatalogueTest, dictionariesWithoutKeysOrWithUnknownOnesFailWhereTheyMust) {
    EXPECT_EQ(_files.insertImageFileWithDictionary({}), 0);
    EXPECT_EQ(_files.insertImageFileWithDictionary({{u"NoColumn"_s, 1}}), 0);
    EXPECT_TRUE(_files.insertExifWithImageFileId(1, {}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(1, {}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(2, {{u"NoColumn"_s, 1}}));
    EXPECT_FALSE(_files.insertExifWithImageFileId(3, {{u"a) values (1)--"_s, 1}}));
    EXPECT_EQ(countOf(u"Exif"_s), 1);
    const PBArray row = _files.exifDataWithFileIdAndFields(1);
    ASSERT_EQ(row.size(), 64U);
    EXPECT_EQ(row[0], PBValue(1));
    EXPECT_TRUE(row[1].isNull());
    EXPECT_TRUE(_files.exifDataWithFileIdAndFields(2).empty());
    EXPECT_TRUE(_files.imageFileDataWithIdAndFields(99).empty());
    EXPECT_TRUE(_files.exifDataWithFileIdAndFields(1, {u"NoColumn"_s}).empty());
}

TEST_P(PBCatalogueTest, imageIsRemovedFromEveryTableAndOthersStay) {
    for (qint64 id = 1; id <= 2; ++id) {
        ASSERT_EQ(
            _files.insertImageFileWithDictionary(
                {{u"FolderId"_s, _files.insertFolderWithAliasId(1, QString())}}),
            id);
        EXPECT_TRUE(_files.insertExifWithImageFileId(id, {{u"FNumber"_s, 2.8}}));
        EXPECT_TRUE(_files.insertExifAuxWithImageFileId(id, {{u"LensID"_s, u"1"_s}}));
        EXPECT_TRUE(_files.insertTiffWithImageFileId(id, {{u"Make"_s, u"M"_s}}));
        EXPECT_TRUE(_files.insertIPTCWithImageFileId(id, {{u"City"_s, u"Bern"_s}}));
        EXPECT_TRUE(_files.insertGPSWithImageFileId(id, {{u"Latitude"_s, 46.9}}));
    }
    EXPECT_TRUE(_files.removeImageFileAndMetadataWithFileId(1));
    support::expectConsistentCatalogue(_filesDb);
    EXPECT_TRUE(_files.imageFileDataWithIdAndFields(1).empty());
    EXPECT_EQ(_files.imageFileDataWithIdAndFields(2).size(), 16U);
    EXPECT_EQ(_files.exifAuxDataWithFileIdAndFields(2, {u"LensID"_s}), PBArray{u"1"_s});
    EXPECT_EQ(_files.iptcDataWithFileIdAndFields(2, {u"City"_s}), PBArray{u"Bern"_s});
    EXPECT_EQ(_files.tiffDataWithFileIdAndFields(2, {u"Make"_s}), PBArray{u"M"_s});
    EXPECT_EQ(_files.gpsDataWithFileIdAndFields(2, {u"Latitude"_s}), PBArray{46.9});
    EXPECT_EQ(_files.exifDataWithFileIdAndFields(2, {u"FNumber"_s}), PBArray{2.8});
}

TEST_P(PBCatalogueTest, anglesAreAddedAsWholeNumbersWithTheSignOfTheSum) {
    const std::tuple<double, double, double> rows[] = {{300, 90, 30},   {270, 180, 90},
                                                       {0, -90, -90},   {-270, -180, -90},
                                                       {45.7, 0.6, 46}, {360, 0, 0}};
    const qint64 id = _files.insertImageFileWithDictionary({{u"FolderId"_s, 1}});
    for (const auto& [angle, added, sum] : rows) {
        ASSERT_TRUE(_files.updateImageFileWithIdRotateAngle(id, angle));
        ASSERT_TRUE(_files.updateImageFileWithIdAddRotateAngle(id, added));
        const PBArray stored = _files.imageFileDataWithIdAndFields(id, {u"RotateAngle"_s});
        EXPECT_EQ(stored, PBArray{sum}) << angle << " + " << added;
        EXPECT_TRUE(stored.at(0).isFloating());
    }
}

TEST_P(PBCatalogueTest, tagsAreUniqueWithoutCaseAndCompletedByUse) {
    const qint64 beach = _files.insertTag(u"beach"_s);
    const qint64 city = _files.insertTag(u"CITY at night"_s);
    const qint64 sea = _files.insertTag(u"Sea"_s);
    ASSERT_TRUE(beach > 0 && city > beach && sea > city);
    EXPECT_EQ(_files.findTagIdByTag(u"BeAch"_s), beach);
    EXPECT_EQ(_files.findTagIdByTag(u"city at NIGHT"_s), city);
    EXPECT_EQ(_files.findTagIdByTag(u"beac"_s), 0);
    EXPECT_EQ(_files.tagWithTagId(city), u"CITY at night"_s);
    EXPECT_TRUE(_files.tagWithTagId(99).isEmpty());

    EXPECT_TRUE(_files.increaseTagCountWithTagId(sea));
    EXPECT_TRUE(_files.increaseTagCountWithTagId(sea));
    EXPECT_TRUE(_files.increaseTagCountWithTagId(city));
    const QStringList all{u"Sea"_s, u"CITY at night"_s, u"beach"_s};
    EXPECT_EQ(_files.completionArrayByTag(u"A"_s, 2), all.mid(0, 2));
    EXPECT_EQ(_files.completionArrayByTag(u"a"_s, 0), all);
    EXPECT_EQ(_files.completionArrayByTag(u"a"_s, -1), all);
    EXPECT_EQ(_files.completionArrayByTag(QString(), 5), all);
    EXPECT_TRUE(_files.completionArrayByTag(u"t_a"_s, 0).isEmpty());
    EXPECT_EQ(_files.completionArrayByTag(u"y_a"_s, 0), QStringList(u"CITY at night"_s));
    EXPECT_TRUE(_files.completionArrayByTag(u"a'"_s, 0).isEmpty());
}

TEST_P(PBCatalogueTest, rootsPlacesAndThumbnailsKeepTheirBytes) {
    const QByteArray bytes("\0bytes\xff", 7);
    const qint64 alias = _files.insertFolderAliasWithData(bytes, 2, u"/media/card"_s, 0);
    ASSERT_EQ(alias, 1);
    EXPECT_TRUE(_files.updateFolderAliasWithIdState(alias, 1));
    EXPECT_TRUE(_files.updateFolderAliasWithIdReservePath(alias, u"/media/it's"_s));
    EXPECT_EQ(
        support::rowsOf(_filesDb, u"select hex(Data),Type,ReservePath,State from FolderAlias"_s),
        QStringList{u"006279746573FF|2|/media/it's|1"_s});
    EXPECT_TRUE(_files.removeFolderAliasWithAliasId(alias));
    EXPECT_EQ(countOf(u"FolderAlias"_s), 0);

    const qint64 geo = _files.insertGeoWithLongitudeData("a", "b", "c");
    EXPECT_TRUE(_files.updateGeoWithGeoId(geo, bytes, "d"));
    EXPECT_EQ(
        support::rowsOf(_filesDb, u"select GeoId,hex(Longitude),Latitude,AddressDict from Geo"_s),
        QStringList{u"%1|006279746573FF|d|c"_s.arg(geo)});

    EXPECT_TRUE(_thumbs.insertThumbnailWithFileId(5, bytes));
    EXPECT_FALSE(_thumbs.insertThumbnailWithFileId(5, bytes));
    EXPECT_EQ(_thumbs.thumbnailDataWithFileIdAndFields(5, {u"Data"_s}), PBArray{bytes});
    EXPECT_TRUE(_thumbs.removeThumbnailWithFileId(5));
    EXPECT_TRUE(_thumbs.thumbnailDataWithFileIdAndFields(5).empty());
    EXPECT_FALSE(_files.insertThumbnailWithFileId(5, bytes));
}

struct OneRoot : FolderRootPaths {
    QString path;
    QString mountedPathOfAliasId(qint64 aliasId) const override {
        return aliasId == 4 ? path : QString();
    }
};

TEST_P(PBCatalogueTest, folderPathIsTheRootsPlaceAndTheRelativePath) {
    OneRoot roots;
    const qint64 root = _files.insertFolderWithAliasId(4, QString());
    const qint64 below = _files.insertFolderWithAliasId(4, u"a/b"_s);
    const qint64 orphan = _files.insertFolderWithAliasId(9, u"a"_s);
    EXPECT_TRUE(_files.pathOfFolderId(root, roots).isEmpty());
    EXPECT_TRUE(_files.pathOfFolderId(below, roots).isEmpty());
    roots.path = u"/photos"_s;
    EXPECT_EQ(_files.pathOfFolderId(root, roots), u"/photos"_s);
    EXPECT_EQ(_files.pathOfFolderId(below, roots), u"/photos/a/b"_s);
    EXPECT_TRUE(_files.pathOfFolderId(orphan, roots).isEmpty());
    EXPECT_TRUE(_files.pathOfFolderId(99, roots).isEmpty());
    roots.path = u"/"_s;
    EXPECT_EQ(_files.pathOfFolderId(below, roots), u"/a/b"_s);
    EXPECT_TRUE(_files.removeFolderWithFolderId(below));
    EXPECT_TRUE(_files.pathOfFolderId(below, roots).isEmpty());
}

} // namespace
