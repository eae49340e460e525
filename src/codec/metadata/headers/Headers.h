#pragma once

#include "codec/metadata/headers/ImageHeader.h"

/// One parser for each container, called by `readImageHeader` alone. Each answers nothing, or a
/// header whose width and height may still be 0.
namespace codec::headers {

inline constexpr double inchesPerMeter = 39.37007874015748; // 1 / 0.0254

/// No writer puts as many chunks before the first picture; a hostile file of empty ones shall not
/// be walked to its end.
inline constexpr int mostChunks = 65536;

[[nodiscard]] std::optional<ImageHeader> readJpeg(Bytes file);
[[nodiscard]] std::optional<ImageHeader> readPng(Bytes file, std::size_t frame);
[[nodiscard]] std::optional<ImageHeader> readGif(Bytes file, std::size_t frame);
[[nodiscard]] std::optional<ImageHeader> readTiff(Bytes file, std::size_t frame);
[[nodiscard]] std::optional<ImageHeader> readWebP(Bytes file, std::size_t frame);
[[nodiscard]] std::optional<ImageHeader> readHeif(Bytes file, std::size_t frame);
[[nodiscard]] std::optional<ImageHeader> readJpegXl(Bytes file);
[[nodiscard]] std::optional<ImageHeader> readJpeg2000(Bytes file, Container container);
[[nodiscard]] std::optional<ImageHeader> readPhotoshop(Bytes file);
[[nodiscard]] std::optional<ImageHeader> readBitmap(Bytes file);
[[nodiscard]] std::optional<ImageHeader> readIcon(Bytes file, std::size_t frame);
[[nodiscard]] std::optional<ImageHeader> readNetpbm(Bytes file);
[[nodiscard]] std::optional<ImageHeader> readTarga(Bytes file);

} // namespace codec::headers
