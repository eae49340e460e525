#include "catalogue/CatalogueSchema.h"

#include "support/Support.h"

namespace {

QStringList names(std::span<const CatalogueTable> tables) {
    return support::listed(tables, [](const auto& table) { return table.name.toString(); });
}

TEST(CatalogueSchemaTest, tablesAreMadeInTheirOrderWithTheirExactText) {
    EXPECT_EQ(
        names(CatalogueSchema::filesTables()).join(u' '),
        u"Version FolderAlias Folder ImageFile Exif Tiff IPTC GPS Geo ExifAux Tags"_s);
    EXPECT_EQ(names(CatalogueSchema::thumbnailTables()).join(u' '), u"Version Thumbnail"_s);

    const std::pair<QStringView, QString> rows[] = {
        {u"Version", u"create table Version (Version TEXT)"_s},
        {u"FolderAlias", u"create table FolderAlias (Id INTEGER PRIMARY KEY AUTOINCREMENT, "
                         "Data BLOB, Type INTEGER, ReservePath TEXT, State INTEGER)"_s},
        {u"Folder", u"create table Folder (Id INTEGER PRIMARY KEY AUTOINCREMENT, "
                    "AliasId INTEGER, RelativePath TEXT)"_s},
        {u"ImageFile",
         u"create table ImageFile (Id INTEGER PRIMARY KEY AUTOINCREMENT, FolderId INTEGER, "
         "FileName TEXT, FileSize INTEGER, ModificationDate DOUBLE, CreationDate DOUBLE, "
         "UTIType TEXT, ImageWidth INTEGER, ImageHeight INTEGER, ImageDPI INTEGER, "
         "ColorModel TEXT, ColorSyncProfile TEXT, RotateAngle DOUBLE, Tag TEXT, "
         "FileStars INTEGER, FileFlag INTEGER)"_s},
        {u"Geo", u"create table Geo (GeoId INTEGER PRIMARY KEY AUTOINCREMENT, "
                 "Longitude BLOB, Latitude BLOB, AddressDict BLOB)"_s},
        {u"Tags", u"create table Tags (Id INTEGER NOT NULL PRIMARY KEY, Tag TEXT, "
                  "UseCount INTEGER)"_s},
        {u"Thumbnail", u"create table Thumbnail (FileId INTEGER NOT NULL PRIMARY "
                       "KEY, Data BLOB)"_s}};
    for (const auto& [name, text] : rows) {
        const CatalogueTable* table = CatalogueSchema::tableNamed(name);
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(CatalogueSchema::createStatement(*table), text);
    }
    EXPECT_EQ(CatalogueSchema::tableNamed(u"imagefile"), nullptr);
}

} // namespace
