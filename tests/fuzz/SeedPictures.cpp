// fuzz_seeds FOLDER: writes small pictures for the fuzzers to begin with, one for each kind of file
// that a library at hand can write or that is quickly made by hand.

#include "image/codec/Bitmaps.h"
#include "image/codec/metadata/Pictures.h"
#include "support/JpegWriter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImageWriter>

#include <cstdio>
#include <map>

namespace {

using pictures::ByteWriter;

QImage gradient(QImage::Format format) {
    QImage image(48, 32, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgba(x * 5, y * 7, 60, 255 - x));
    }
    return image.convertToFormat(format);
}

/// Empty where there is no writer for the format.
QByteArray written(const char* format, QImage::Format pixels, int compression = -1) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (compression >= 0) writer.setCompression(compression);
    writer.setProgressiveScanWrite(compression == 1);
    return writer.write(gradient(pixels)) ? bytes : QByteArray();
}

QByteArray cmykJpeg() {
    const QImage image = gradient(QImage::Format_ARGB32);
    return support::writeJpeg(
        {image.size(), JCS_CMYK}, [&](int y) { return image.constScanLine(y); });
}

/// Two frames of 4 x 4 with two colours; the second one with a delay and a transparent colour.
QByteArray gif() {
    ByteWriter file(true);
    file.text("GIF89a").u16(4).u16(4).u8(0x80).u8(0).u8(0).u32(0x00FFFFFF).u16(0);
    for (const unsigned delay : {0U, 12U}) {
        file.u8(0x21).u8(0xF9).u8(4).u8(delay == 0 ? 4 : 9).u16(delay).u8(1).u8(0);
        file.u8(0x2C).u16(0).u16(0).u16(4).u16(4).u8(0);
        file.u8(2).u8(3).u8(0x84).u8(0x8F).u8(0x05).u8(0);
    }
    return file.u8(0x3B).bytes();
}

/// 4 x 4 pixels in runs.
QByteArray tga() {
    ByteWriter file(true);
    file.u8(0).u8(0).u8(10).u32(0).u8(0).u32(0).u16(4).u16(4).u8(32).u8(0x28);
    for (int run = 0; run < 2; ++run)
        file.u8(0x87).u32(0x80402010);
    return file.bytes();
}

/// 4 x 2 pixels of three channels, packed or plain.
QByteArray photoshop(bool isPacked) {
    ByteWriter file(false);
    file.text("8BPS").u16(1).u32(0).u16(0).u16(3).u32(2).u32(4).u16(8).u16(3);
    file.u32(0).u32(0).u32(0).u16(isPacked ? 1 : 0);
    for (int row = 0; row < 6 && isPacked; ++row)
        file.u16(2);
    for (int row = 0; row < 6; ++row)
        isPacked ? file.u8(0xFD).u8(90) : file.u32(0x10203040);
    return file.bytes();
}

std::map<QString, QByteArray> seeds() {
    using enum QImage::Format;
    return {
        {QStringLiteral("rgb.jpg"), written("jpeg", Format_RGB32)},
        {QStringLiteral("scans.jpg"), written("jpeg", Format_RGB32, 1)},
        {QStringLiteral("gray.jpg"), written("jpeg", Format_Grayscale8)},
        {QStringLiteral("cmyk.jpg"), cmykJpeg()},
        {QStringLiteral("rgba.png"), written("png", Format_ARGB32)},
        {QStringLiteral("deep.png"), written("png", Format_RGBA64)},
        {QStringLiteral("indexed.png"), written("png", Format_Indexed8)},
        {QStringLiteral("mono.png"), written("png", Format_Mono)},
        {QStringLiteral("rgb.bmp"), written("bmp", Format_RGB32)},
        {QStringLiteral("indexed.bmp"), written("bmp", Format_Indexed8)},
        {QStringLiteral("mono.bmp"), written("bmp", Format_Mono)},
        {QStringLiteral("rgb.ppm"), written("ppm", Format_RGB32)},
        {QStringLiteral("gray.pgm"), written("pgm", Format_Grayscale8)},
        {QStringLiteral("mono.pbm"), written("pbm", Format_Mono)},
        {QStringLiteral("text.ppm"), "P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 12\n"},
        {QStringLiteral("rgba.webp"), written("webp", Format_ARGB32)},
        {QStringLiteral("rgba.tif"), written("tiff", Format_ARGB32, 0)},
        {QStringLiteral("packed.tif"), written("tiff", Format_RGB32, 1)},
        {QStringLiteral("deep.tif"), written("tiff", Format_RGBA64, 1)},
        {QStringLiteral("big.tif"), pictures::tiff(true, 256) + QByteArray(1200, '\x55')},
        {QStringLiteral("rgba.ico"), written("ico", Format_ARGB32)},
        {QStringLiteral("two.gif"), gif()},
        {QStringLiteral("runs.tga"), tga()},
        {QStringLiteral("plain.psd"), photoshop(false)},
        {QStringLiteral("packed.psd"), photoshop(true)},
        {QStringLiteral("sensor.dng"), pictures::dng()},
        {QStringLiteral("empty.heic"), pictures::heif({})},
        {QStringLiteral("rgba.jp2"), written("jp2", Format_ARGB32)},
        {QStringLiteral("start.jxl"), QByteArray::fromHex("0000000c4a584c200d0a870aff0a")},
    };
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    const QDir folder(QFile::decodeName(argv[1]));
    if (!folder.mkpath(QStringLiteral("."))) return 1;
    for (const auto& [name, bytes] : seeds()) {
        if (bytes.isEmpty()) continue;
        // What the fuzzer of pixels asks for stands in the last byte: in full or reduced, and the
        // type that the name says where the content alone does not decide.
        const char hint = name.endsWith(u".tga") ? 2 : name.endsWith(u".dng") ? 3 : 0;
        for (const auto& [prefix, size] : {std::pair{u"full-", 0}, {u"small-", 8}}) {
            const auto wish = static_cast<char>(hint | size);
            QFile file(folder.filePath(QString::fromUtf16(prefix) + name));
            if (!file.open(QIODevice::WriteOnly) || file.write(bytes + wish) <= bytes.size()) {
                return 1;
            }
        }
    }
    return 0;
}
