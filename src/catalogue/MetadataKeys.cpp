#include "catalogue/MetadataKeys.h"

#include "catalogue/CatalogueSchema.h"

#include <algorithm>
#include <utility>

namespace PBUtilities {

namespace {

using KeyMapping = QString (*)(QStringView);
/// What becomes of a dictionary within a property dictionary.
enum class Nested { Dropped, BroughtToTheTop };

constexpr QStringView exifTable = u"Exif";
constexpr QStringView exifAuxTable = u"ExifAux";
constexpr QStringView tiffTable = u"Tiff";
constexpr QStringView iptcTable = u"IPTC";
constexpr QStringView gpsTable = u"GPS";

const QStringList& columnsOf(QStringView propertyType) {
    return CatalogueSchema::metadataColumnsOfTable(propertyType);
}

/// Absent for a value that no column takes.
PBValue columnValue(const PBValue& value) {
    if (const PBArray* array = value.array()) {
        return array->empty() ? PBValue() : PBValue(value.toText());
    }
    return value;
}

void convert(
    const PBDictionary& properties, QStringView table, KeyMapping mapping, Nested nested,
    PBDictionary& result) {
    for (const auto& [key, value] : properties) {
        if (const PBDictionary* inner = value.dictionary()) {
            if (nested == Nested::BroughtToTheTop) convert(*inner, table, mapping, nested, result);
            continue;
        }
        const QString column = mapping(key);
        if (column.isEmpty() || !columnsOf(table).contains(column)) continue;
        PBValue converted = columnValue(value);
        if (!converted.isAbsent()) result.insert_or_assign(column, std::move(converted));
    }
}

PBDictionary
converted(const PBDictionary& properties, QStringView table, KeyMapping mapping, Nested nested) {
    PBDictionary result;
    convert(properties, table, mapping, nested, result);
    return result;
}

bool isSameValue(const PBValue& value, const PBValue& other) {
    if (value.isNumber() && other.isNumber()) return value == other;
    const auto* text = value.getIf<QString>();
    const auto* otherText = other.getIf<QString>();
    return text && otherText && text->compare(*otherText, Qt::CaseInsensitive) == 0;
}

} // namespace

QString databaseKeyFromExifKey(QStringView key) {
    constexpr QStringView dropped[] = {
        u"ISOSpeed",
        u"ISOSpeedLatitudeyyy",
        u"ISOSpeedLatitudezzz",
        u"RecommendedExposureIndex",
        u"SensitivityType",
        u"StandardOutputSensitivity"};
    return std::ranges::find(dropped, key) == std::end(dropped) ? key.toString() : QString();
}

QString databaseKeyFromExifAuxKey(QStringView key) {
    return columnsOf(exifAuxTable).contains(key) ? key.toString() : QString();
}

QString databaseKeyFromTiffKey(QStringView key) {
    return key.toString();
}

QString databaseKeyFromGPSKey(QStringView key) {
    return key.toString();
}

QString databaseKeyFromIPTCKey(QStringView key) {
    constexpr std::pair<QStringView, QStringView> renamed[] = {
        {u"Caption/Abstract", u"Caption_Abstract"},
        {u"Writer/Editor", u"Writer_Editor"},
        {u"Country/PrimaryLocationCode", u"Country_PrimaryLocationCode"},
        {u"Country/PrimaryLocationName", u"Country_PrimaryLocationName"},
        {u"Province/State", u"Province_State"},
    };
    for (const auto& [name, column] : renamed) {
        if (name == key) return column.toString();
    }
    return key.toString();
}

PBDictionary databaseDictFromExifPropDict(const PBDictionary& properties) {
    return converted(properties, exifTable, databaseKeyFromExifKey, Nested::Dropped);
}

PBDictionary databaseDictFromExifAuxPropDict(const PBDictionary& properties) {
    return converted(properties, exifAuxTable, databaseKeyFromExifAuxKey, Nested::Dropped);
}

PBDictionary databaseDictFromTiffPropDict(const PBDictionary& properties) {
    return converted(properties, tiffTable, databaseKeyFromTiffKey, Nested::Dropped);
}

PBDictionary databaseDictFromIPTCPropDict(const PBDictionary& properties) {
    return converted(properties, iptcTable, databaseKeyFromIPTCKey, Nested::BroughtToTheTop);
}

PBDictionary databaseDictFromGPSPropDict(const PBDictionary& properties) {
    return converted(properties, gpsTable, databaseKeyFromGPSKey, Nested::BroughtToTheTop);
}

PBDictionary propertyDictionaryFromArray(std::span<const PBValue> array, QStringView propertyType) {
    PBDictionary dictionary;
    const QStringList& columns = columnsOf(propertyType);
    const std::size_t count = std::min(array.size(), static_cast<std::size_t>(columns.size()));
    for (std::size_t position = 0; position < count; ++position) {
        if (array[position].hasValue()) {
            dictionary.emplace(columns[static_cast<qsizetype>(position)], array[position]);
        }
    }
    return dictionary;
}

void mergePropertyDictionary(
    PBDictionary& dictionary, std::span<const PBValue> array, QStringView propertyType) {
    const QStringList& columns = columnsOf(propertyType);
    if (columns.isEmpty()) return;
    if (array.empty()) {
        for (auto& [key, value] : dictionary)
            value = PBNull();
        return;
    }
    for (qsizetype position = 0; position < columns.size(); ++position) {
        const auto at = static_cast<std::size_t>(position);
        const PBValue added = at < array.size() ? array[at] : PBValue();
        const auto found = dictionary.find(columns[position]);
        if (found == dictionary.end()) {
            if (added.hasValue()) dictionary.emplace(columns[position], PBNull());
        } else if (!found->second.isNull() && !isSameValue(found->second, added)) {
            found->second = PBNull();
        }
    }
}

} // namespace PBUtilities
