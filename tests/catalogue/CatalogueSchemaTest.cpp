#include "catalogue/CatalogueSchema.h"

#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

QStringList names(std::span<const CatalogueTable> tables) {
    QStringList result;
    for (const CatalogueTable& table : tables)
        result.append(table.name.toString());
    return result;
}

TEST(CatalogueSchemaTest, tablesAreMadeInTheirOrderWithTheirExactText) {
    EXPECT_EQ(
        names(CatalogueSchema::filesTables()).join(u' '),
        QStringLiteral("Version FolderAlias Folder ImageFile Exif Tiff IPTC GPS Geo ExifAux Tags"));
    EXPECT_EQ(
        names(CatalogueSchema::thumbnailTables()).join(u' '), QStringLiteral("Version Thumbnail"));

    struct Row {
        QStringView table;
        QString text;
    };
    const Row rows[] = {
        {u"Version", QStringLiteral("create table Version (Version TEXT)")},
        {u"FolderAlias",
         QStringLiteral("create table FolderAlias (Id INTEGER PRIMARY KEY AUTOINCREMENT, "
                        "Data BLOB, Type INTEGER, ReservePath TEXT, State INTEGER)")},
        {u"Folder", QStringLiteral("create table Folder (Id INTEGER PRIMARY KEY AUTOINCREMENT, "
                                   "AliasId INTEGER, RelativePath TEXT)")},
        {u"ImageFile",
         QStringLiteral(
             "create table ImageFile (Id INTEGER PRIMARY KEY AUTOINCREMENT, FolderId INTEGER, "
             "FileName TEXT, FileSize INTEGER, ModificationDate DOUBLE, CreationDate DOUBLE, "
             "UTIType TEXT, ImageWidth INTEGER, ImageHeight INTEGER, ImageDPI INTEGER, "
             "ColorModel TEXT, ColorSyncProfile TEXT, RotateAngle DOUBLE, Tag TEXT, "
             "FileStars INTEGER, FileFlag INTEGER)")},
        {u"Geo", QStringLiteral("create table Geo (GeoId INTEGER PRIMARY KEY AUTOINCREMENT, "
                                "Longitude BLOB, Latitude BLOB, AddressDict BLOB)")},
        {u"Tags", QStringLiteral("create table Tags (Id INTEGER NOT NULL PRIMARY KEY, Tag TEXT, "
                                 "UseCount INTEGER)")},
        {u"Thumbnail", QStringLiteral("create table Thumbnail (FileId INTEGER NOT NULL PRIMARY "
                                      "KEY, Data BLOB)")},
    };
    for (const Row& row : rows) {
        const CatalogueTable* table = CatalogueSchema::tableNamed(row.table);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(CatalogueSchema::createStatement(*table), row.text);
    }
    EXPECT_EQ(CatalogueSchema::tableNamed(u"imagefile"), nullptr);
}

TEST(CatalogueSchemaTest, metadataTablesAreWholeAndKeyedByFileId) {
    struct Row {
        QStringView table;
        qsizetype columns;
        QString first;
        QString last;
    };
    const Row rows[] = {
        {u"Exif", 63, QStringLiteral("ExposureTime"), QStringLiteral("LensSerialNumber")},
        {u"ExifAux", 12, QStringLiteral("LensInfo"), QStringLiteral("ImageStabilization")},
        {u"IPTC", 58, QStringLiteral("ObjectTypeReference"), QStringLiteral("Scene")},
        {u"Tiff", 18, QStringLiteral("Compression"), QStringLiteral("PrimaryChromaticities")},
        {u"GPS", 31, QStringLiteral("GPSVersion"), QStringLiteral("Differential")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.table.toString().toStdString());
        const QStringList& columns = CatalogueSchema::metadataColumnsOfTable(row.table);
        ASSERT_EQ(columns.size(), row.columns);
        EXPECT_EQ(columns.first(), row.first);
        EXPECT_EQ(columns.last(), row.last);
        EXPECT_EQ(CatalogueSchema::columnsOfTable(row.table).first(), QStringLiteral("FileId"));
        EXPECT_EQ(
            CatalogueSchema::tableNamed(row.table)->columns.front().sqlType.toString(),
            QStringLiteral("INTEGER NOT NULL PRIMARY KEY"));
    }
    EXPECT_TRUE(CatalogueSchema::metadataColumnsOfTable(u"Tags").isEmpty());
    EXPECT_TRUE(CatalogueSchema::columnsOfTable(u"Nothing").isEmpty());
}

} // namespace
