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
    using Row = std::tuple<QString, PBValue, PBValue>;
    PBDictionary exif, expected;
    for (const auto& [key, value, column] :
         {Row(u"ISOSpeedRatings"_s, PBArray{100, 200}, u"100,200"_s), Row(u"FNumber"_s, 2.8, 2.8),
          Row(u"LensSpecification"_s, PBArray{24.0, 70.5, 2.8, 0}, u"24,70.5,2.8,0"_s),
          Row(u"OffsetTimeOriginal"_s, u"+02:00"_s, {}), Row(u"SubjectArea"_s, PBArray{}, {}),
          Row(u"FileId"_s, 5, {}), Row(u"OECF"_s, PBDictionary{{u"Flash"_s, 1}}, {})}) {
        exif.emplace(key, value);
        if (!column.isAbsent()) expected.emplace(key, column);
    }
    EXPECT_EQ(databaseDictFromExifPropDict(exif), expected);
    const PBDictionary mixed{
        {u"LensID"_s, 2},
        {u"Make"_s, u"a"_s},
        {u"TileWidth"_s, 16},
        {u"Nested"_s,
         PBDictionary{{u"LensID"_s, 3}, {u"In"_s, PBDictionary{{u"City"_s, 4}, {u"DOP"_s, 5}}}}}};
    EXPECT_EQ(databaseDictFromExifAuxPropDict(mixed), (PBDictionary{{u"LensID"_s, 2}}));
    EXPECT_EQ(databaseDictFromTiffPropDict(mixed), (PBDictionary{{u"Make"_s, u"a"_s}}));
    EXPECT_EQ(databaseDictFromIPTCPropDict(mixed), (PBDictionary{{u"City"_s, 4}}));
    EXPECT_EQ(databaseDictFromGPSPropDict(mixed), (PBDictionary{{u"DOP"_s, 5}}));
}

TEST(MetadataKeysTest, rowsComeBackUnderTheirColumnsWithoutNulls) {
    const PBDictionary values{{u"GPSVersion"_s, u"2,2"_s}, {u"Differential"_s, 0}};
    EXPECT_EQ(propertyDictionaryFromArray(rowOf(u"GPS", values), u"GPS"), values);
    EXPECT_TRUE(propertyDictionaryFromArray({}, u"GPS").empty());
    for (const QStringView table : {u"ImageFile", u"Geo", u"Thumbnail"})
        EXPECT_TRUE(propertyDictionaryFromArray(rowOf(u"GPS", values), table).empty());
    // A shorter row, as an older file may have it.
    EXPECT_EQ(
        propertyDictionaryFromArray(PBArray{u"1"_s}, u"GPS"),
        (PBDictionary{{u"GPSVersion"_s, u"1"_s}}));
}

TEST(MetadataKeysTest, onlyValuesThatEveryImageHasSurviveAMerge) {
    PBDictionary first, second, expected;
    using Row = std::tuple<QString, PBValue, PBValue, PBValue>;
    for (const auto& [key, value, other, both] :
         {Row(u"Make"_s, u"Nikon"_s, u"NIKON"_s, u"Nikon"_s), Row(u"Orientation"_s, 1, 1.0, 1),
          Row(u"Model"_s, u"D70"_s, u"D80"_s, PBNull()), Row(u"Software"_s, u"x"_s, {}, PBNull()),
          Row(u"XResolution"_s, 300, u"300"_s, PBNull()), Row(u"Artist"_s, {}, u"y"_s, PBNull())}) {
        if (!value.isAbsent()) first.emplace(key, value);
        if (!other.isAbsent()) second.emplace(key, other);
        expected.emplace(key, both);
    }
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
