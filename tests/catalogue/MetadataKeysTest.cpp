#include "catalogue/MetadataKeys.h"

#include "catalogue/CatalogueSchema.h"
#include "support/Support.h"

namespace {

using namespace PBUtilities;

/// A row of a table with a value in the given columns and the null marker in all others.
PBArray rowOf(QStringView type, const PBDictionary& values) {
    PBArray row;
    for (const QString& column : CatalogueSchema::metadataColumnsOfTable(type)) {
        const auto found = values.find(column);
        row.push_back(found == values.end() ? PBValue(PBNull()) : found->second);
    }
    return row;
}

TEST(MetadataKeysTest, keysOfNewerDecodersAndOfOtherTablesAreDropped) {
    const PBDictionary exif{
        {u"ISOSpeedRatings"_s, PBArray{100, 200}},
        {u"LensSpecification"_s, PBArray{24.0, 70.5, 2.8, 0}},
        {u"OffsetTimeOriginal"_s, u"+02:00"_s},
        {u"FNumber"_s, 2.8},
        {u"SubjectArea"_s, PBArray{}},
        {u"FileId"_s, 5},
        {u"OECF"_s, PBDictionary{{u"Flash"_s, 1}}}};
    const PBDictionary expected{
        {u"ISOSpeedRatings"_s, u"100,200"_s},
        {u"LensSpecification"_s, u"24,70.5,2.8,0"_s},
        {u"FNumber"_s, 2.8}};
    EXPECT_EQ(databaseDictFromExifPropDict(exif), expected);
    const PBDictionary iptc{
        {u"Province/State"_s, u"p"_s},
        {u"CreatorContactInfo"_s,
         PBDictionary{{u"Unknown"_s, 1}, {u"Deeper"_s, PBDictionary{{u"CiUrlWork"_s, u"u"_s}}}}}};
    EXPECT_EQ(
        databaseDictFromIPTCPropDict(iptc),
        (PBDictionary{{u"Province_State"_s, u"p"_s}, {u"CiUrlWork"_s, u"u"_s}}));
    EXPECT_EQ(
        databaseDictFromTiffPropDict({{u"Make"_s, u"a"_s}, {u"TileWidth"_s, 16}}),
        (PBDictionary{{u"Make"_s, u"a"_s}}));
}

TEST(MetadataKeysTest, rowsComeBackUnderTheirColumnsWithoutNulls) {
    const PBDictionary values{{u"GPSVersion"_s, u"2,2"_s}, {u"Differential"_s, 0}};
    EXPECT_EQ(propertyDictionaryFromArray(rowOf(u"GPS", values), u"GPS"), values);
    EXPECT_EQ(rowOf(u"GPS", values).size(), 31U);
    EXPECT_TRUE(propertyDictionaryFromArray({}, u"GPS").empty());
    EXPECT_TRUE(propertyDictionaryFromArray(rowOf(u"GPS", values), u"ImageFile").empty());
    // A shorter row, as an older file may have it.
    EXPECT_EQ(
        propertyDictionaryFromArray(PBArray{u"1"_s}, u"GPS"),
        (PBDictionary{{u"GPSVersion"_s, u"1"_s}}));
}

TEST(MetadataKeysTest, onlyValuesThatEveryImageHasSurviveAMerge) {
    const PBDictionary first{
        {u"Make"_s, u"Nikon"_s},
        {u"Model"_s, u"D70"_s},
        {u"Orientation"_s, 1},
        {u"Software"_s, u"x"_s},
        {u"XResolution"_s, 300}};
    const PBDictionary second{
        {u"Make"_s, u"NIKON"_s},
        {u"Model"_s, u"D80"_s},
        {u"Orientation"_s, 1.0},
        {u"Artist"_s, u"only here"_s},
        {u"XResolution"_s, u"300"_s}};
    const PBDictionary expected{{u"Make"_s, u"Nikon"_s},      {u"Model"_s, PBNull()},
                                {u"Orientation"_s, 1},        {u"Software"_s, PBNull()},
                                {u"XResolution"_s, PBNull()}, {u"Artist"_s, PBNull()}};
    PBDictionary merged = first;
    mergePropertyDictionary(merged, rowOf(u"Tiff", first), u"Tiff");
    EXPECT_EQ(merged, first);
    for (const PBDictionary& next : {second, first}) { // a mark stays, whatever comes
        mergePropertyDictionary(merged, rowOf(u"Tiff", next), u"Tiff");
        mergePropertyDictionary(merged, {}, u"Unknown");
        EXPECT_EQ(merged, expected);
    }
    mergePropertyDictionary(merged, {}, u"Tiff");
    for (const auto& [key, value] : merged)
        EXPECT_TRUE(value.isNull()) << key.toStdString();
}

} // namespace
