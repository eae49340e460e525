#include "catalogue/MetadataKeys.h"

#include "catalogue/CatalogueSchema.h"
#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

using namespace PBUtilities;

QString text(const char16_t* letters) {
    return QString::fromUtf16(letters);
}

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
        {text(u"ISOSpeedRatings"), PBArray{100, 200}},
        {text(u"LensSpecification"), PBArray{24.0, 70.5, 2.8, 0}},
        {text(u"RecommendedExposureIndex"), 100},
        {text(u"OffsetTimeOriginal"), text(u"+02:00")},
        {text(u"FNumber"), 2.8},
        {text(u"SubjectArea"), PBArray{}},
        {text(u"FileId"), 5},
        {text(u"OECF"), PBDictionary{{text(u"Flash"), 1}}},
    };
    const PBDictionary expected{
        {text(u"ISOSpeedRatings"), text(u"100,200")},
        {text(u"LensSpecification"), text(u"24,70.5,2.8,0")},
        {text(u"FNumber"), 2.8},
    };
    EXPECT_EQ(databaseDictFromExifPropDict(exif), expected);
    EXPECT_EQ(
        databaseDictFromExifAuxPropDict({{text(u"LensModel"), text(u"a")}, {text(u"Make"), 1}}),
        (PBDictionary{{text(u"LensModel"), text(u"a")}}));
    EXPECT_EQ(
        databaseDictFromTiffPropDict({{text(u"Make"), text(u"a")}, {text(u"TileWidth"), 16}}),
        (PBDictionary{{text(u"Make"), text(u"a")}}));
    EXPECT_EQ(databaseKeyFromExifAuxKey(u"Make"), QString());
    EXPECT_EQ(databaseKeyFromExifKey(u"ISOSpeed"), QString());
}

TEST(MetadataKeysTest, nestedContactDataAndSlashedNamesReachTheirColumns) {
    const PBDictionary iptc{
        {text(u"Caption/Abstract"), text(u"c")},
        {text(u"Province/State"), text(u"p")},
        {text(u"Country/PrimaryLocationCode"), text(u"FRA")},
        {text(u"Country/PrimaryLocationName"), text(u"France")},
        {text(u"Writer/Editor"), PBArray{text(u"a"), text(u"b")}},
        {text(u"CreatorContactInfo"),
         PBDictionary{
             {text(u"CiAdrCity"), text(u"Paris")},
             {text(u"Unknown"), 1},
             {text(u"Deeper"), PBDictionary{{text(u"CiUrlWork"), text(u"u")}}}}},
    };
    const PBDictionary expected{
        {text(u"Caption_Abstract"), text(u"c")},
        {text(u"Province_State"), text(u"p")},
        {text(u"Country_PrimaryLocationCode"), text(u"FRA")},
        {text(u"Country_PrimaryLocationName"), text(u"France")},
        {text(u"Writer_Editor"), text(u"a,b")},
        {text(u"CiAdrCity"), text(u"Paris")},
        {text(u"CiUrlWork"), text(u"u")},
    };
    EXPECT_EQ(databaseDictFromIPTCPropDict(iptc), expected);
    EXPECT_EQ(
        databaseDictFromGPSPropDict(
            {{text(u"GPSVersion"), PBArray{2, 3, 0, 0}}, {text(u"HPositioningError"), 3.0}}),
        (PBDictionary{{text(u"GPSVersion"), text(u"2,3,0,0")}}));
}

TEST(MetadataKeysTest, rowsComeBackUnderTheirColumnsWithoutNulls) {
    const PBDictionary values{{text(u"GPSVersion"), text(u"2,2")}, {text(u"Differential"), 0}};
    EXPECT_EQ(propertyDictionaryFromArray(rowOf(u"GPS", values), u"GPS"), values);
    EXPECT_EQ(rowOf(u"GPS", values).size(), 31U);
    EXPECT_TRUE(propertyDictionaryFromArray({}, u"GPS").empty());
    EXPECT_TRUE(propertyDictionaryFromArray(rowOf(u"GPS", values), u"ImageFile").empty());
    // A shorter row, as an older file may have it.
    EXPECT_EQ(
        propertyDictionaryFromArray(PBArray{text(u"1")}, u"GPS"),
        (PBDictionary{{text(u"GPSVersion"), text(u"1")}}));
}

TEST(MetadataKeysTest, onlyValuesThatEveryImageHasSurviveAMerge) {
    const PBDictionary first{
        {text(u"Make"), text(u"Nikon")},
        {text(u"Model"), text(u"D70")},
        {text(u"Orientation"), 1},
        {text(u"Software"), text(u"x")},
        {text(u"XResolution"), 300}};
    PBDictionary merged = first;
    mergePropertyDictionary(merged, rowOf(u"Tiff", first), u"Tiff");
    EXPECT_EQ(merged, first);

    const PBDictionary second{
        {text(u"Make"), text(u"NIKON")},
        {text(u"Model"), text(u"D80")},
        {text(u"Orientation"), 1.0},
        {text(u"Artist"), text(u"only here")},
        {text(u"XResolution"), text(u"300")}};
    mergePropertyDictionary(merged, rowOf(u"Tiff", second), u"Tiff");
    const PBDictionary expected{{text(u"Make"), text(u"Nikon")},  {text(u"Model"), PBNull()},
                                {text(u"Orientation"), 1},        {text(u"Software"), PBNull()},
                                {text(u"XResolution"), PBNull()}, {text(u"Artist"), PBNull()}};
    EXPECT_EQ(merged, expected);

    // A mark stays, whatever comes.
    mergePropertyDictionary(merged, rowOf(u"Tiff", first), u"Tiff");
    EXPECT_EQ(merged, expected);
    mergePropertyDictionary(merged, {}, u"Unknown");
    EXPECT_EQ(merged, expected);
    mergePropertyDictionary(merged, {}, u"Tiff");
    for (const auto& [key, value] : merged)
        EXPECT_TRUE(value.isNull()) << key.toStdString();
}

} // namespace
