#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"
#include "support/Support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class CatalogueTablesTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(_db.open()); }

    QStringList column(const QString& sql) {
        QStringList values;
        FMResultSet rows = _db.executeQuery(sql);
        while (rows.next())
            values.append(rows.stringForColumnIndex(0));
        return values;
    }

    QTemporaryDir _folder;
    FMDatabase _db{_folder.filePath(QStringLiteral("files.db"))};
    PBCatalogue _catalogue{_db};
};

const QString versions = QStringLiteral("select Version from Version");
const QString tableTexts = QStringLiteral(
    "select sql from sqlite_master where type = 'table' and name <> 'sqlite_sequence' "
    "order by rowid");

QStringList createdTexts(std::span<const CatalogueTable> tables) {
    QStringList texts;
    for (const CatalogueTable& table : tables) {
        // SQLite keeps the text of the statement with these two words in capitals.
        texts.append(
            CatalogueSchema::createStatement(table).replace(0, 12, QStringLiteral("CREATE TABLE")));
    }
    return texts;
}

TEST_F(CatalogueTablesTest, newFilesHaveTheWholeSchemaAndTheVersionOnce) {
    for (int start = 0; start < 2; ++start) {
        EXPECT_TRUE(_catalogue.checkTables_FilesDb());
        EXPECT_EQ(column(tableTexts), createdTexts(CatalogueSchema::filesTables()));
        EXPECT_EQ(column(versions), QStringList(QStringLiteral("1.0.1")));
    }
    EXPECT_FALSE(_db.inTransaction());
    const QString plan = QStringLiteral("explain query plan select Id from %1 where %2 = 1");
    for (const auto& [table, key] : {std::pair("ImageFile", "FolderId"), {"Folder", "AliasId"}}) {
        FMResultSet row =
            _db.executeQuery(plan.arg(QString::fromLatin1(table), QString::fromLatin1(key)));
        ASSERT_TRUE(row.next());
        EXPECT_TRUE(
            row.stringForColumn(QStringLiteral("detail")).startsWith(QStringLiteral("SEARCH")));
    }

    FMDatabase thumbnails(_folder.filePath(QStringLiteral("thumbnail.db")));
    ASSERT_TRUE(thumbnails.open());
    EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
    FMResultSet rows = thumbnails.executeQuery(tableTexts);
    for (const QString& expected : createdTexts(CatalogueSchema::thumbnailTables())) {
        ASSERT_TRUE(rows.next());
        EXPECT_EQ(rows.stringForColumnIndex(0), expected);
    }
    EXPECT_FALSE(rows.next());
    EXPECT_TRUE(_catalogue.attachThumbnailDatabase(thumbnails.databasePath()));
}

TEST_F(CatalogueTablesTest, onlyWhatIsMissingIsMadeAndOtherVersionsAreIgnored) {
    ASSERT_TRUE(_catalogue.checkTables_FilesDb());
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("drop table Tags")));
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("drop table Geo")));
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("create table Geo (Other TEXT)")));
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("update Version set Version = '9'")));
    ASSERT_GT(_catalogue.insertFolderWithAliasId(1, QString()), 0);
    EXPECT_TRUE(_catalogue.checkTables_FilesDb());
    EXPECT_TRUE(_catalogue.isTableExist(QStringLiteral("Tags")));
    EXPECT_EQ(_catalogue.findFolderIdByAliasId(1, std::nullopt), 1);
    EXPECT_EQ(column(versions), QStringList(QStringLiteral("9")));
    EXPECT_EQ(
        column(QStringLiteral("select sql from sqlite_master where name = 'Geo'")),
        QStringList(QStringLiteral("CREATE TABLE Geo (Other TEXT)")));
    EXPECT_EQ(_catalogue.insertGeoWithLongitudeData("a", "b", "c"), 0);
}

TEST_F(CatalogueTablesTest, tableNamesAreMatchedWithTheirCase) {
    ASSERT_TRUE(_catalogue.checkTables_FilesDb());
    EXPECT_FALSE(_catalogue.isTableExist(QStringLiteral("imagefile")));
    EXPECT_FALSE(_catalogue.isTableExist(QStringLiteral("ImageFileByFolderId")));
    EXPECT_FALSE(_catalogue.isTableExist(QStringLiteral("x' or '1' = '1")));
}

TEST_F(CatalogueTablesTest, checkWithinATransactionLeavesItOpen) {
    ASSERT_TRUE(_db.beginTransaction());
    EXPECT_TRUE(_catalogue.checkTables_FilesDb());
    EXPECT_TRUE(_db.inTransaction());
    EXPECT_TRUE(_db.rollback());
    EXPECT_FALSE(_catalogue.isTableExist(QStringLiteral("Tags")));
}

TEST_F(CatalogueTablesTest, damagedFileIsReportedAndNotTouched) {
    const QString path = _folder.filePath(QStringLiteral("broken.db"));
    const QByteArray content = QByteArray("SQLite format 4").leftJustified(4096, 'x');
    support::writeFile(path, content);
    FMDatabase broken(path);
    ASSERT_TRUE(broken.open());
    PBCatalogue catalogue(broken);
    EXPECT_FALSE(catalogue.checkTables_FilesDb());
    EXPECT_TRUE(broken.hadError());
    EXPECT_EQ(catalogue.insertTag(QStringLiteral("x")), 0);
    EXPECT_TRUE(catalogue.completionArrayByTag(QStringLiteral("x"), 0).isEmpty());
    EXPECT_TRUE(broken.close());
    EXPECT_EQ(support::readFile(path), content);
}

} // namespace
