#include "catalogue/PBCatalogue.h"

#include "support/Rows.h"

namespace {

struct CatalogueTablesTest : ::testing::Test {
    QString column(const QString& sql) { return support::rowsOf(_db, sql).join(u' '); }

    QTemporaryDir _folder;
    support::Database _db{_folder.filePath(u"files.db"_s)};
    PBCatalogue _catalogue{_db};
};

TEST_F(CatalogueTablesTest, newFilesHaveTheWholeSchemaAndTheVersionOnceOrNoTransaction) {
    ASSERT_EQ(column(u"pragma max_page_count = 4"_s), u"4"_s);
    EXPECT_FALSE(_catalogue.checkTables_FilesDb() || _db.inTransaction()) << "there is no room";
    ASSERT_EQ(column(u"pragma max_page_count = 1000"_s), u"1000"_s);
    for (int start = 0; start < 2; ++start) {
        EXPECT_TRUE(_catalogue.checkTables_FilesDb());
        EXPECT_EQ(column(u"select Version from Version"_s), u"1.0.1"_s);
    }
    EXPECT_FALSE(_db.inTransaction());
    for (const QString& search : {u"ImageFile where FolderId = 1"_s, u"Folder where AliasId = 1"_s})
        EXPECT_TRUE(column(u"explain query plan select Id from "_s + search).contains(u"SEARCH"));

    support::Database thumbnails(_folder.filePath(u"it's thumbnail.db"_s));
    EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
    EXPECT_TRUE(PBCatalogue(thumbnails).isTableExist(u"Thumbnail"_s));
}

TEST_F(CatalogueTablesTest, onlyWhatIsMissingIsMadeAndOtherVersionsAreIgnored) {
    ASSERT_TRUE(_catalogue.checkTables_FilesDb());
    for (const char16_t* sql :
         {u"drop table Tags", u"drop table Geo", u"create table Geo (Other TEXT)",
          u"update Version set Version = '9'"})
        ASSERT_TRUE(_db.executeUpdate(QString::fromUtf16(sql)));
    ASSERT_GT(_catalogue.insertFolderWithAliasId(1, QString()), 0);
    EXPECT_TRUE(_catalogue.checkTables_FilesDb());
    EXPECT_TRUE(_catalogue.isTableExist(u"Tags"_s));
    EXPECT_EQ(_catalogue.findFolderIdByAliasId(1, std::nullopt), 1);
    EXPECT_EQ(column(u"select Version from Version"_s), u"9"_s);
    EXPECT_EQ(_catalogue.insertGeoWithLongitudeData("a", "b", "c"), 0);
    EXPECT_FALSE(
        _catalogue.isTableExist(u"imagefile"_s) || _catalogue.isTableExist(u"x' or '1' = '1"_s));
}

} // namespace
