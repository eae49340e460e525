#include "catalogue/MetadataKeys.h"

#include "catalogue/CatalogueSchema.h"
#include "support/Rows.h"

namespace {

using namespace PBUtilities;
using support::entries;

/// A row of GPS with a value in the given columns and the null marker in all others.
PBArray rowOf(PBDictionary values) {
    PBArray row;
    for (const QString& column : CatalogueSchema::metadataColumnsOfTable(u"GPS"))
        row.push_back(values.try_emplace(column, PBNull()).first->second);
    return row;
}

TEST(MetadataKeysTest, keysOfNewerDecodersAndOfOtherTablesAreDropped) {
    PBDictionary exif = entries("FNumber=2.8 OffsetTimeOriginal=+02:00 FileId=5");
    exif[u"ISOSpeedRatings"_s] = PBArray{100, 200};
    exif[u"LensSpecification"_s] = PBArray{24.0, 70.5, 2.8, 0};
    exif[u"SubjectArea"_s] = PBArray{};
    exif[u"OECF"_s] = PBDictionary{{u"Flash"_s, 1}};
    const PBDictionary expected =
        entries("FNumber=2.8 ISOSpeedRatings=100,200 LensSpecification=24,70.5,2.8,0");
    EXPECT_EQ(databaseDictFromExifPropDict(exif), expected);
    PBDictionary mixed = entries("LensID=2 Make=a TileWidth=16");
    PBDictionary nested = entries("LensID=3");
    nested[u"In"_s] = entries("City=4 DOP=5");
    mixed[u"Nested"_s] = nested;
    EXPECT_EQ(databaseDictFromExifAuxPropDict(mixed), (PBDictionary{{u"LensID"_s, 2}}));
    EXPECT_EQ(databaseDictFromTiffPropDict(mixed), (PBDictionary{{u"Make"_s, u"a"_s}}));
    EXPECT_EQ(databaseDictFromIPTCPropDict(mixed), (PBDictionary{{u"City"_s, 4}}));
    EXPECT_EQ(databaseDictFromGPSPropDict(mixed), (PBDictionary{{u"DOP"_s, 5}}));
}

TEST(MetadataKeysTest, rowsComeBackUnderTheirColumnsWithoutNulls) {
    const PBDictionary values{{u"GPSVersion"_s, u"2,2"_s}, {u"Differential"_s, 0}};
    EXPECT_EQ(propertyDictionaryFromArray(rowOf(values), u"GPS"), values);
    EXPECT_TRUE(propertyDictionaryFromArray({}, u"GPS").empty());
    for (const QStringView table : {u"ImageFile", u"Geo", u"Thumbnail"})
        EXPECT_TRUE(propertyDictionaryFromArray(rowOf(values), table).empty());
    // A shorter row, as an older file may have it.
    EXPECT_EQ(
        propertyDictionaryFromArray(PBArray{u"1"_s}, u"GPS"),
        (PBDictionary{{u"GPSVersion"_s, u"1"_s}}));
}

} // namespace
