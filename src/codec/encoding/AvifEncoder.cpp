#include "codec/encoding/Encoders.h"

#include <QSysInfo>
#include <avif/avif.h>

#include <cmath>
#include <memory>

namespace codec::encoders {

namespace {

struct Destroyer {
    void operator()(avifImage* image) const { avifImageDestroy(image); }
    void operator()(avifEncoder* encoder) const { avifEncoderDestroy(encoder); }
};

const std::uint8_t* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.constData());
}

} // namespace

QByteArray avif(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata, double quality,
    int threads) {
    const bool isDeep = image.depth() == 64;
    const std::unique_ptr<avifImage, Destroyer> picture(avifImageCreate(
        static_cast<std::uint32_t>(image.width()), static_cast<std::uint32_t>(image.height()),
        isDeep ? 10 : 8, quality >= 0.9 ? AVIF_PIXEL_FORMAT_YUV444 : AVIF_PIXEL_FORMAT_YUV420));
    const std::unique_ptr<avifEncoder, Destroyer> encoder(avifEncoderCreate());
    if (!picture || !encoder) return {};
    if (profile.isEmpty()) {
        picture->colorPrimaries = AVIF_COLOR_PRIMARIES_BT709;
        picture->transferCharacteristics = AVIF_TRANSFER_CHARACTERISTICS_SRGB;
    } else {
        avifImageSetProfileICC(
            picture.get(), bytesOf(profile), static_cast<std::size_t>(profile.size()));
    }
    picture->matrixCoefficients = AVIF_MATRIX_COEFFICIENTS_BT601;
    if (!metadata.exif.isEmpty()) {
        avifImageSetMetadataExif(
            picture.get(), bytesOf(metadata.exif), static_cast<std::size_t>(metadata.exif.size()));
    }
    if (!metadata.xmp.isEmpty()) {
        avifImageSetMetadataXMP(
            picture.get(), bytesOf(metadata.xmp), static_cast<std::size_t>(metadata.xmp.size()));
    }
    avifRGBImage rgb;
    avifRGBImageSetDefaults(&rgb, picture.get());
    // The order of bytes within a number of 32 bits.
    constexpr bool isLittle = QSysInfo::ByteOrder == QSysInfo::LittleEndian;
    const avifRGBFormat shallow = isLittle ? AVIF_RGB_FORMAT_BGRA : AVIF_RGB_FORMAT_ARGB;
    rgb.format = isDeep ? AVIF_RGB_FORMAT_RGBA : shallow;
    rgb.ignoreAlpha = image.hasAlphaChannel() ? AVIF_FALSE : AVIF_TRUE;
    rgb.depth = isDeep ? 16 : 8;
    rgb.pixels = const_cast<std::uint8_t*>(image.constBits()); // only read
    rgb.rowBytes = static_cast<std::uint32_t>(image.bytesPerLine());
    if (avifImageRGBToYUV(picture.get(), &rgb) != AVIF_RESULT_OK) return {};
    constexpr int quick = 6; // of 10, as its makers advise for photographs
    encoder->speed = quick;
    encoder->maxThreads = threads;
    encoder->minQuantizer = 0;
    encoder->maxQuantizer =
        static_cast<int>(std::lround(AVIF_QUANTIZER_WORST_QUALITY * (1 - quality)));
    encoder->minQuantizerAlpha = AVIF_QUANTIZER_LOSSLESS;
    encoder->maxQuantizerAlpha = AVIF_QUANTIZER_LOSSLESS;
    avifRWData output = AVIF_DATA_EMPTY;
    QByteArray bytes;
    if (avifEncoderWrite(encoder.get(), picture.get(), &output) == AVIF_RESULT_OK)
        bytes = QByteArray(
            reinterpret_cast<const char*>(output.data), static_cast<qsizetype>(output.size));
    avifRWDataFree(&output);
    return bytes;
}

} // namespace codec::encoders
