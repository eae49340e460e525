#pragma once

#include "codec/metadata/MetadataReader.h"
#include "platform/values/PBValue.h"

#include <QString>

#include <optional>
#include <span>

namespace codec {

/// The dictionaries that EXIF tags make, under the names of the catalogue's columns.
struct ExifProperties {
    PBDictionary exif;
    PBDictionary tiff;
    PBDictionary gps;
};

/// Translates all tags that have a column. The metadata library's lock is held.
[[nodiscard]] ExifProperties exifProperties(const Metadata& metadata);

/// A number of a value: rational numbers become doubles, an undefined or endless one is nothing.
[[nodiscard]] std::optional<PBValue> numberAt(const Exiv2::Value& value, long position);
/// All numbers of a value, undefined ones as 0; at most 1,024.
[[nodiscard]] PBArray numbersOf(const Exiv2::Value& value);
/// The bytes of a value as they stand in the file, at most 64 KiB.
[[nodiscard]] QByteArray bytesOf(const Exiv2::Value& value, Exiv2::ByteOrder byteOrder);
/// The value as a text, whatever its type; empty when there is none.
[[nodiscard]] QString textOf(const Exiv2::Value& value);

/// Every key that `exifProperties` can answer in the dictionary "{Exif}", "{TIFF}" or "{GPS}".
enum class ExifDictionary { Exif, Tiff, Gps };
[[nodiscard]] QStringList exifPropertyKeys(ExifDictionary dictionary);

} // namespace codec
