#pragma once

#include "platform/values/PBValue.h"

#include <QString>
#include <QStringView>

#include <span>

/// Between the property dictionaries of image files and the columns of the catalogue's metadata
/// tables, in both directions. A property type is one of "Exif", "ExifAux", "IPTC", "Tiff", "GPS".
/// Pure functions, any thread.
namespace PBUtilities {

/// The column that a property goes to; empty for one that is dropped. Whether the table has the
/// column is tested by the conversions below, not here.
[[nodiscard]] QString databaseKeyFromExifKey(QStringView key);
[[nodiscard]] QString databaseKeyFromExifAuxKey(QStringView key);
[[nodiscard]] QString databaseKeyFromTiffKey(QStringView key);
[[nodiscard]] QString databaseKeyFromGPSKey(QStringView key);
[[nodiscard]] QString databaseKeyFromIPTCKey(QStringView key);

/// A property dictionary as one of columns. Arrays become one text, their elements joined with ",";
/// an empty array is left out, and all else stays as it is. A property without a column in the
/// table is left out: it would make the insert of the whole row fail.
[[nodiscard]] PBDictionary databaseDictFromExifPropDict(const PBDictionary& properties);
[[nodiscard]] PBDictionary databaseDictFromExifAuxPropDict(const PBDictionary& properties);
[[nodiscard]] PBDictionary databaseDictFromTiffPropDict(const PBDictionary& properties);
/// The same, with the entries of nested dictionaries brought to the top.
[[nodiscard]] PBDictionary databaseDictFromIPTCPropDict(const PBDictionary& properties);
[[nodiscard]] PBDictionary databaseDictFromGPSPropDict(const PBDictionary& properties);

/// A row of a metadata table, its columns in the table's order without `FileId`, as a dictionary
/// without the columns that are null. Empty for an empty row or an unknown type.
[[nodiscard]] PBDictionary
propertyDictionaryFromArray(std::span<const PBValue> array, QStringView propertyType);

/// Takes the row of one more image into a dictionary that stands for several: a value stays only
/// where the row has the same (texts without regard to case); every other key that either has
/// becomes the null marker. An empty row marks all keys; an unknown type changes nothing.
void mergePropertyDictionary(
    PBDictionary& dictionary, std::span<const PBValue> array, QStringView propertyType);

} // namespace PBUtilities
