#include "codec/MadePictures.h"

#include "codec/Bitmaps.h"
#include "codec/metadata/Pictures.h"
#include "support/Images.h"

namespace made {

std::vector<Picture> gradients() {
    const QImage image = formatpictures::picture();
    // Files by how far their colours may be off.
    const std::pair<int, const char*> files[] = {
        {3, "png.ico gradient.ico plain.tga top.tga runs32.tga runs-from-right.tga rgb.psd "
            "rgb16-runs.psd cmyk-runs.psd cmyk16.psd gradient.jp2 gradient.j2k gradient.jxl "
            "deep.jxl big.tif tiles-planar16.tif planar.tif tiles-cmyk-deflate.tif cmyk16-lzw.tif "
            "deep.png interlaced.png deep-interlaced.png gray-runs.psd gray16.psd"},
        {12, "cmyk.jpg cmyk-inverted.jpg"},
        {16, "lossy.jxl gradient.heic deep.heic gradient.avif"},
        // Small differences of Lab are large ones of the darkest colours.
        {18, "lab.psd lab16-runs.psd tiles-lab.tif lab16.tif"}};
    std::vector<Picture> all;
    for (const auto& [tolerance, names] : files) {
        for (const QString& file : support::words(names)) {
            const std::string name = file.toStdString();
            const QString hint = file.endsWith(u".tga") ? u"com.truevision.tga-image"_s : QString();
            all.push_back(
                {name, formatpictures::file(name), hint, tolerance, file.startsWith(u"gray")});
        }
    }
    all.push_back({"jpeg", PBUtilities::cgImageRefToJpegData(image), {}, 16});
    all.push_back({"png", PBUtilities::cgImageRefToPngData(image)});
    all.push_back({"webp", pictures::saved(image, "WEBP"), {}, 20});
    for (const char* format : {"BMP", "PPM", "TIFF"})
        all.push_back({format, pictures::saved(image, format)});
    return all;
}

std::vector<Picture> samples() {
    std::vector<Picture> all = gradients();
    const auto writeAll = [](Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
        exif["Exif.Image.Make"] = "Canon";
        exif["Exif.Photo.UserComment"] = "charset=Unicode hello";
        exif["Exif.CanonCs.LensType"] = uint16_t(26);
        exif["Exif.GPSInfo.GPSLatitude"] = "52/1 30/1 36/1";
        exif["Exif.GPSInfo.GPSTimeStamp"] = "9/1 5/1 7/1";
        iptc["Iptc.Application2.DateCreated"] = "2010-07-01";
        xmp["Xmp.dc.description"] = "lang=x-default La mer";
    };
    const QImage glass =
        support::filled({40, 30}, QColor(200, 100, 50, 128), QImage::Format_ARGB32);
    for (const char* format : {"JPEG", "PNG", "TIFF", "WEBP"})
        all.push_back({format, pictures::withMetadata(pictures::saved(glass, format), writeAll)});
    const QImage indexed = formatpictures::picture().convertToFormat(QImage::Format_Indexed8);
    for (const char* format : {"BMP", "PNG", "TIFF"})
        all.push_back({format, pictures::saved(indexed, format)});
    for (const char* name :
         {"frames.gif", "interlaced.gif", "frames.png", "frames.webp", "glass.jxl",
          "deep-glass.jxl", "layers.psd", "sizes.ico", "swapped16-interlaced.png"})
        all.push_back({name, formatpictures::file(name)});
    all.push_back({"text", "P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 12\n"});
    all.push_back({"bits", "P4 8 2 \x55\xAA"});
    all.push_back({"dng", formatpictures::file("sensor.dng"), u"com.adobe.raw-image"_s});
    all.push_back({"big tiff", pictures::tiff(true, 256) + QByteArray(1200, '\x55')});
    all.push_back({"turned heif", pictures::heif({pictures::box("irot", QByteArray(1, 1))})});
    return all;
}

int fuzzerHint(const Picture& picture) {
    if (picture.typeHint.isEmpty()) return 0;
    return picture.typeHint == u"com.truevision.tga-image" ? 2 : 3;
}

void forDamagedSamples(int (*fuzzer)(const std::uint8_t* data, std::size_t size)) {
    unsigned seed = 0;
    for (const Picture& picture : samples()) {
        SCOPED_TRACE(picture.name);
        std::mt19937 random(++seed);
        for (int round = 0; round < 30; ++round) {
            const int reducedOrNext = round % 2 * 8 + (round % 7 == 0 ? 32 : 0);
            const int deepOrPlayed = (round % 5 == 0 ? 4 : 0) + (round % 3 == 0 ? 16 : 0);
            const QByteArray bytes =
                support::mutated(picture.bytes, random) +
                static_cast<char>(fuzzerHint(picture) | reducedOrNext | deepOrPlayed);
            const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
            EXPECT_EQ(fuzzer(data, static_cast<std::size_t>(bytes.size())), 0);
        }
    }
}

} // namespace made
