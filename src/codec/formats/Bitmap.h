#pragma once

#include "codec/pixels/Decoder.h"

namespace codec::formats {

/// Decodes a device-independent bitmap whose info header stands at `offset`. `pixels` is where its
/// rows begin, 0 for directly behind the header. One inside an icon is declared twice as high as it
/// is, and has a mask behind its rows.
[[nodiscard]] Frame readBitmap(
    const Source& source, std::size_t offset, std::size_t pixels, bool isIcon,
    const DecodeRequest& request);

} // namespace codec::formats
