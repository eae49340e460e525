#pragma once

#include "codec/metadata/headers/Bytes.h"

namespace codec {

/// What a file's first bytes say that it is.
enum class Container {
    Unknown,
    Jpeg,
    Png,
    Gif,
    Tiff,
    BigTiff,
    Bmp,
    WebP,
    /// HEIF and AVIF.
    Heif,
    /// A raw file in the same boxes as HEIF.
    Cr3,
    JpegXl,
    JpegXlCodestream,
    Jpeg2000,
    Jpeg2000Codestream,
    Photoshop,
    Icon,
    Netpbm,
    Targa,
    Cr2,
    Crw,
    Mrw,
    Orf,
    Raf,
    Rw2,
    X3f,
};

/// Looks at no more than the first and the last few hundred bytes.
[[nodiscard]] Container sniffContainer(Bytes file);

} // namespace codec
