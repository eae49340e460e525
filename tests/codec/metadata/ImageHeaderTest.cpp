#include "codec/metadata/headers/ImageHeader.h"

#include "codec/metadata/Pictures.h"
#include "formatpictures/FormatPictures.h"

#include <QColorSpace>

namespace {

using namespace pictures;

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

/// As "40x30 8 RGB", and what else the header says: dots an inch, profile, orientation, delay.
QString described(const QByteArray& bytes, std::size_t frame = 0) {
    const codec::Bytes view(
        {reinterpret_cast<const std::uint8_t*>(bytes.data()),
         static_cast<std::size_t>(bytes.size())});
    const auto header = codec::readImageHeader(view, codec::sniffContainer(view), frame);
    if (!header) return u"none"_s;
    QStringList parts{
        u"%1x%2"_s.arg(header->width).arg(header->height), QString::number(header->depth),
        header->colorModel};
    if (header->dpiWidth > 0 || header->dpiHeight > 0)
        parts += u"%1:%2"_s.arg(std::lround(header->dpiWidth)).arg(std::lround(header->dpiHeight));
    if (!header->profileName.isEmpty()) parts += header->profileName;
    if (header->orientation != 0) parts += u"o%1"_s.arg(header->orientation);
    if (header->delay >= 0) parts += u"%1 s"_s.arg(header->delay);
    return parts.join(u' ');
}

QByteArray chunk(const char* name, const QByteArray& content) {
    return ByteWriter(false).u32(static_cast<quint64>(content.size())).text(name).bytes() +
           content + QByteArray(4, '\0'); // of the sum, which nobody looks at
}

QByteArray png(const char* bitsAndKind, const QByteArray& chunks) {
    return "\x89PNG\r\n\x1A\n" + chunk("IHDR", hex("0000001e 00000014") + hex(bitsAndKind)) +
           chunks + chunk("IDAT", {}) + chunk("IEND", {});
}

QByteArray webp(const QByteArray& chunks) {
    return QByteArray("RIFF\xFF\xFF\0\0WEBP", 12) + chunks;
}

/// Two pages; the second one is turned and counts its dots by the centimetre.
QByteArray twoPages(bool big) {
    ByteWriter file(true);
    file.text("II").u16(big ? 43 : 42);
    big ? file.u16(8).u16(0).u64(16) : file.u32(8);
    const quint64 resolution = big ? quint64(1) << 32 | 118 : 116;
    const TiffEntry first[] = {{256, 4, 1, 40}, {257, 4, 1, 30}};
    const TiffEntry second[] = {{256, 3, 1, 20}, {257, 3, 1, 10}, {262, 3, 1, 5},
                                {274, 3, 1, 8},  {296, 3, 1, 3},  {282, 5, 1, resolution}};
    writeDirectory(file, big, first, big ? 72 : 38);
    writeDirectory(file, big, second);
    return file.u32(118).u32(1).bytes();
}

TEST(ImageHeaderTest, everyFormatTellsItsSizeDepthModelResolutionAndProfile) {
    const QByteArray zeros(40, '\0');
    const QByteArray size = hex("ff4f ff51 002f 0000 0000006e 00000046 0000000a 00000014") +
                            zeros.left(16) + hex("0003 0f 01 01");
    const auto jpeg2000 = [&](const QByteArray& boxes) {
        return box("jP  ", "\r\n\x87\n") + box("ftyp", "jp2 ") + box("jp2h", boxes) +
               box("jp2c", size);
    };
    const auto colours = [&](const char* number) {
        return jpeg2000(box("colr", hex("01 0000 000000") + hex(number)));
    };
    const auto jfif = [](const char* unit, const char* frame) {
        return hex("ffd8 ffe0 0010 4a46494600 0102") + hex(unit) + hex("0076 0064 0000") +
               hex(frame);
    };
    const auto photoshop = [&](const char* rest) {
        return "8BPS" + hex("0001 000000000000 0004 00000014 0000001e") + hex(rest) + zeros;
    };
    const auto property = [](const char* name, const char* content) {
        return heif({box(name, hex(content))});
    };
    const QByteArray bitmap = "BM" + zeros.left(12);
    const QByteArray targa = hex("0000 03 000000000000000000 4000 3000 08 00");
    const QByteArray icon = hex("0000 0100 0200 00 20 000000000000 28000000 26000000") +
                            hex("08 08 000000000000 40000000 26000000");
    const QByteArray ppq = chunk("cICP", hex("0910 0001"));
    const QByteArray hdr = "Rec. ITU-R BT.2100 PQ";
    const QByteArray srgb = "sRGB IEC61966-2.1";
    const std::pair<QByteArray, QByteArray> rows[] = {
        {photoshop("0010 0004"), "30x20 16 CMYK"},
        {photoshop("0008 0009"), "30x20 8 Lab"},
        {photoshop("0008 0001 00000000 0000002a 3842494d 0400 0000 00000001 ff00 3842494d 03ed "
                   "0000 00000010 0048 0000 0001 0001 012c 0000 0001 0001"),
         "30x20 8 Gray 72:300"},
        {size, "100x50 16 RGB"},
        {colours("10"), "100x50 16 RGB " + srgb},
        {colours("11"), "100x50 16 Gray"},
        {colours("0c"), "100x50 16 CMYK"},
        {colours("0e"), "100x50 16 Lab"},
        {jpeg2000(
             box("res ", box("resc", hex("2e23 0064 0f61 0001 02 00")) +
                             box("resd", hex("0001 0001 0001 0001 04 04")))),
         "100x50 16 RGB 100:300"},
        {targa, "64x48 8 Gray"},
        {QByteArray(targa).replace(2, 1, "\x0A"), "64x48 8 RGB"},
        {icon + zeros, "256x32 8 RGB"},
        {icon + png("08 00", {}), "30x20 8 Gray"},
        {bitmap + hex("0c000000 1e00 1400 0100 1800") + zeros, "30x20 8 RGB"},
        {bitmap + hex("28000000 1e000000 ecffffff") + zeros.left(12) + hex("610f0000 232e0000") +
             zeros,
         "30x20 8 RGB 100:300"},
        {"P7\n# a comment\nWIDTH 12\nHEIGHT 34\nDEPTH 2\nMAXVAL 65535\nENDHDR\n", "12x34 16 Gray"},
        {"P7 WIDTH 12 HEIGHT 34 DEPTH 3 MAXVAL 255 ENDHDR\n", "12x34 8 RGB"},
        {"P1\n# 9 9\n12 34\n", "12x34 1 Gray"},
        {"P4 12 34 999", "12x34 1 Gray"},
        {"P2 12 34 2 ", "12x34 8 Gray"},
        {"P5 12 34 1 ", "12x34 1 Gray"},
        {"P6 12 34 256 ", "12x34 16 RGB"},
        {"P6 12 1234567890 256 ", "none"},
        {jfif("00", "ffc0 0008 08 0014 001e 03"), "30x20 8 RGB"},
        {jfif("01", "ffc1 0008 08 0014 001e 01"), "30x20 8 Gray 118:100"},
        {jfif("02", "ffcf 0008 0c 0014 001e 04"), "30x20 12 CMYK 300:254"},
        // What else begins like a frame's header, filler, and segments of no length.
        {jfif(
             "00", "ff01 ffd0 1234 ffff ffc4 0008 08000100 0103 ffc8 0008 08000100 0103"
                   "ffcc 0008 08000100 0103 ffc2 0008 08 0014 001e 03"),
         "30x20 8 RGB"},
        {jfif("00", "ffda 0008 08000100 0103 ffc0 0008 08 0014 001e 03"), "none"},
        {jfif("00", "ffc4 0001 ffc0 0008 08 0014 001e 03"), "none"},
        {png("10 02", chunk("pHYs", hex("00000f61 00002e23 01"))), "30x20 16 RGB 100:300"},
        {png("08 06", chunk("pHYs", hex("00000001 00000002 00"))), "30x20 8 RGB"},
        {png("08 04", chunk("sRGB", "\1")), "30x20 8 Gray " + srgb},
        {png("02 03", ppq + chunk("sRGB", "\1")), "30x20 8 RGB " + hdr},
        {webp(
             "VP8X" + hex("0a000000 00000000 1d0000 130000") + "ANMF" + hex("10000000") +
             zeros.left(12) + hex("780001 00")),
         "30x20 8 RGB 65.656 s"},
        {webp("odd " + hex("01000000 ff00") + "VP8 " + hex("0a000000 000000 9d012a 1ec0 1480")),
         "30x20 8 RGB"},
        {webp("VP8L" + hex("05000000 2f 1dc00400")), "30x20 8 RGB"},
        {tiff(false, 400), "40x30 16 Gray 300:0 o1"},
        {tiff(true, 400), "40x30 16 Gray 300:0 o1"},
        {property("irot", "00"), "4000x3000 8 RGB o1"},
        {property("irot", "01"), "4000x3000 8 RGB o8"},
        {property("irot", "02"), "4000x3000 8 RGB o3"},
        {property("imir", "00"), "4000x3000 8 RGB o4"},
        {property("imir", "01"), "4000x3000 8 RGB o2"},
        {property("pixi", "00000000 01 0a"), "4000x3000 10 Gray o1"},
        {property("pixi", "00000000 03 0c0c0c"), "4000x3000 12 RGB o1"},
        {property("av1C", "81 00 00"), "4000x3000 8 RGB o1"},
        {property("av1C", "81 00 40"), "4000x3000 10 RGB o1"},
        {property("av1C", "81 00 60"), "4000x3000 12 RGB o1"},
        {heif({box("hvcC", zeros.left(17) + '\xFA')}), "4000x3000 10 RGB o1"},
        {property("colr", "6e636c78 0009 0010 0009 80"), "4000x3000 8 RGB " + hdr + " o1"}};
    for (const auto& [bytes, header] : rows)
        EXPECT_EQ(described(bytes), QLatin1StringView(header))
            << bytes.left(60).toHex().toStdString();
    for (const bool big : {false, true}) {
        EXPECT_EQ(described(twoPages(big)), u"40x30 1  o1"_s);
        EXPECT_EQ(described(twoPages(big), 1), u"20x10 1 CMYK 300:0 o8"_s);
        EXPECT_EQ(described(twoPages(big), 2), u"none"_s);
    }
    EXPECT_EQ(described(icon + zeros, 1), u"8x8 8 RGB"_s);
    EXPECT_EQ(described(icon + zeros, 2), u"none"_s);
    const auto control = [](const char* delay) {
        return chunk("fcTL", QByteArray(20, '\0') + hex(delay));
    };
    const QByteArray moving =
        png("08 02",
            control("0005 0000") + chunk("IDAT", "x") + control("0001 0004") + chunk("fdAT", "x"));
    EXPECT_EQ(described(moving), u"30x20 8 RGB 0.05 s"_s);
    EXPECT_EQ(described(moving, 1), u"30x20 8 RGB 0.25 s"_s);
    QImage image(30, 7, QImage::Format_RGB32);
    image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
    for (const char* format : {"JPEG", "PNG", "TIFF", "WEBP"})
        EXPECT_TRUE(described(saved(image, format)).contains(image.colorSpace().description()))
            << format;
}

TEST(ImageHeaderTest, propertiesSayWhatHeadersDoAndRawFilesTheSizeOfTheirPicture) {
    const QByteArray quarter = box("irot", QByteArray(1, 3)); // 270 degrees counter-clockwise
    const QString tiffEntries = u"Exif.FocalLenIn35mmFilm TIFF.PhotometricInterpretation"_s;
    const std::tuple<QByteArray, QString, QString, QString> rows[] = {
        {tiff(false, 400), {}, tiffEntries, u"35 1"_s},
        {tiff(true, 400), {}, tiffEntries, u"35 1"_s},
        {formatpictures::file("sensor.dng"), u"com.adobe.raw-image"_s,
         u".PixelWidth .PixelHeight .ColorModel TIFF.Orientation Exif.ISOSpeedRatings "
         "Exif.ExposureTime Exif.DateTimeOriginal"_s,
         u"64 48 RGB 6 200 0.004 2010:07:01 12:00:00"_s},
        // A JPEG under a raw file's name is still a picture.
        {jpeg(), u"com.nikon.raw-image"_s, u".PixelWidth"_s, u"40"_s},
        {formatpictures::file("frames.gif"), {}, u"GIF.DelayTime"_s, u"0.05"_s},
        // The container's rotation, which the catalogue looks for among the metadata.
        {heif({quarter}), {}, u".PixelWidth .Orientation TIFF.Orientation"_s, u"4000 6 6"_s}};
    for (const auto& [bytes, type, paths, texts] : rows) {
        const auto properties = propertiesOf(bytes, type);
        QStringList read;
        for (const QString& path : paths.split(u' '))
            read += entry(properties, path);
        EXPECT_EQ(read.join(u' '), texts);
    }
    EXPECT_EQ(described(formatpictures::file("frames.gif"), 1), u"40x30 8 RGB 0.12 s"_s);
    EXPECT_EQ(described(formatpictures::file("frames.gif"), 3), u"none"_s);
    EXPECT_EQ(described(formatpictures::file("gradient.heic"), 1), u"none"_s) << "not the first";
    EXPECT_NE(described(formatpictures::file("gradient.heic"), 0), u"none"_s);
    const QByteArray mirror = box("imir", QByteArray(1, 1));
    EXPECT_EQ(described(heif({quarter, mirror})), u"4000x3000 8 RGB o5"_s);
}

} // namespace
