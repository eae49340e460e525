// fuzz_seeds FOLDER: writes small pictures for the fuzzers to begin with, one for each kind of file
// that a library at hand can write or that is quickly made by hand.

#include "image/codec/Bitmaps.h"
#include "image/codec/MadePictures.h"
#include "image/codec/metadata/Pictures.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageWriter>

#include <cstdio>

namespace {

QImage gradient(QImage::Format format) {
    QImage image(48, 32, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgba(x * 5, y * 7, 60, 255 - x));
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

std::map<QString, QByteArray> seeds() {
    using enum QImage::Format;
    return {
        {u"rgb.jpg"_s, written("jpeg", Format_RGB32)},
        {u"scans.jpg"_s, written("jpeg", Format_RGB32, 1)},
        {u"gray.jpg"_s, written("jpeg", Format_Grayscale8)},
        {u"cmyk.jpg"_s, made::cmykJpeg(gradient(Format_RGB32), true)},
        {u"rgba.png"_s, written("png", Format_ARGB32)},
        {u"deep.png"_s, written("png", Format_RGBA64)},
        {u"indexed.png"_s, written("png", Format_Indexed8)},
        {u"mono.png"_s, written("png", Format_Mono)},
        {u"rgb.bmp"_s, written("bmp", Format_RGB32)},
        {u"indexed.bmp"_s, written("bmp", Format_Indexed8)},
        {u"mono.bmp"_s, written("bmp", Format_Mono)},
        {u"rgb.ppm"_s, written("ppm", Format_RGB32)},
        {u"gray.pgm"_s, written("pgm", Format_Grayscale8)},
        {u"mono.pbm"_s, written("pbm", Format_Mono)},
        {u"text.ppm"_s, "P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 12\n"},
        {u"rgba.webp"_s, written("webp", Format_ARGB32)},
        {u"rgba.tif"_s, written("tiff", Format_ARGB32, 0)},
        {u"packed.tif"_s, written("tiff", Format_RGB32, 1)},
        {u"deep.tif"_s, written("tiff", Format_RGBA64, 1)},
        {u"big.tif"_s, pictures::tiff(true, 256) + QByteArray(1200, '\x55')},
        {u"rgba.ico"_s, written("ico", Format_ARGB32)},
        {u"two.gif"_s, made::gif(2, false)},
        {u"runs.tga"_s, made::tga(gradient(Format_RGB32), 32, true, true)},
        {u"plain.psd"_s, made::psd(gradient(Format_RGB32), made::PsdMode::Rgb, 8, false)},
        {u"packed.psd"_s, made::psd(gradient(Format_RGB32), made::PsdMode::Rgb, 8, true)},
        {u"sensor.dng"_s, pictures::dng()},
        {u"empty.heic"_s, pictures::heif({})},
        {u"rgb.jp2"_s, made::jpeg2000(gradient(Format_RGB32), false)},
        {u"rgba.jxl"_s, made::jpegXl(gradient(Format_ARGB32), 8, true)},
        {u"rgb.heic"_s, made::heif(gradient(Format_RGB32), false)},
        {u"rgb.avif"_s, made::heif(gradient(Format_RGB32), true)},
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
    if (!folder.mkpath(u"."_s)) return 1;
    for (const auto& [name, bytes] : seeds()) {
        if (bytes.isEmpty()) continue;
        // What the fuzzer of pixels asks for stands in the last byte: in full or reduced, and the
        // type that the name says where the content alone does not decide.
        const char hint = name.endsWith(u".tga") ? 2 : name.endsWith(u".dng") ? 3 : 0;
        for (const auto& [prefix, size] : {std::pair{u"full-", 0}, {u"small-", 8}}) {
            const auto wish = static_cast<char>(hint | size);
            QFile file(folder.filePath(QString::fromUtf16(prefix) + name));
            if (!file.open(QIODevice::WriteOnly) || file.write(bytes + wish) <= bytes.size())
                return 1;
        }
    }
    return 0;
}
