#include "codec/Bitmaps.h"

#include "codec/formats/Codecs.h"
#include "codec/pixels/Colour.h"
#include "codec/pixels/ReducedImage.h"

#include <QBuffer>
#include <QPainter>

#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace PBUtilities {

namespace {

constexpr int jpegQuality = 50;

struct Encoder {
    jpeg_compress_struct info{};
    jpeg_error_mgr error{};
    std::jmp_buf jump{};
    unsigned char* bytes = nullptr;
    unsigned long length = 0;

    Encoder() = default;
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;
    ~Encoder() {
        jpeg_destroy_compress(&info);
        std::free(bytes);
    }
};

bool encode(Encoder& encoder, const QImage& image) {
    jpeg_compress_struct& info = encoder.info;
    info.err = jpeg_std_error(&encoder.error);
    info.client_data = &encoder;
    encoder.error.error_exit = [](j_common_ptr common) {
        std::longjmp(static_cast<Encoder*>(common->client_data)->jump, 1);
    };
    encoder.error.output_message = [](j_common_ptr) {};
    if (setjmp(encoder.jump) != 0) return false;
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &encoder.bytes, &encoder.length);
    info.image_width = static_cast<JDIMENSION>(image.width());
    info.image_height = static_cast<JDIMENSION>(image.height());
    info.input_components = 4;
    info.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, jpegQuality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row = const_cast<JSAMPROW>(image.constScanLine(static_cast<int>(info.next_scanline)));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    return true;
}

/// On white where it is transparent.
QImage opaqueBitmap(const QImage& image) {
    const QImage standard = standardBitmap(image);
    if (standard.format() == QImage::Format_RGB32) return standard;
    QImage opaque(standard.size(), QImage::Format_RGB32);
    for (int y = 0; y < standard.height() && !opaque.isNull(); ++y) {
        const auto* source = reinterpret_cast<const QRgb*>(standard.constScanLine(y));
        auto* target = reinterpret_cast<QRgb*>(opaque.scanLine(y));
        for (int x = 0; x < standard.width(); ++x) {
            const int white = 255 - qAlpha(source[x]);
            target[x] =
                qRgb(qRed(source[x]) + white, qGreen(source[x]) + white, qBlue(source[x]) + white);
        }
    }
    return opaque;
}

QImage quarterTurned(const QImage& image, int turns) {
    // A quarter turn counter-clockwise is 270 degrees of the library's clockwise ones.
    return image.transformed(QTransform().rotate(-90.0 * turns));
}

} // namespace

QImage standardBitmap(QImage image) {
    if (image.isNull() || image.format() == QImage::Format_RGB32 ||
        image.format() == QImage::Format_ARGB32_Premultiplied) {
        return image;
    }
    const auto format =
        image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    return std::move(image).convertToFormat(format);
}

QByteArray cgImageRefToJpegData(const QImage& image) {
    const QImage opaque = opaqueBitmap(image);
    if (opaque.isNull()) return {};
    Encoder encoder;
    if (!encode(encoder, opaque)) return {};
    return {reinterpret_cast<const char*>(encoder.bytes), static_cast<qsizetype>(encoder.length)};
}

QByteArray cgImageRefToPngData(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        return {};
    return bytes;
}

QImage dataToCGImageRef(const QByteArray& data) {
    if (data.isEmpty()) return {};
    return codec::decode(codec::Source::fromBytes(data), {}, {}).image;
}

QImage scaleCGImageRef(const QImage& image, double size) {
    if (image.isNull()) return {};
    QRectF rect(0, 0, size, size);
    fitInRect(rect, image.width(), image.height(), false);
    const auto whole = [](double side) { return std::max(1, static_cast<int>(std::rint(side))); };
    return codec::reduceImage(
        standardBitmap(image), QSize(whole(rect.width()), whole(rect.height())));
}

QImage preloadedImageRef(QImage image, const QColorSpace& colorSpace) {
    image = standardBitmap(std::move(image));
    if (!image.isNull() && colorSpace.isValid())
        codec::convertColours(image, {}, colorSpace.iccProfile());
    return image;
}

QImage rotateImageRef(const QImage& image, double angle) {
    const double positive = positiveAngle(angle);
    if (positive == 0 || image.isNull()) return image;
    if (positive == 90 || positive == 180 || positive == 270) {
        return quarterTurned(image, static_cast<int>(positive / 90));
    }
    const QImage source = standardBitmap(image);
    QImage turned(source.size(), QImage::Format_ARGB32_Premultiplied);
    if (turned.isNull()) return {};
    turned.fill(Qt::transparent);
    QPainter painter(&turned);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // The origin is the lower left corner, and angles run counter-clockwise from there.
    painter.translate(0, source.height());
    painter.rotate(-positive);
    painter.drawImage(QPointF(0, -source.height()), source);
    return turned;
}

} // namespace PBUtilities
