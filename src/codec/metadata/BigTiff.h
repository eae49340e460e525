#pragma once

#include "codec/metadata/headers/Bytes.h"

#include <cstdint>
#include <vector>

namespace codec {

/// The first page's tags of a BigTIFF file, with the EXIF and GPS directories below it, as a
/// classic TIFF file without pixels, for a reader that knows only that. Large values are left out.
/// Empty when there is nothing to read.
[[nodiscard]] std::vector<std::uint8_t> classicTiff(Bytes bigTiff);

} // namespace codec
