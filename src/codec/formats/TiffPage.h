#pragma once

#include "codec/pixels/Decoder.h"

struct tiff;

namespace codec::formats {

/// Decodes the current directory of the file; `full` is the size of the picture that it stands for,
/// which is larger when the directory is a reduced copy.
[[nodiscard]] Frame readTiffPage(struct tiff* file, QSize full, const DecodeRequest& request);

} // namespace codec::formats
