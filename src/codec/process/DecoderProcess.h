#pragma once

#include "codec/formats/Codecs.h"

namespace codec::process {

/// To be called first of all by main(). If the command line is that of a decoder process, this is
/// its whole life: it confines itself, then answers requests from its socket until the program
/// closes it, and the answer is the exit code. Nothing for any other command line.
[[nodiscard]] std::optional<int>
runIfDecoderProcess(std::span<char*> arguments, CodecTable codecs = allCodecs());

} // namespace codec::process
