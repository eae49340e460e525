#pragma once

#include "codec/encoding/PictureEncoder.h"
#include "codec/process/FileExchange.h"

namespace codec::process {

/// Pixels that a decoder process is to encode, with all that goes into the file.
[[nodiscard]] FileExchange encodeExchange(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings);

/// The other side of it, in the decoder process: the reply stays as it is where it can't be done.
void answerEncode(const QString& type, int given, int result, Reply& reply);

} // namespace codec::process
