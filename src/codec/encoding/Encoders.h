#pragma once

#include "codec/encoding/PictureEncoder.h"

/// One function for each library that writes pictures. Images are
/// `Format_RGB32` or `Format_ARGB32`, or `Format_RGBX64` or `Format_RGBA64` but for WebP; an empty
/// answer is the only sign of failure.
namespace codec::encoders {

/// The profile is written here, since the metadata library does not for this type.
[[nodiscard]] QByteArray
tiff(const QImage& image, const QByteArray& profile, const EncodeSettings& settings);
[[nodiscard]] QByteArray jpeg2000(const QImage& image, double quality, int threads);

/// A PNG file with the profile put in.
[[nodiscard]] QByteArray pngWithProfile(const QByteArray& file, const QByteArray& profile);

/// These write metadata themselves.
[[nodiscard]] QByteArray webp(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality,
    const std::stop_token& stop);
[[nodiscard]] QByteArray heic(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality);
[[nodiscard]] bool hasHeic();
[[nodiscard]] QByteArray avif(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality,
    int threads);
[[nodiscard]] QByteArray jpegXl(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality,
    int threads);

} // namespace codec::encoders
