#include "codec/encoding/Encoders.h"
#include "codec/encoding/PackedPixels.h"

#include <jxl/encode.h>
#include <jxl/encode_cxx.h>
#include <jxl/thread_parallel_runner.h>
#include <jxl/thread_parallel_runner_cxx.h>

#include <algorithm>
#include <cstddef>

namespace codec::encoders {

namespace {

const std::uint8_t* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.constData());
}

bool addBox(JxlEncoder* encoder, const char* type, const QByteArray& content) {
    return JxlEncoderAddBox(
               encoder, type, bytesOf(content), static_cast<std::size_t>(content.size()),
               JXL_FALSE) == JXL_ENC_SUCCESS;
}

bool addMetadata(JxlEncoder* encoder, const MetadataBlocks& metadata) {
    if (metadata.exif.isEmpty() && metadata.xmp.isEmpty()) return true;
    if (JxlEncoderUseBoxes(encoder) != JXL_ENC_SUCCESS) return false;
    // Exif stands behind the offset of its beginning.
    if (!metadata.exif.isEmpty() && !addBox(encoder, "Exif", QByteArray(4, '\0') + metadata.exif))
        return false;
    return metadata.xmp.isEmpty() || addBox(encoder, "xml ", metadata.xmp);
}

bool setColours(JxlEncoder* encoder, const QByteArray& profile) {
    if (!profile.isEmpty()) {
        return JxlEncoderSetICCProfile(
                   encoder, bytesOf(profile), static_cast<std::size_t>(profile.size())) ==
               JXL_ENC_SUCCESS;
    }
    JxlColorEncoding srgb;
    JxlColorEncodingSetToSRGB(&srgb, JXL_FALSE);
    return JxlEncoderSetColorEncoding(encoder, &srgb) == JXL_ENC_SUCCESS;
}

/// Three samples a pixel where the fourth says nothing: the library reads pixels without gaps.
/// The lines become longer than there are pixels for.
QImage withoutPadding(QImage image) {
    if (image.hasAlphaChannel()) return image;
    for (int y = 0; y < image.height(); ++y) {
        auto* line = reinterpret_cast<std::uint16_t*>(image.scanLine(y));
        for (int x = 1; x < image.width(); ++x)
            std::copy_n(line + std::ptrdiff_t{x} * 4, 3, line + std::ptrdiff_t{x} * 3);
    }
    return image;
}

/// Samples of a byte, in the library's order.
QImage packed(const QImage& image) {
    const bool hasAlpha = image.hasAlphaChannel();
    QImage pixels(image.size(), hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    for (int y = 0; y < pixels.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        packLine(line, image.width(), hasAlpha, pixels.scanLine(y));
    }
    return pixels;
}

/// What the encoder has ready; empty where it failed.
QByteArray output(JxlEncoder* encoder) {
    constexpr qsizetype piece = 1 << 16;
    QByteArray bytes;
    for (;;) {
        const qsizetype had = bytes.size();
        bytes.resize(had + piece);
        auto* next = reinterpret_cast<std::uint8_t*>(bytes.data() + had);
        std::size_t left = piece;
        const JxlEncoderStatus status = JxlEncoderProcessOutput(encoder, &next, &left);
        bytes.resize(had + piece - static_cast<qsizetype>(left));
        if (status == JXL_ENC_SUCCESS) return bytes;
        if (status != JXL_ENC_NEED_MORE_OUTPUT) return {};
    }
}

} // namespace

QByteArray jpegXl(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality,
    int threads) {
    const auto runner = JxlThreadParallelRunnerMake(nullptr, static_cast<std::size_t>(threads));
    const JxlEncoderPtr encoder = JxlEncoderMake(nullptr);
    if (!encoder || !runner ||
        JxlEncoderSetParallelRunner(encoder.get(), JxlThreadParallelRunner, runner.get()) !=
            JXL_ENC_SUCCESS)
        return {};
    const bool hasAlpha = image.hasAlphaChannel();
    const bool isDeep = image.depth() == 64;
    const std::uint32_t bits = isDeep ? 16 : 8;
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = static_cast<std::uint32_t>(image.width());
    info.ysize = static_cast<std::uint32_t>(image.height());
    info.bits_per_sample = bits;
    info.num_color_channels = 3;
    info.num_extra_channels = hasAlpha ? 1 : 0;
    info.alpha_bits = hasAlpha ? bits : 0;
    info.uses_original_profile = JXL_FALSE;
    if (!addMetadata(encoder.get(), metadata) ||
        JxlEncoderSetBasicInfo(encoder.get(), &info) != JXL_ENC_SUCCESS ||
        !setColours(encoder.get(), profile))
        return {};
    JxlEncoderFrameSettings* frame = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    // Distance in just noticeable differences: 0.1 at quality 1, which is as much as 8 bits show,
    // 1 at 0.9, as the library's own scale has it, and so on down.
    const double distance = quality >= 0.9 ? 0.1 + 9 * (1 - quality) : 1 + 10 * (0.9 - quality);
    JxlEncoderSetFrameDistance(frame, static_cast<float>(distance));
    const QImage pixels = isDeep ? withoutPadding(image) : packed(image);
    if (pixels.isNull()) return {};
    // Lines begin where those of the image do.
    const JxlPixelFormat format{
        hasAlpha ? 4U : 3U, isDeep ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN,
        static_cast<std::size_t>(pixels.bytesPerLine())};
    if (JxlEncoderAddImageFrame(
            frame, &format, pixels.constBits(), static_cast<std::size_t>(pixels.sizeInBytes())) !=
        JXL_ENC_SUCCESS)
        return {};
    JxlEncoderCloseInput(encoder.get());
    return output(encoder.get());
}

} // namespace codec::encoders
