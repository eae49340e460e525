#include "formatpictures/FormatPictures.h"

#include "formatpictures/Encoders.h"

#include <functional>
#include <map>
#include <string>

#include <gif_lib.h>
#include <tiff.h>

namespace formatpictures {

namespace {

QImage filled(QSize size, QRgb colour) {
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

using Makers = std::map<std::string, std::function<QByteArray()>, std::less<>>;

void addPlain(Makers& all) {
    all["gradient.ico"] = [] { return icon({{picture(), 32}}); };
    all["png.ico"] = [] { return icon({{picture(), 0}}); };
    all["sizes.ico"] = [] {
        return icon(
            {{filled({16, 16}, qRgb(255, 0, 0)), 8},
             {filled({48, 48}, qRgba(0, 200, 0, 100)), 32},
             {filled({64, 64}, qRgba(255, 255, 0, 50)), 0}});
    };
    all["plain.tga"] = [] { return tga(picture(), 24, false, false); };
    all["top.tga"] = [] { return tga(picture(), 24, false, true); };
    all["runs32.tga"] = [] { return tga(picture(), 32, true, false); };
    all["runs-from-right.tga"] = [] { return tga(picture(), 24, true, true, true); };
    all["layers.psd"] = [] {
        return psd(filled({8, 4}, qRgba(227, 127, 177, 128)), PsdMode::Rgb, 8, true);
    };
    struct PsdShape {
        const char* name;
        PsdMode mode;
        int depth;
        bool hasRuns;
    };
    for (const PsdShape& shape : std::initializer_list<PsdShape>{
             {"gray-runs.psd", PsdMode::Gray, 8, true},
             {"gray16.psd", PsdMode::Gray, 16, false},
             {"rgb.psd", PsdMode::Rgb, 8, false},
             {"rgb16-runs.psd", PsdMode::Rgb, 16, true},
             {"cmyk-runs.psd", PsdMode::Cmyk, 8, true},
             {"cmyk16.psd", PsdMode::Cmyk, 16, false},
             {"lab.psd", PsdMode::Lab, 8, false},
             {"lab16-runs.psd", PsdMode::Lab, 16, true}})
        all[shape.name] = [shape] {
            return psd(picture(), shape.mode, shape.depth, shape.hasRuns);
        };
    all["sensor.dng"] = dng;
}

void addPngAndTiff(Makers& all) {
    for (const bool isInterlaced : {false, true}) {
        const std::string end = isInterlaced ? "-interlaced.png" : ".png";
        for (const int bits : {8, 16})
            all["swapped" + std::to_string(bits) + end] = [=] {
                return png(picture(), bits, isInterlaced, swappedProfile());
            };
        all["deep" + end] = [=] { return png(picture(), 16, isInterlaced); };
    }
    all["interlaced.png"] = [] { return png(picture(), 8, true); };
    all["large-interlaced.png"] = [] { return png(gradient({1600, 960}), 8, true); };
    all["odd16.png"] = [] { return png(gradient({701, 403}), 16, false); };
    for (const auto& [name, shape] : std::initializer_list<std::pair<const char*, TiffShape>>{
             {"big.tif", {.isBig = true}},
             {"planar.tif", {.isPlanar = true}},
             {"tiles-planar16.tif", {.isTiled = true, .isPlanar = true, .bits = 16}},
             {"tiles-cmyk-deflate.tif",
              {.isTiled = true, .compression = COMPRESSION_ADOBE_DEFLATE, .isCmyk = true}},
             {"cmyk16-lzw.tif", {.bits = 16, .compression = COMPRESSION_LZW, .isCmyk = true}},
             {"tiles-lab.tif", {.isTiled = true, .isLab = true}},
             {"lab16.tif", {.bits = 16, .isLab = true}}})
        all[name] = [shape = shape] { return tiff(picture(), shape); };
}

void addLossyAndAnimated(Makers& all) {
    const QImage glass = filled({40, 30}, qRgba(200, 100, 50, 128));
    all["gradient.jp2"] = [] { return jpeg2000(picture(), false); };
    all["gradient.j2k"] = [] { return jpeg2000(picture(), true); };
    all["gradient.jxl"] = [] { return jpegXl(picture(), 8, true); };
    all["deep.jxl"] = [] { return jpegXl(picture(), 16, true); };
    all["lossy.jxl"] = [] { return jpegXl(picture(), 8, false); };
    all["glass.jxl"] = [=] { return jpegXl(glass, 8, true); };
    all["deep-glass.jxl"] = [=] { return jpegXl(glass, 16, true); };
    all["gradient.heic"] = [] { return heif(picture(), false); };
    // The library's own AV1 encoder gives up on deep RGB.
    all["deep.heic"] = [] { return heif(picture(), false, 10); };
    all["gradient.avif"] = [] { return heif(picture(), true); };
    all["cmyk.jpg"] = [] { return cmykJpeg(picture(), false); };
    all["cmyk-inverted.jpg"] = [] { return cmykJpeg(picture(), true); };
    all["frames.gif"] = [] { return gif(DISPOSE_BACKGROUND, false); };
    all["interlaced.gif"] = [] { return gif(DISPOSE_BACKGROUND, true); };
    all["frames.png"] = [] { return animatedPng(DISPOSE_PREVIOUS, false); };
    all["frames.webp"] = animatedWebp;
    all["frames.avif"] = [] {
        return avifFrames({40, 30}, {{0xFFFF0000U, 50}, {0x800000FFU, 120}});
    };
    all["frames.jxl"] = [] {
        return jpegXlFrames(
            {{filled({40, 30}, qRgba(255, 0, 0, 255)), 50},
             {filled({40, 30}, qRgba(0, 0, 255, 128)), 120}},
            8, true);
    };
}

const Makers& makers() {
    static const Makers all = [] {
        Makers made;
        addPlain(made);
        addPngAndTiff(made);
        addLossyAndAnimated(made);
        return made;
    }();
    return all;
}

} // namespace

QImage gradient(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x * 255 / size.width(), y * 255 / size.height(), 60));
    return image;
}

QImage picture() {
    QImage image = gradient({160, 96});
    for (int y = 0; y < image.height() / 2; ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, image.pixel(x / 3 * 3, y));
    return image;
}

QStringList names() {
    QStringList all;
    for (const auto& [name, maker] : makers())
        all.append(QString::fromStdString(name));
    return all;
}

QByteArray file(std::string_view name) {
    const auto found = makers().find(name);
    return found == makers().end() ? QByteArray() : found->second();
}

} // namespace formatpictures
