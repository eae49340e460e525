#include "codec/MadePictures.h"
#include "codec/formats/Codecs.h"
#include "codec/metadata/Pictures.h"

namespace {

void writeAll(Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Photo.UserComment"] = "charset=Unicode hello";
    exif["Exif.CanonCs.LensType"] = uint16_t(26);
    exif["Exif.GPSInfo.GPSLatitude"] = "52/1 30/1 36/1";
    exif["Exif.GPSInfo.GPSTimeStamp"] = "9/1 5/1 7/1";
    iptc["Iptc.Application2.DateCreated"] = "2010-07-01";
    xmp["Xmp.dc.description"] = "lang=x-default La mer";
}

std::vector<made::Picture> samples() {
    std::vector<made::Picture> all = made::gradients();
    QImage glass(40, 30, QImage::Format_ARGB32);
    glass.fill(qRgba(200, 100, 50, 128));
    for (const char* format : {"JPEG", "PNG", "TIFF", "WEBP"})
        all.push_back({format, pictures::withMetadata(pictures::saved(glass, format), writeAll)});
    for (const char* name :
         {"frames.gif", "interlaced.gif", "frames.webp", "deep-glass.jxl", "sizes.ico",
          "swapped16-interlaced.png"})
        all.push_back({name, formatpictures::file(name)});
    all.push_back({"dng", formatpictures::file("sensor.dng"), u"com.adobe.raw-image"_s});
    all.push_back({"big tiff", pictures::tiff(true, 400)});
    all.push_back({"turned heif", pictures::heif({pictures::box("irot", QByteArray(1, 1))})});
    return all;
}

/// Every text is valid and every number is one: what the catalogue takes without a check.
void expectSound(const PBDictionary& dictionary) {
    for (const auto& [key, value] : dictionary) {
        if (const PBDictionary* nested = value.dictionary()) {
            expectSound(*nested);
        } else if (value.isText()) {
            EXPECT_TRUE(value.toText().isValidUtf16()) << key.toStdString();
            EXPECT_FALSE(value.toText().contains(QChar(u'\0'))) << key.toStdString();
        } else if (value.isFloating()) {
            EXPECT_TRUE(std::isfinite(value.toDouble())) << key.toStdString();
        }
    }
}

} // namespace

TEST(HostilePictures, DamageOfEveryFormatDoesNoHarm) {
    unsigned seed = 0;
    for (const made::Picture& picture : samples()) {
        SCOPED_TRACE(picture.name);
        ASSERT_FALSE(picture.bytes.isEmpty());
        std::mt19937 random(++seed);
        for (int round = 0; round < 40; ++round) {
            const QByteArray bytes = support::mutated(picture.bytes, random);
            codec::DecodeRequest request;
            request.frame = round % 7 == 0 ? 1 : 0;
            request.maxSize = round % 2 == 0 ? 0 : 32;
            request.limits = {1U << 18, 16U << 20};
            const codec::Source source = codec::Source::fromBytes(bytes);
            const codec::Frame frame = codec::decode(source, picture.typeHint, request);
            EXPECT_LE(frame.image.width() * 1LL * frame.image.height(), 1 << 18);
            if (const auto properties = pictures::propertiesOf(bytes, picture.typeHint))
                expectSound(*properties);
            if (round % 10 == 0) {
                EXPECT_LE(codec::countFrames(source, picture.typeHint), 100000U);
            }
        }
    }
}
