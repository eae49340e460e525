#pragma once

#include "codec/pixels/Decoder.h"

/// The rows of the table of decoders; each is defined in the file of its decoder.
namespace codec::formats {

extern const Codec jpeg;
extern const Codec png;
extern const Codec gif;
extern const Codec tiff;
extern const Codec bmp;
extern const Codec ico;
extern const Codec webp;
extern const Codec heif;
extern const Codec jpegXl;
extern const Codec jpeg2000;
extern const Codec psd;
extern const Codec tga;
extern const Codec netpbm;
/// By the type that the file's name says: most raw formats look like TIFF from the outside.
extern const Codec raw;
/// By content, for raw formats with a beginning of their own.
extern const Codec rawBySignature;

/// Whether the bytes begin with the text, at the offset.
[[nodiscard]] bool hasSignature(
    std::span<const std::uint8_t> head, std::string_view signature, std::size_t offset = 0);

} // namespace codec::formats
