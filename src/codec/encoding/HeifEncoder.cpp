#include "codec/encoding/Encoders.h"
#include "codec/encoding/PackedPixels.h"
#include "codec/pixels/Releaser.h"

#include <libheif/heif.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace codec::encoders {

namespace {

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Encoder = std::unique_ptr<heif_encoder, Releaser<heif_encoder_release>>;
using Picture = std::unique_ptr<heif_image, Releaser<heif_image_release>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;

bool isGood(const heif_error& error) {
    return error.code == heif_error_Ok;
}

constexpr int deepBits = 10;

/// Samples of ten bits, the lower byte first.
void packDeep(const QRgba64* source, int width, bool hasAlpha, std::uint8_t* target) {
    constexpr int most = (1 << deepBits) - 1;
    for (int x = 0; x < width; ++x) {
        const QRgba64 pixel = source[x];
        const std::array samples{pixel.red(), pixel.green(), pixel.blue(), pixel.alpha()};
        for (std::size_t index = 0; index < (hasAlpha ? 4U : 3U); ++index) {
            const int sample = (samples[index] * most + 0x7fff) / 0xffff;
            *target++ = static_cast<std::uint8_t>(sample & 0xff);
            *target++ = static_cast<std::uint8_t>(sample >> 8);
        }
    }
}

Picture pictureOf(const QImage& image) {
    const bool hasAlpha = image.hasAlphaChannel();
    const bool isDeep = image.depth() == 64;
    const heif_chroma shallow =
        hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    const heif_chroma deep =
        hasAlpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    heif_image* made = nullptr;
    if (!isGood(heif_image_create(
            image.width(), image.height(), heif_colorspace_RGB, isDeep ? deep : shallow, &made)))
        return {};
    Picture picture(made);
    if (!isGood(heif_image_add_plane(
            made, heif_channel_interleaved, image.width(), image.height(), isDeep ? deepBits : 8)))
        return {};
    int stride = 0;
    std::uint8_t* plane = heif_image_get_plane(made, heif_channel_interleaved, &stride);
    if (!plane) return {};
    for (int y = 0; y < image.height(); ++y) {
        const uchar* line = image.constScanLine(y);
        std::uint8_t* target = plane + std::ptrdiff_t{y} * stride;
        if (isDeep) {
            packDeep(reinterpret_cast<const QRgba64*>(line), image.width(), hasAlpha, target);
        } else {
            packLine(reinterpret_cast<const QRgb*>(line), image.width(), hasAlpha, target);
        }
    }
    return picture;
}

heif_error take(heif_context*, const void* data, std::size_t size, void* bytes) {
    static_cast<QByteArray*>(bytes)->append(
        static_cast<const char*>(data), static_cast<qsizetype>(size));
    return {heif_error_Ok, heif_suberror_Unspecified, "ok"};
}

bool addMetadata(
    heif_context* context, const heif_image_handle* handle, const MetadataBlocks& metadata) {
    if (!metadata.exif.isEmpty() &&
        !isGood(heif_context_add_exif_metadata(
            context, handle, metadata.exif.constData(), static_cast<int>(metadata.exif.size()))))
        return false;
    return metadata.xmp.isEmpty() ||
           isGood(heif_context_add_XMP_metadata(
               context, handle, metadata.xmp.constData(), static_cast<int>(metadata.xmp.size())));
}

} // namespace

bool hasHeic() {
    return heif_have_encoder_for_format(heif_compression_HEVC) != 0;
}

QByteArray heic(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    double quality) {
    const Context context(heif_context_alloc());
    const Picture picture = pictureOf(image);
    heif_encoder* found = nullptr;
    if (!context || !picture ||
        !isGood(heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &found)))
        return {};
    const Encoder encoder(found);
    if (!profile.isEmpty() &&
        !isGood(heif_image_set_raw_color_profile(
            picture.get(), "prof", profile.constData(), static_cast<std::size_t>(profile.size()))))
        return {};
    heif_encoder_set_lossy_quality(found, static_cast<int>(std::lround(quality * 100)));
    heif_image_handle* encoded = nullptr;
    if (!isGood(heif_context_encode_image(context.get(), picture.get(), found, nullptr, &encoded)))
        return {};
    const Handle handle(encoded);
    if (!addMetadata(context.get(), handle.get(), metadata)) return {};
    QByteArray bytes;
    heif_writer writer{1, take};
    return isGood(heif_context_write(context.get(), &writer, &bytes)) ? bytes : QByteArray();
}

} // namespace codec::encoders
