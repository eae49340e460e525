#pragma once

#include "platform/values/PBValue.h"

#include <QString>

#include <cstddef>
#include <optional>

namespace codec {

/// Reads the properties of one frame of an open file, as the importer answers them, without
/// decoding a pixel: only the parts of the file that hold headers and metadata are read.
///
/// At the top level "PixelWidth", "PixelHeight" (as stored, before rotation), "DPIWidth",
/// "DPIHeight" (whole numbers), "ColorModel" ("RGB", "Gray", "CMYK", "Lab"), "ProfileName", "Depth"
/// (bits of a component), "Orientation" (1 to 8), each where the file tells it; and the
/// dictionaries
/// "{Exif}", "{ExifAux}", "{TIFF}", "{IPTC}", "{GPS}" and "{GIF}" ("DelayTime" in seconds), each
/// where it has an entry. Their keys are those of the catalogue's columns, IPTC's with their
/// slashes
/// ("Caption/Abstract"); keys without a column are left out. Values are numbers, texts, arrays of
/// either, and one nested dictionary, "CreatorContactInfo".
///
/// `descriptor` may stand anywhere and stays open; `typeIdentifier` tells raw files, all else is
/// told by the bytes. Nothing when the file is no picture or has no such frame. Never throws. Any
/// thread; calls wait for each other.
[[nodiscard]] std::optional<PBDictionary>
readImageProperties(int descriptor, const QString& typeIdentifier, std::size_t frame);

/// Sets the metadata library up, which `readImageProperties` otherwise does when first called: for
/// a process that confines itself before it reads.
void prepareImageProperties();

} // namespace codec
