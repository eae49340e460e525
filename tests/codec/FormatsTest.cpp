#include "codec/Bitmaps.h"
#include "codec/MadePictures.h"
#include "codec/formats/Codecs.h"
#include "codec/metadata/Pictures.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"
#include "formatpictures/Encoders.h"

#include <gif_lib.h>

namespace {

std::unique_ptr<codec::Decoder> opened(const QByteArray& bytes, QStringView hint = {}) {
    return codec::openDecoder(codec::Source::fromBytes(bytes), hint);
}

codec::Frame
decoded(const QByteArray& bytes, int maxSize = 0, QStringView hint = {}, std::size_t frame = 0) {
    codec::DecodeRequest request;
    request.frame = frame;
    request.maxSize = maxSize;
    return codec::decode(codec::Source::fromBytes(bytes), hint, request);
}

/// The largest difference of any channel of any pixel.
int largestDifference(const QImage& one, const QImage& other, bool onlyRed) {
    int largest = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            largest = std::max(largest, std::abs(qRed(a) - qRed(b)));
            if (!onlyRed)
                largest = std::max(
                    {largest, std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
        }
    }
    return largest;
}

QString colourAt(const QImage& image, int x, int y) {
    return image.isNull() ? u"none"_s : image.pixelColor(x, y).name(QColor::HexArgb);
}

} // namespace

TEST(Formats, PicturesComeOutWholeAndKeepToTheLimits) {
    const QImage image = formatpictures::picture();
    const QImage small = decoded(PBUtilities::cgImageRefToPngData(image), 64).image;
    ASSERT_EQ(small.size(), QSize(64, 38));
    const auto isRefused = [](const made::Picture& picture, codec::Limits limits) {
        codec::DecodeRequest request;
        request.limits = limits;
        const auto source = codec::Source::fromBytes(picture.bytes);
        return codec::decode(source, picture.typeHint, request).image.isNull();
    };
    constexpr std::uint64_t pixels = 160 * 96;
    for (const made::Picture& picture : made::gradients()) {
        SCOPED_TRACE(picture.name);
        const codec::Frame full = decoded(picture.bytes, 0, picture.typeHint);
        ASSERT_EQ(full.image.size(), image.size());
        EXPECT_TRUE(full.isComplete);
        EXPECT_EQ(full.image.format(), QImage::Format_RGB32);
        EXPECT_LE(largestDifference(full.image, image, picture.isGray), picture.tolerance);
        const codec::Frame reduced = decoded(picture.bytes, 64, picture.typeHint);
        ASSERT_EQ(reduced.image.size(), small.size());
        EXPECT_EQ(decoded(picture.bytes, 500, picture.typeHint).image.size(), image.size());
        EXPECT_LE(largestDifference(reduced.image, small, picture.isGray), picture.tolerance + 5);
        EXPECT_EQ(opened(picture.bytes, picture.typeHint)->frameCount(), 1U);
        EXPECT_TRUE(decoded(picture.bytes, 0, picture.typeHint, 1).image.isNull());
        EXPECT_FALSE(isRefused(picture, {pixels, 64U << 20}));
        EXPECT_TRUE(isRefused(picture, {pixels - 1, 64U << 20}));
        EXPECT_TRUE(isRefused(picture, {pixels, pixels * 4 - 1}));
        const auto properties = pictures::propertiesOf(picture.bytes, picture.typeHint);
        EXPECT_EQ(pictures::entry(properties, u"", u"PixelWidth"), u"160"_s);
        EXPECT_EQ(pictures::entry(properties, u"", u"PixelHeight"), u"96"_s);
    }
}

TEST(Formats, LimitsHoldToThePixelAndTheByte) {
    using codec::withinLimits;
    EXPECT_TRUE(withinLimits({40, 25}, {1000, 8000}, 8));
    EXPECT_FALSE(withinLimits({40, 25}, {999, 8000}, 8));
    EXPECT_FALSE(withinLimits({40, 25}, {1000, 7999}, 8));
    EXPECT_TRUE(withinLimits({40, 25}, {1000, 0}));
    EXPECT_FALSE(withinLimits({0, 25}, {1000, 8000}));
    EXPECT_FALSE(withinLimits({40, 0}, {1000, 8000}));
    EXPECT_TRUE(withinLimits({1 << 15, 1 << 15}, {}, 3));
    EXPECT_FALSE(withinLimits({1 << 15, 1 << 15}, {}, 4)) << "3 GiB";
    EXPECT_FALSE(withinLimits({1 << 15, (1 << 15) + 1}, {})) << "a gigapixel";
    using codec::reducedSize;
    EXPECT_EQ(reducedSize({4000, 3}, 256), QSize(256, 1));
    EXPECT_EQ(reducedSize({300, 101}, 100), QSize(100, 34));
    EXPECT_EQ(reducedSize({100, 90}, 100), QSize(100, 90));
    EXPECT_EQ(reducedSize({100, 90}, 0), QSize(100, 90));
    EXPECT_TRUE(codec::sameShape({4000, 3000}, {164, 120}));
    EXPECT_FALSE(codec::sameShape({4000, 3000}, {165, 120}));
}

TEST(Formats, PicturesMadeByHandShowEveryPixel) {
    const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
    // Red, green, blue and white, blue first.
    const QByteArray palette = hex("0000ff00 00ff0000 ff000000 ffffff00");
    const auto bitmap = [&](int width, int height, unsigned bits, unsigned compression,
                            const QByteArray& rest, unsigned colours = 4) {
        pictures::ByteWriter file(true);
        file.text("BM").u32(0).u32(0).u32(0).u32(40);
        file.u32(static_cast<unsigned>(width)).u32(static_cast<unsigned>(height));
        file.u16(1).u16(bits).u32(compression).u32(0).u32(0).u32(0).u32(colours).u32(0);
        return file.text(rest).bytes();
    };
    const auto targa = [&](const char* type, const char* sizeAndBits, const char* rest) {
        return hex(type) + hex(sizeAndBits) + hex(rest);
    };
    const QString tga = u"com.truevision.tga-image"_s;
    struct Case {
        QByteArray bytes;
        const char* pixels;
        QString typeHint = {};
    };
    for (const Case& one : {
             // An odd literal run and its padding, a run, a step over a row; the bottom row first.
             Case{
                 bitmap(5, 3, 8, 1, palette + hex("0003000102000203 0000 00020201 0301 0001")),
                 "rrggg|rrrrr|rgbww"},
             {bitmap(5, 2, 4, 2, palette + hex("0512 0000 000501230000 0001")), "rgbwr|gbgbg"},
             {bitmap(10, -2, 1, 0, palette.left(8) + hex("ff800000 00400000"), 2),
              "gggggggggr|rrrrrrrrrg"},
             {bitmap(4, 1, 2, 0, palette + hex("1b000000")), "rgbw"},
             {bitmap(3, 1, 4, 0, palette + hex("21300000")), "bgw"},
             {bitmap(3, 1, 16, 0, hex("007c e003 1f00 0000"), 0), "rgb"},
             {bitmap(3, 1, 16, 3, hex("00f80000 e0070000 1f000000 00f8 e007 1f00 0000"), 0), "rgb"},
             {bitmap(2, 1, 32, 6, hex("ff000000 00ff0000 0000ff00 000000ff ff0000ff 00000000"), 0),
              "r."},
             {"BM" + QByteArray(12, '\0') + hex("0c000000 0200 0100 0100 0100 0000ff ff0000") +
                  hex("40000000"),
              "rb"},
             {targa(
                  "00 01 01 0000 0400 18 00000000", "0400 0100 08 00",
                  "0000ff 00ff00 ff0000 ffffff 03 02 01 00"),
              "wbgr", tga},
             {targa(
                  "00 01 09 0100 0200 18 00000000", "0500 0100 08 20",
                  "0000ff 00ff00 82 01 01 02 01"),
              "rrrgr", tga},
             {targa("00 00 02 0000 0000 00 00000000", "0300 0100 10 01", "00fc e083 1f00"), "rg.",
              tga},
             {targa("00 00 03 0000 0000 00 00000000", "0200 0200 08 20", "00ff ff00"), "kw|wk",
              tga},
             {"P1\n# 9 9\n3 2\n101\n0 1 0\n", "kwk|wkw"},
             {"P2 2 1 4 0 4 ", "kw"},
             {"P3 3 1 15 15 0 0 0 15 0 0 0 15", "rgb"},
             {"P4 9 2\n" + hex("8080 7f00"), "kwwwwwwwk|wkkkkkkkw"},
             {"P5 2 1 65535\n" + hex("0000 ffff"), "kw"},
             {"P6 2 1 255\n" + hex("ff0000 0000ff"), "rb"},
             {"P7\nWIDTH 3\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nENDHDR\n" + hex("00ff ffff ff00"),
              "kw."},
         }) {
        const QImage image = decoded(one.bytes, 0, one.typeHint).image;
        QStringList rows;
        for (int y = 0; y < image.height(); ++y) {
            QString row;
            for (int x = 0; x < image.width(); ++x) {
                static const std::map<QRgb, QChar> letters{{0xFFFF0000U, u'r'}, {0xFF00FF00U, u'g'},
                                                           {0xFF0000FFU, u'b'}, {0xFFFFFFFFU, u'w'},
                                                           {0xFF000000U, u'k'}, {0U, u'.'}};
                const auto letter = letters.find(image.pixel(x, y));
                row += letter == letters.end() ? u'?' : letter->second;
            }
            rows.append(row);
        }
        EXPECT_EQ(rows.join(u'|'), QString::fromLatin1(one.pixels))
            << one.bytes.left(60).toHex().toStdString();
    }
}

TEST(Formats, OnlyANegativeNumberOfLayersMakesAChannelTransparency) {
    // A red of (200, 0, 100), half of it, on white.
    QByteArray bytes = formatpictures::file("layers.psd");
    const QColor shown = decoded(bytes).image.pixelColor(7, 3);
    EXPECT_EQ(shown.alpha(), 128);
    EXPECT_NEAR(shown.red(), 200, 2);
    EXPECT_NEAR(shown.green(), 0, 2);
    bytes.replace(QByteArray("\0\0\0\4\xFF\xFF", 6), QByteArray("\0\0\0\4\0\1", 6));
    EXPECT_EQ(decoded(bytes).image.pixelColor(7, 3), QColor(227, 127, 177));
}

TEST(Formats, EmbeddedProfilesAreApplied) {
    const QImage image = formatpictures::picture();
    for (const char* name :
         {"swapped8.png", "swapped8-interlaced.png", "swapped16.png", "swapped16-interlaced.png"}) {
        const QImage shown = decoded(formatpictures::file(name)).image;
        ASSERT_EQ(shown.size(), image.size());
        EXPECT_LE(largestDifference(shown, image.rgbSwapped(), false), 3) << name;
    }
}

TEST(Formats, GifFramesAreComposed) {
    const QString red = u"#ffff0000"_s;
    const QString blue = u"#ff0000ff"_s;
    const QString green = u"#ff00ff00"_s;
    for (const bool isInterlaced : {false, true}) {
        for (const int disposal : {DISPOSE_DO_NOT, DISPOSE_BACKGROUND, DISPOSE_PREVIOUS}) {
            SCOPED_TRACE(::testing::Message() << disposal << ", interlaced " << isInterlaced);
            const QByteArray bytes = formatpictures::gif(disposal, isInterlaced);
            const auto decoder = opened(bytes);
            ASSERT_EQ(decoder->frameCount(), 3U);
            for (const auto& [frame, delay] : {std::pair(0U, 50), {1U, 120}, {2U, 10}})
                EXPECT_EQ(decoder->frameDelay(frame), delay);
            const QImage first = decoded(bytes).image;
            ASSERT_EQ(first.size(), QSize(40, 30));
            EXPECT_EQ(first.format(), QImage::Format_RGB32);
            EXPECT_EQ(colourAt(first, 10, 10), red);
            const QImage second = decoded(bytes, 0, {}, 1).image;
            EXPECT_EQ(colourAt(second, 10, 10), blue);
            EXPECT_EQ(colourAt(second, 10, 5), red) << "transparent row";
            EXPECT_EQ(colourAt(second, 14, 14), blue);
            EXPECT_EQ(colourAt(second, 15, 14), red);
            const QImage third = decoded(bytes, 0, {}, 2).image;
            EXPECT_EQ(colourAt(third, 30, 20), green);
            EXPECT_EQ(colourAt(third, 2, 2), red);
            EXPECT_EQ(
                colourAt(third, 10, 10), disposal == DISPOSE_DO_NOT       ? blue
                                         : disposal == DISPOSE_BACKGROUND ? u"#00000000"_s
                                                                          : red);
            EXPECT_EQ(colourAt(decoded(bytes, 20, {}, 1).image, 5, 5), blue);
            EXPECT_TRUE(decoded(bytes, 0, {}, 3).image.isNull());
        }
    }
}

TEST(Formats, WebpAnimationsHaveFramesDelaysAndAlpha) {
    const QByteArray bytes = formatpictures::file("frames.webp");
    const auto decoder = opened(bytes);
    ASSERT_TRUE(decoder);
    ASSERT_EQ(decoder->frameCount(), 2U);
    EXPECT_EQ(decoder->frameDelay(0), 50);
    EXPECT_EQ(decoder->frameDelay(1), 120);
    EXPECT_EQ(colourAt(decoded(bytes).image, 7, 7), u"#ffff0000"_s);
    EXPECT_EQ(colourAt(decoded(bytes, 0, {}, 1).image, 7, 7), u"#800000ff"_s);
    EXPECT_EQ(decoded(bytes, 20, {}, 1).image.size(), QSize(20, 15));
}

TEST(Formats, IconsGiveTheLargestEntryFirst) {
    // Red with a mask, half-transparent green, and hardly any yellow.
    const QByteArray bytes = formatpictures::file("sizes.ico");
    EXPECT_EQ(opened(bytes)->frameCount(), 3U);
    EXPECT_EQ(decoded(bytes).image.size(), QSize(64, 64));
    EXPECT_EQ(decoded(bytes).image.pixelColor(9, 9).alpha(), 50);
    const QImage second = decoded(bytes, 0, {}, 1).image;
    ASSERT_EQ(second.size(), QSize(48, 48));
    EXPECT_EQ(second.pixelColor(20, 20).alpha(), 100);
    EXPECT_NEAR(second.pixelColor(20, 20).green(), 200, 3);
    const QImage third = decoded(bytes, 0, {}, 2).image;
    ASSERT_EQ(third.size(), QSize(16, 16));
    EXPECT_EQ(colourAt(third, 12, 12), u"#ffff0000"_s);
    EXPECT_EQ(third.pixelColor(3, 12).alpha(), 0) << "under the mask";
}

TEST(Formats, AlphaOfDeepPicturesIsStraightened) {
    for (const char* name : {"glass.jxl", "deep-glass.jxl"}) {
        const QImage shown = decoded(formatpictures::file(name)).image;
        ASSERT_EQ(shown.format(), QImage::Format_ARGB32_Premultiplied);
        const QColor pixel = shown.pixelColor(20, 20);
        EXPECT_EQ(pixel.alpha(), 128);
        EXPECT_NEAR(pixel.red(), 200, 2);
        EXPECT_NEAR(pixel.green(), 100, 2);
        EXPECT_NEAR(pixel.blue(), 50, 2);
    }
}

TEST(Formats, NegativesAreDeveloped) {
    const QString type = u"com.adobe.raw-image"_s;
    const QImage full = decoded(formatpictures::file("sensor.dng"), 0, type).image;
    EXPECT_EQ(full.size(), QSize(64, 48)) << "as stored, not turned";
    const QImage small = decoded(formatpictures::file("sensor.dng"), 32, type).image;
    ASSERT_EQ(small.size(), QSize(32, 24));
    EXPECT_LE(qRed(small.pixel(4, 4)) - qRed(small.pixel(28, 20)), 4) << "evenly lit";
    EXPECT_TRUE(decoded(formatpictures::file("sensor.dng"), 0, type, 1).image.isNull());
}

TEST(Formats, CutOffInterlacedPicturesAreIncomplete) {
    // The library takes the pixels in pieces of 8 KiB, of which one has to be whole.
    const QByteArray bytes = formatpictures::file("large-interlaced.png");
    const codec::Frame cut = decoded(bytes.chopped(500));
    ASSERT_FALSE(cut.image.isNull());
    EXPECT_FALSE(cut.isComplete);
    EXPECT_EQ(qAlpha(cut.image.pixel(1599, 959)), 255);
    EXPECT_EQ(cut.image.constScanLine(959)[1599 * 4 + 3], 255);
}

TEST(Formats, StrongReductionsOfDeepPicturesStayInPlace) {
    // Neither side divides evenly, and the last rows and columns count as well.
    const QImage image = formatpictures::gradient({701, 403});
    const QImage deep = decoded(formatpictures::file("odd16.png"), 30).image;
    const QImage plain = decoded(PBUtilities::cgImageRefToPngData(image), 30).image;
    ASSERT_EQ(deep.size(), QSize(30, 17));
    EXPECT_LE(largestDifference(deep, plain, false), 5);
    QByteArray bytes("P6 701 403 65535\n");
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 701; ++x) {
            const QRgb pixel = image.pixel(x, y);
            for (const int value : {qRed(pixel), qGreen(pixel), qBlue(pixel)})
                bytes.append(2, static_cast<char>(value)); // times 257
        }
    }
    const codec::Frame cut = decoded(bytes, 30);
    ASSERT_EQ(cut.image.size(), QSize(30, 17));
    EXPECT_FALSE(cut.isComplete);
    EXPECT_LE(largestDifference(cut.image.copy(0, 0, 30, 3), plain.copy(0, 0, 30, 3), false), 5);
    EXPECT_EQ(cut.image.pixel(15, 16), 0xFF808080U);
}
