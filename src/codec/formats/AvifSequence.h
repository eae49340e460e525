#pragma once

#include "codec/pixels/Decoder.h"

namespace codec::formats {

/// The frames of an AV1 image sequence; nothing where the file holds no track of several.
[[nodiscard]] std::unique_ptr<Decoder> openAvifSequence(const Source& source);

} // namespace codec::formats
