#include "catalogue/PBCatalogue.h"

#include "support/Rows.h"

namespace {

struct CatalogueTablesTest : ::testing::Test {
    void SetUp() override { ASSERT_TRUE(_db.open()); }

    QStringList column(const QString& sql) { return support::rowsOf(_db, sql); }

    QTemporaryDir _folder;
    FMDatabase _db{_folder.filePath(u"files.db"_s)};
    PBCatalogue _catalogue{_db};
};

const QString versions = u"select Version from Version"_s;
const QString tableTexts =
    u"select sql from sqlite_master where type = 'table' and name <> 'sqlite_sequence' "
    "order by rowid"_s;

QStringList createdTexts(std::span<const CatalogueTable> tables) {
    QStringList texts;
    for (const CatalogueTable& table : tables) {
        // SQLite keeps the text of the statement with these two words in capitals.
        texts.append(CatalogueSchema::createStatement(table).replace(0, 12, u"CREATE TABLE"_s));
    }
    return texts;
}

TEST_F(CatalogueTablesTest, newFilesHaveTheWholeSchemaAndTheVersionOnce) {
    for (int start = 0; start < 2; ++start) {
        EXPECT_TRUE(_catalogue.checkTables_FilesDb());
        EXPECT_EQ(column(tableTexts), createdTexts(CatalogueSchema::filesTables()));
        EXPECT_EQ(column(versions), QStringList(u"1.0.1"_s));
    }
    EXPECT_FALSE(_db.inTransaction());
    const QString plan = u"explain query plan select Id from %1 where %2 = 1"_s;
    for (const auto& [table, key] : {std::pair("ImageFile", "FolderId"), {"Folder", "AliasId"}}) {
        FMResultSet row =
            _db.executeQuery(plan.arg(QString::fromLatin1(table), QString::fromLatin1(key)));
        ASSERT_TRUE(row.next());
        EXPECT_TRUE(row.stringForColumn(u"detail"_s).startsWith(u"SEARCH"_s));
    }

    FMDatabase thumbnails(_folder.filePath(u"thumbnail.db"_s));
    ASSERT_TRUE(thumbnails.open());
    EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
    EXPECT_EQ(
        support::rowsOf(thumbnails, tableTexts), createdTexts(CatalogueSchema::thumbnailTables()));
    EXPECT_TRUE(_catalogue.attachThumbnailDatabase(thumbnails.databasePath()));
}

TEST_F(CatalogueTablesTest, onlyWhatIsMissingIsMadeAndOtherVersionsAreIgnored) {
    ASSERT_TRUE(_catalogue.checkTables_FilesDb());
    ASSERT_TRUE(_db.executeUpdate(u"drop table Tags"_s));
    ASSERT_TRUE(_db.executeUpdate(u"drop table Geo"_s));
    ASSERT_TRUE(_db.executeUpdate(u"create table Geo (Other TEXT)"_s));
    ASSERT_TRUE(_db.executeUpdate(u"update Version set Version = '9'"_s));
    ASSERT_GT(_catalogue.insertFolderWithAliasId(1, QString()), 0);
    EXPECT_TRUE(_catalogue.checkTables_FilesDb());
    EXPECT_TRUE(_catalogue.isTableExist(u"Tags"_s));
    EXPECT_EQ(_catalogue.findFolderIdByAliasId(1, std::nullopt), 1);
    EXPECT_EQ(column(versions), QStringList(u"9"_s));
    EXPECT_EQ(
        column(u"select sql from sqlite_master where name = 'Geo'"_s),
        QStringList(u"CREATE TABLE Geo (Other TEXT)"_s));
    EXPECT_EQ(_catalogue.insertGeoWithLongitudeData("a", "b", "c"), 0);
    EXPECT_FALSE(
        _catalogue.isTableExist(u"imagefile"_s) || _catalogue.isTableExist(u"x' or '1' = '1"_s));
}

TEST_F(CatalogueTablesTest, damagedFileIsReportedAndNotTouched) {
    const QString path = _folder.filePath(u"broken.db"_s);
    const QByteArray content = QByteArray("SQLite format 4").leftJustified(4096, 'x');
    support::writeFile(path, content);
    FMDatabase broken(path);
    ASSERT_TRUE(broken.open());
    PBCatalogue catalogue(broken);
    EXPECT_FALSE(catalogue.checkTables_FilesDb());
    EXPECT_TRUE(broken.hadError());
    EXPECT_EQ(catalogue.insertTag(u"x"_s), 0);
    EXPECT_TRUE(catalogue.completionArrayByTag(u"x"_s, 0).isEmpty());
    EXPECT_TRUE(broken.close());
    EXPECT_EQ(support::readFile(path), content);
}

} // namespace
