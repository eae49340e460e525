#pragma once

#include "codec/pixels/Decoder.h"

/// What the table of decoders knows of a picture.
namespace codec {

/// All decoders, in order of precedence.
[[nodiscard]] CodecTable allCodecs();

/// The type identifier by content; empty when no decoder takes it.
[[nodiscard]] QString sniffType(
    std::span<const std::uint8_t> head, QStringView typeHint, CodecTable codecs = allCodecs());

/// The first decoder that recognises and opens the source; the hint is the type identifier that the
/// file's name says, which decides between a camera raw file and the format that it is built on.
[[nodiscard]] std::unique_ptr<Decoder>
openDecoder(const Source& source, QStringView typeHint, CodecTable codecs = allCodecs());

/// Open and decode; never throws.
[[nodiscard]] Frame decode(
    const Source& source, QStringView typeHint, const DecodeRequest& request,
    CodecTable codecs = allCodecs()) noexcept;
/// 0 when the picture can't be opened; never throws.
[[nodiscard]] std::size_t
countFrames(const Source& source, QStringView typeHint, CodecTable codecs = allCodecs()) noexcept;

} // namespace codec
