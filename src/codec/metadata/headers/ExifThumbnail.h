#pragma once

#include "codec/metadata/headers/Bytes.h"

namespace codec {

/// The small JPEG that a camera puts into the EXIF block of a JPEG file (EXIF 2.32, 4.5.8: the
/// second directory names its place and length), a part of the file's bytes; empty where there is
/// none. It may have black bars, and may be of a picture that was edited since.
[[nodiscard]] Bytes exifThumbnail(Bytes jpegFile);

} // namespace codec
