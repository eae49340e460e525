#include "codec/MadePictures.h"

#include "codec/Bitmaps.h"
#include "codec/metadata/Pictures.h"

namespace made {

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

QByteArray file(const char* name) {
    const QString path = QString::fromLatin1(MADE_PICTURES) + QString::fromLatin1(name);
    const QByteArray bytes = support::readFile(path);
    return path.endsWith(u".z") ? qUncompress(bytes) : bytes;
}

QByteArray gif(int disposal, bool isInterlaced) {
    QByteArray bytes = file(isInterlaced ? "interlaced.gif" : "frames.gif");
    const qsizetype second = bytes.indexOf("!\xF9\4", bytes.indexOf("!\xF9\4") + 1);
    bytes[second + 3] = static_cast<char>(disposal << 2 | 1);
    return bytes;
}

std::vector<Picture> gradients() {
    const QImage image = picture();
    std::vector<Picture> all{
        {"gray-runs.psd.z", {}, {}, 3, true},
        {"gray16.psd.z", {}, {}, 3, true},
        // Small differences of Lab are large ones of the darkest colours.
        {"lab.psd.z", {}, {}, 18},
        {"lab16-runs.psd.z", {}, {}, 18},
        {"tiles-lab.tif.z", {}, {}, 18},
        {"lab16.tif.z", {}, {}, 18},
        {"lossy.jxl", {}, {}, 16},
        {"cmyk.jpg.z", {}, {}, 12},
        {"cmyk-inverted.jpg.z", {}, {}, 12},
        {"gradient.heic", {}, {}, 16},
        {"deep.heic", {}, {}, 16},
        {"gradient.avif", {}, {}, 16}};
    for (const char* name : {"png.ico",          "gradient.ico.z",
                             "plain.tga.z",      "top.tga.z",
                             "runs32.tga.z",     "runs-from-right.tga.z",
                             "rgb.psd.z",        "rgb16-runs.psd.z",
                             "cmyk-runs.psd.z",  "cmyk16.psd.z",
                             "gradient.jp2",     "gradient.j2k",
                             "gradient.jxl",     "deep.jxl",
                             "big.tif.z",        "tiles-planar16.tif.z",
                             "planar.tif.z",     "tiles-cmyk-deflate.tif.z",
                             "cmyk16-lzw.tif.z", "deep.png",
                             "interlaced.png",   "deep-interlaced.png"})
        all.push_back({name, {}});
    for (Picture& one : all) {
        one.bytes = file(one.name);
        if (std::string_view(one.name).ends_with(".tga.z"))
            one.typeHint = u"com.truevision.tga-image"_s;
    }
    all.push_back({"jpeg", PBUtilities::cgImageRefToJpegData(image), {}, 16});
    all.push_back({"png", PBUtilities::cgImageRefToPngData(image)});
    all.push_back({"webp", pictures::saved(image, "WEBP"), {}, 20});
    for (const char* format : {"BMP", "PPM", "TIFF"})
        all.push_back({format, pictures::saved(image, format)});
    return all;
}

} // namespace made
