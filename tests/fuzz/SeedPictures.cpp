// fuzz_seeds FOLDER: writes small pictures for the fuzzers to begin with, one for each kind of file
// that a library at hand can write or that is quickly made by hand.

#include "codec/MadePictures.h"
#include "codec/metadata/Pictures.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

std::map<QString, QByteArray> seeds() {
    std::map<QString, QByteArray> all{
        {u"text.ppm"_s, "P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 12\n"},
        {u"bits.pbm"_s, "P4 8 2 \x55\xAA"},
        {u"big.tif"_s, pictures::tiff(true, 256) + QByteArray(1200, '\x55')},
        {u"sensor.dng"_s, formatpictures::file("sensor.dng")},
        {u"empty.heic"_s, pictures::heif({})}};
    const QImage image = formatpictures::picture().convertToFormat(QImage::Format_Indexed8);
    for (const char* format : {"BMP", "PNG", "TIFF"})
        all.emplace(u"indexed."_s + QString::fromLatin1(format), pictures::saved(image, format));
    for (const char* name :
         {"frames.gif", "interlaced.gif", "frames.webp", "glass.jxl", "layers.psd", "sizes.ico"})
        all.emplace(QString::fromLatin1(name), formatpictures::file(name));
    for (const made::Picture& picture : made::gradients())
        all.emplace(QString::fromLatin1(picture.name), picture.bytes);
    return all;
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
        // What the fuzzer of pixels asks for stands in the last byte: in full or reduced, and the
        // type that the name says where the content alone does not decide.
        const char hint = name.contains(u".tga") ? 2 : name.endsWith(u".dng") ? 3 : 0;
        for (const auto& [prefix, size] : {std::pair{u"full-", 0}, {u"small-", 8}}) {
            const auto wish = static_cast<char>(hint | size);
            QFile file(folder.filePath(QString::fromUtf16(prefix) + name));
            if (!file.open(QIODevice::WriteOnly) || file.write(bytes + wish) <= bytes.size())
                return 1;
        }
    }
    return 0;
}
