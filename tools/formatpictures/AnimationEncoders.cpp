#include "formatpictures/ByteWriter.h"
#include "formatpictures/Encoders.h"

#include <QBuffer>
#include <QRect>
#include <QtEndian>

#include <algorithm>
#include <array>

#include <avif/avif.h>
#include <gif_lib.h>
#include <webp/encode.h>
#include <webp/mux.h>
#include <zlib.h>

namespace formatpictures {

namespace {

void appendTo(void* bytes, const void* data, std::size_t length) {
    static_cast<QByteArray*>(bytes)->append(
        static_cast<const char*>(data), static_cast<qsizetype>(length));
}

struct GifPart {
    QRect area;
    int colour;
    int delay; // hundredths of a second
    int disposal;
};

void putGifPart(GifFileType* file, const GifPart& part, bool isInterlaced) {
    GraphicsControlBlock control{};
    control.DisposalMode = part.disposal;
    control.DelayTime = part.delay;
    control.TransparentColor = 3;
    std::array<GifByteType, 4> extension{};
    EGifGCBToExtension(&control, extension.data());
    EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension.data());
    const int width = part.area.width();
    const int height = part.area.height();
    EGifPutImageDesc(file, part.area.left(), part.area.top(), width, height, isInterlaced, nullptr);
    const auto putRow = [&](int y) {
        // Only the small parts have a transparent row, their first.
        const int index = y == 0 && height < 20 ? 3 : part.colour;
        std::vector<GifPixelType> row(
            static_cast<std::size_t>(width), static_cast<GifPixelType>(index));
        EGifPutLine(file, row.data(), width);
    };
    static constexpr int starts[] = {0, 4, 2, 1};
    static constexpr int steps[] = {8, 8, 4, 2};
    for (int pass = 0; pass < (isInterlaced ? 4 : 1); ++pass)
        for (int y = isInterlaced ? starts[pass] : 0; y < height;
             y += isInterlaced ? steps[pass] : 1)
            putRow(y);
}

GifFileType* openGif(QByteArray& bytes) {
    return EGifOpen(
        &bytes,
        [](GifFileType* file, const GifByteType* data, int length) {
            appendTo(file->UserData, data, static_cast<std::size_t>(length));
            return length;
        },
        nullptr);
}

QByteArray pngChunk(const QByteArray& name, const QByteArray& data) {
    const QByteArray summed = name + data;
    const auto sum = ::crc32(
        0, reinterpret_cast<const Bytef*>(summed.constData()), static_cast<uInt>(summed.size()));
    ByteWriter chunk(false);
    chunk.u32(static_cast<quint64>(data.size())).text(summed).u32(sum);
    return chunk.bytes();
}

struct PngPart {
    QRect area;
    QRgb colour;
    unsigned delay; // milliseconds
    int disposal;   // as in GIF files
};

/// The data of its chunks of that name.
std::vector<QByteArray> chunksOf(const QByteArray& png, const char* name) {
    std::vector<QByteArray> found;
    for (qsizetype offset = 8; offset + 12 <= png.size();) {
        const auto length = qFromBigEndian<quint32>(png.constData() + offset);
        if (png.sliced(offset + 4, 4) == name) found.push_back(png.sliced(offset + 8, length));
        offset += 12 + qsizetype{length};
    }
    return found;
}

QByteArray pngOf(QSize size, QRgb colour) {
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    // Only the small parts have a transparent row, their first.
    for (int x = 0; x < size.width() && size.height() < 20; ++x)
        image.setPixel(x, 0, 0);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

QByteArray pngControl(const PngPart& part, unsigned number) {
    constexpr std::array<unsigned, 4> disposals{0, 0, 1, 2};
    ByteWriter control(false);
    control.u32(number);
    for (const int place : {part.area.width(), part.area.height(), part.area.x(), part.area.y()})
        control.u32(static_cast<quint64>(place));
    control.u16(part.delay).u16(1000);
    control.u8(disposals.at(static_cast<std::size_t>(part.disposal))).u8(1);
    return pngChunk("fcTL", control.bytes());
}

} // namespace

QByteArray animatedPng(int disposal, bool isBehindPicture) {
    const QByteArray picture = pngOf({40, 30}, 0xFF090909U);
    const PngPart parts[] = {
        {{0, 0, 40, 30}, 0xFFFF0000U, 50, DISPOSE_DO_NOT},
        {{5, 5, 10, 10}, 0xFF0000FFU, 120, disposal},
        {{25, 15, 10, 10}, 0xFF00FF00U, 10, DISPOSE_DO_NOT}};
    ByteWriter counts(false);
    counts.u32(std::size(parts)).u32(0);
    QByteArray file = picture.first(8) + pngChunk("IHDR", chunksOf(picture, "IHDR").front()) +
                      pngChunk("acTL", counts.bytes());
    if (isBehindPicture)
        for (const QByteArray& data : chunksOf(picture, "IDAT"))
            file += pngChunk("IDAT", data);
    unsigned number = 0;
    for (const PngPart& part : parts) {
        file += pngControl(part, number++);
        const bool isPicture = number == 1 && !isBehindPicture;
        for (const QByteArray& data : chunksOf(pngOf(part.area.size(), part.colour), "IDAT")) {
            ByteWriter numbered(false);
            if (!isPicture) numbered.u32(number++);
            file += pngChunk(isPicture ? "IDAT" : "fdAT", numbered.text(data).bytes());
        }
    }
    return file + pngChunk("IEND", {});
}

QByteArray gif(int disposal, bool isInterlaced) {
    QByteArray bytes;
    GifFileType* file = openGif(bytes);
    const std::array<GifColorType, 4> colours{{{255, 0, 0}, {0, 0, 255}, {0, 255, 0}, {9, 9, 9}}};
    ColorMapObject* map = GifMakeMapObject(4, colours.data());
    EGifSetGifVersion(file, true);
    EGifPutScreenDesc(file, 40, 30, 8, 0, map);
    putGifPart(file, {{0, 0, 40, 30}, 0, 5, DISPOSE_DO_NOT}, isInterlaced);
    putGifPart(file, {{5, 5, 10, 10}, 1, 12, disposal}, isInterlaced);
    putGifPart(file, {{25, 15, 10, 10}, 2, 1, DISPOSE_DO_NOT}, isInterlaced);
    EGifCloseFile(file, nullptr);
    GifFreeMapObject(map);
    return bytes;
}

QByteArray gifFilm(QSize size, int frames) {
    constexpr int side = 64;
    constexpr int colours = 64;
    std::array<GifColorType, colours> grays{};
    for (std::size_t index = 0; index < grays.size(); ++index) {
        const auto gray = static_cast<GifByteType>(index * 4);
        grays[index] = {gray, gray, gray};
    }
    QByteArray bytes;
    GifFileType* file = openGif(bytes);
    ColorMapObject* map = GifMakeMapObject(colours, grays.data());
    EGifSetGifVersion(file, true);
    EGifPutScreenDesc(file, size.width(), size.height(), 8, 0, map);
    std::uint32_t random = 1;
    for (int frame = 0; frame < frames; ++frame) {
        GraphicsControlBlock control{};
        control.DisposalMode = DISPOSE_DO_NOT;
        control.DelayTime = 4;
        control.TransparentColor = NO_TRANSPARENT_COLOR;
        std::array<GifByteType, 4> extension{};
        EGifGCBToExtension(&control, extension.data());
        EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension.data());
        const QSize part = frame == 0 ? size : QSize(side, side).boundedTo(size);
        const QSize room = size - part;
        const int left = room.width() > 0 ? frame * 7 % room.width() : 0;
        const int top = room.height() > 0 ? frame * 5 % room.height() : 0;
        EGifPutImageDesc(file, left, top, part.width(), part.height(), false, nullptr);
        std::vector<GifPixelType> row(static_cast<std::size_t>(part.width()));
        for (int y = 0; y < part.height(); ++y) {
            for (GifPixelType& pixel : row) {
                random = random * 1664525U + 1013904223U;
                pixel = static_cast<GifPixelType>(random >> 26);
            }
            EGifPutLine(file, row.data(), part.width());
        }
    }
    EGifCloseFile(file, nullptr);
    GifFreeMapObject(map);
    return bytes;
}

QByteArray avifFrames(QSize size, const std::vector<std::pair<QRgb, int>>& frames) {
    avifEncoder* encoder = avifEncoderCreate();
    encoder->speed = AVIF_SPEED_FASTEST;
    encoder->timescale = 1000;
    encoder->minQuantizer = encoder->maxQuantizer = AVIF_QUANTIZER_LOSSLESS;
    encoder->minQuantizerAlpha = encoder->maxQuantizerAlpha = AVIF_QUANTIZER_LOSSLESS;
    bool isGood = true;
    for (const auto& [colour, delay] : frames) {
        const auto width = static_cast<std::uint32_t>(size.width());
        const auto height = static_cast<std::uint32_t>(size.height());
        avifImage* image = avifImageCreate(width, height, 8, AVIF_PIXEL_FORMAT_YUV444);
        image->colorPrimaries = AVIF_COLOR_PRIMARIES_BT709;
        image->transferCharacteristics = AVIF_TRANSFER_CHARACTERISTICS_SRGB;
        image->matrixCoefficients = AVIF_MATRIX_COEFFICIENTS_IDENTITY;
        image->yuvRange = AVIF_RANGE_FULL;
        avifRGBImage rgb;
        avifRGBImageSetDefaults(&rgb, image);
        rgb.format = AVIF_RGB_FORMAT_BGRA;
        std::vector<QRgb> pixels(std::size_t{width} * height, colour);
        rgb.pixels = reinterpret_cast<std::uint8_t*>(pixels.data());
        rgb.rowBytes = width * 4;
        isGood = avifImageRGBToYUV(image, &rgb) == AVIF_RESULT_OK &&
                 avifEncoderAddImage(
                     encoder, image, static_cast<std::uint64_t>(delay), AVIF_ADD_IMAGE_FLAG_NONE) ==
                     AVIF_RESULT_OK &&
                 isGood;
        avifImageDestroy(image);
    }
    avifRWData output = AVIF_DATA_EMPTY;
    isGood = isGood && avifEncoderFinish(encoder, &output) == AVIF_RESULT_OK;
    QByteArray bytes;
    if (isGood) {
        bytes = QByteArray(
            reinterpret_cast<const char*>(output.data), static_cast<qsizetype>(output.size));
    }
    avifRWDataFree(&output);
    avifEncoderDestroy(encoder);
    return bytes;
}

QByteArray animatedWebp() {
    WebPAnimEncoderOptions options;
    WebPAnimEncoderOptionsInit(&options);
    WebPAnimEncoder* encoder = WebPAnimEncoderNew(40, 30, &options);
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = 1;
    int time = 0;
    for (const auto& [colour, delay] : {std::pair(0xFFFF0000U, 50), std::pair(0x800000FFU, 120)}) {
        WebPPicture picture;
        WebPPictureInit(&picture);
        picture.use_argb = 1;
        picture.width = 40;
        picture.height = 30;
        WebPPictureAlloc(&picture);
        std::fill_n(picture.argb, picture.argb_stride * 30, colour);
        WebPAnimEncoderAdd(encoder, &picture, time, &config);
        WebPPictureFree(&picture);
        time += delay;
    }
    WebPAnimEncoderAdd(encoder, nullptr, time, nullptr);
    WebPData data;
    WebPDataInit(&data);
    WebPAnimEncoderAssemble(encoder, &data);
    QByteArray bytes(reinterpret_cast<const char*>(data.bytes), static_cast<qsizetype>(data.size));
    WebPDataClear(&data);
    WebPAnimEncoderDelete(encoder);
    return bytes;
}

} // namespace formatpictures
