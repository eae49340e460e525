#include "image/codec/metadata/ImageHeader.h"

#include "image/codec/metadata/ImageProperties.h"
#include "image/codec/metadata/Pictures.h"
#include "image/codec/metadata/headers/Orientation.h"

#include <QColorSpace>
#include <QImage>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using codec::Bytes;
using codec::Container;
using codec::ImageHeader;
using pictures::ByteWriter;
using pictures::entry;
using pictures::propertiesOf;
using pictures::saved;

Bytes viewOf(const QByteArray& bytes) {
    return Bytes(
        {reinterpret_cast<const std::uint8_t*>(bytes.data()),
         static_cast<std::size_t>(bytes.size())});
}

std::optional<ImageHeader> headerOf(const QByteArray& bytes, std::size_t frame = 0) {
    return codec::readImageHeader(viewOf(bytes), codec::sniffContainer(viewOf(bytes)), frame);
}

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

TEST(ImageHeaderTest, picturesOfTheToolkitsWritersHaveTheirSizeResolutionAndProfile) {
    QImage image(300, 7, QImage::Format_RGB32);
    image.fill(Qt::blue);
    image.setDotsPerMeterX(3937);
    image.setDotsPerMeterY(11811);
    image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
    for (const char* format : {"JPEG", "PNG", "BMP", "TIFF", "WEBP"}) {
        SCOPED_TRACE(format);
        const auto header = headerOf(saved(image, format));
        ASSERT_TRUE(header);
        EXPECT_EQ(header->width, 300U);
        EXPECT_EQ(header->height, 7U);
        EXPECT_EQ(header->depth, 8);
        EXPECT_EQ(header->colorModel, u"RGB"_s);
        const QByteArray name(format);
        if (name != "WEBP") {
            EXPECT_EQ(std::lround(header->dpiWidth), 100);
            EXPECT_EQ(std::lround(header->dpiHeight), 300);
        }
        EXPECT_EQ(header->profileName.isEmpty(), name == "BMP");
    }
    const auto gray = headerOf(saved(image.convertToFormat(QImage::Format_Grayscale8), "JPEG"));
    ASSERT_TRUE(gray);
    EXPECT_EQ(gray->colorModel, u"Gray"_s);
}

TEST(ImageHeaderTest, headersMadeByHandAreRead) {
    const QByteArray zeros(40, '\0');
    const QByteArray size48 = hex("ff4f ff51 002f 0000 0000006e 00000046 0000000a 00000014") +
                              zeros.left(16) + hex("0003 0f 01 01");
    const std::tuple<QByteArray, std::uint32_t, std::uint32_t, int, const char16_t*> rows[] = {
        {"8BPS" + hex("0001 000000000000 0004 00000014 0000001e 0010 0004") + zeros.left(8), 30, 20,
         16, u"CMYK"},
        {"8BPS" + hex("0001 000000000000 0003 00000014 0000001e 0008 0009") + zeros.left(8), 30, 20,
         8, u"Lab"},
        {size48, 100, 50, 16, u"RGB"},
        {pictures::box("jP  ", "\r\n\x87\n") + pictures::box("ftyp", "jp2 ") +
             pictures::box("jp2h", pictures::box("colr", hex("01 0000 00000011"))) +
             pictures::box("jp2c", size48),
         100, 50, 16, u"Gray"},
        {hex("00 00 02 000000000000000000 4000 3000 18 00"), 64, 48, 8, u"RGB"},
        {hex("0000 0100 0100 00 20 000000000000 28000000 16000000") + zeros, 256, 32, 8, u"RGB"},
        {"P7\n# a comment\nWIDTH 12\nHEIGHT 34\nDEPTH 1\nMAXVAL 65535\nENDHDR\n", 12, 34, 16,
         u"Gray"},
        {pictures::tiff(false, 400), 40, 30, 16, u"Gray"},
        {pictures::tiff(true, 400), 40, 30, 16, u"Gray"}};
    for (const auto& [bytes, width, height, depth, model] : rows) {
        SCOPED_TRACE(bytes.left(12).toHex().toStdString());
        const auto header = headerOf(bytes);
        ASSERT_TRUE(header);
        EXPECT_EQ(
            std::tuple(header->width, header->height, header->depth),
            std::tuple(width, height, depth));
        EXPECT_EQ(header->colorModel, QStringView(model));
    }
}

TEST(ImageHeaderTest, bothTiffLayoutsGiveTheirMetadata) {
    for (const bool big : {false, true}) {
        SCOPED_TRACE(big);
        const auto properties = propertiesOf(pictures::tiff(big, 400));
        EXPECT_EQ(entry(properties, u"{Exif}", u"FocalLenIn35mmFilm"), u"35"_s);
        EXPECT_EQ(entry(properties, u"{TIFF}", u"PhotometricInterpretation"), u"1"_s);
        EXPECT_EQ(entry(properties, u"", u"DPIWidth"), u"300"_s);
        EXPECT_FALSE(propertiesOf(pictures::tiff(big, 400), {}, 1));
    }
}

TEST(ImageHeaderTest, rawFilesHaveTheSizeThatTheyAreDevelopedTo) {
    const auto properties = propertiesOf(pictures::dng(), u"com.adobe.raw-image"_s);
    const std::tuple<QStringView, QStringView, QString> entries[] = {
        {u"", u"PixelWidth", u"64"_s},
        {u"", u"PixelHeight", u"48"_s},
        {u"", u"ColorModel", u"RGB"_s},
        {u"{TIFF}", u"Orientation", u"6"_s},
        {u"{Exif}", u"ISOSpeedRatings", u"200"_s},
        {u"{Exif}", u"ExposureTime", u"0.004"_s},
        {u"{Exif}", u"DateTimeOriginal", u"2010:07:01 12:00:00"_s}};
    for (const auto& [dictionary, key, text] : entries)
        EXPECT_EQ(entry(properties, dictionary, key), text);
    // A JPEG under a raw file's name is still a picture.
    const auto renamed = propertiesOf(pictures::jpeg(), u"com.nikon.raw-image"_s);
    EXPECT_EQ(entry(renamed, u"", u"PixelWidth"), u"40"_s);
}

TEST(ImageHeaderTest, animationsTellTheDelayOfEachFrame) {
    ByteWriter gif(true);
    gif.text("GIF89a").u16(20).u16(10).u8(0x80).u8(0).u8(0).text(QByteArray(6, '\0'));
    for (const unsigned delay : {7U, 250U}) {
        gif.u8(0x21).u8(0xF9).u8(4).u8(0).u16(delay).u8(0).u8(0);
        gif.u8(0x2C).u16(0).u16(0).u16(20).u16(10).u8(0).u8(2).u8(1).u8(0).u8(0);
    }
    gif.u8(0x3B);
    EXPECT_EQ(entry(propertiesOf(gif.bytes()), u"{GIF}", u"DelayTime"), u"0.07"_s);
    const auto second = propertiesOf(gif.bytes(), {}, 1);
    EXPECT_EQ(entry(second, u"{GIF}", u"DelayTime"), u"2.5"_s);
    EXPECT_EQ(entry(second, u"", u"PixelWidth"), u"20"_s);
    EXPECT_FALSE(propertiesOf(gif.bytes(), {}, 2));
}

TEST(ImageHeaderTest, theContainersRotationStandsAboveTheMetadatas) {
    const QByteArray quarter =
        pictures::box("irot", QByteArray(1, 3)); // 270 degrees counter-clockwise
    const auto turned = propertiesOf(pictures::heif({quarter}));
    EXPECT_EQ(entry(turned, u"", u"PixelWidth"), u"4000"_s);
    EXPECT_EQ(entry(turned, u"", u"Orientation"), u"6"_s);
    // Where the catalogue looks for it.
    EXPECT_EQ(entry(turned, u"{TIFF}", u"Orientation"), u"6"_s);
    const auto mirrored =
        headerOf(pictures::heif({quarter, pictures::box("imir", QByteArray(1, 1))}));
    ASSERT_TRUE(mirrored);
    EXPECT_EQ(mirrored->orientation, 5);
    const QByteArray nclx = ByteWriter(false).text("nclx").u16(9).u16(16).u16(9).u8(0x80).bytes();
    const auto wide = headerOf(pictures::heif({pictures::box("colr", nclx)}));
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->profileName, u"Rec. ITU-R BT.2100 PQ"_s);
    EXPECT_EQ(wide->orientation, 1);
}

TEST(ImageHeaderTest, orientationsComposeAsTurnsOfTheSquareDo) {
    using codec::headers::composeOrientations;
    for (const auto& [first, second, both] : {std::array{6, 6, 3}, {6, 2, 5}, {2, 6, 7}, {0, 4, 4}})
        EXPECT_EQ(composeOrientations(first, second), both);
    for (int first = 1; first <= 8; ++first) {
        const auto undoes = [&](int second) { return composeOrientations(first, second) == 1; };
        EXPECT_EQ(std::ranges::count_if(std::array{1, 2, 3, 4, 5, 6, 7, 8}, undoes), 1);
    }
}

TEST(ImageHeaderTest, onlyTheHeaderOfALargeFileIsRead) {
    constexpr off_t size = off_t(60) << 20;
    for (const bool big : {false, true}) {
        const int descriptor = memfd_create("large", MFD_CLOEXEC);
        const QByteArray start = pictures::tiff(big, 1 << 20);
        ASSERT_EQ(
            write(descriptor, start.data(), static_cast<std::size_t>(start.size())), start.size());
        ASSERT_EQ(ftruncate(descriptor, size), 0);
        EXPECT_TRUE(codec::readImageProperties(descriptor, u"public.tiff"_s, 0));
        // A page of this file comes to be when it is first looked at.
        struct stat status = {};
        ASSERT_EQ(fstat(descriptor, &status), 0);
        EXPECT_LT(status.st_blocks * 512, 1 << 20);
        close(descriptor);
    }
}

} // namespace
