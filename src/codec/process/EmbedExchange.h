#pragma once

#include "codec/metadata/MetadataBlocks.h"
#include "codec/process/FileExchange.h"

namespace codec::process {

/// An encoded file with the metadata and the profile that are to go into it.
[[nodiscard]] FileExchange
embedExchange(const QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile);

/// The other side of it, in the decoder process: the reply stays as it is where it can't be done.
void answerEmbed(int given, int result, Reply& reply);

} // namespace codec::process
