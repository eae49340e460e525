#include "image/codec/Bitmaps.h"
#include "image/codec/Decoder.h"
#include "image/codec/MadePictures.h"
#include "image/codec/metadata/Pictures.h"

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

TEST(Formats, PicturesComeOutWhole) {
    const QImage image = made::gradient({160, 96});
    const QImage small = decoded(PBUtilities::cgImageRefToPngData(image), 64).image;
    ASSERT_EQ(small.size(), QSize(64, 38));
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
    }
}

TEST(Formats, EmbeddedProfilesAreApplied) {
    const QImage image = made::gradient({160, 96});
    for (const int bits : {8, 16}) {
        for (const bool isInterlaced : {false, true}) {
            const QImage shown =
                decoded(made::png(image, bits, isInterlaced, made::swappedProfile())).image;
            ASSERT_EQ(shown.size(), image.size());
            EXPECT_LE(largestDifference(shown, image.rgbSwapped(), false), 3)
                << bits << " bits, interlaced " << isInterlaced;
        }
    }
}

TEST(Formats, GifFramesAreComposed) {
    const QString red = u"#ffff0000"_s;
    const QString blue = u"#ff0000ff"_s;
    const QString green = u"#ff00ff00"_s;
    for (const bool isInterlaced : {false, true}) {
        for (const int disposal : {DISPOSE_DO_NOT, DISPOSE_BACKGROUND, DISPOSE_PREVIOUS}) {
            SCOPED_TRACE(::testing::Message() << disposal << ", interlaced " << isInterlaced);
            const QByteArray bytes = made::gif(disposal, isInterlaced);
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
    const QByteArray bytes = made::animatedWebp();
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
    QImage glass(48, 48, QImage::Format_ARGB32);
    glass.fill(qRgba(0, 200, 0, 100));
    QImage red(16, 16, QImage::Format_ARGB32);
    red.fill(qRgb(255, 0, 0));
    QImage yellow(64, 64, QImage::Format_ARGB32);
    yellow.fill(qRgba(255, 255, 0, 50));
    const QByteArray bytes = made::icon({{red, 8}, {glass, 32}, {yellow, 0}});
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
    QImage image(40, 30, QImage::Format_ARGB32);
    image.fill(qRgba(200, 100, 50, 128));
    for (const int bits : {8, 16}) {
        const QImage shown = decoded(made::jpegXl(image, bits, true)).image;
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
    const QImage full = decoded(pictures::dng(), 0, type).image;
    EXPECT_EQ(full.size(), QSize(64, 48)) << "as stored, not turned";
    const QImage small = decoded(pictures::dng(), 32, type).image;
    ASSERT_EQ(small.size(), QSize(32, 24));
    EXPECT_LE(qRed(small.pixel(4, 4)) - qRed(small.pixel(28, 20)), 4) << "evenly lit";
    EXPECT_TRUE(decoded(pictures::dng(), 0, type, 1).image.isNull());
}

TEST(Formats, CutOffInterlacedPicturesAreIncomplete) {
    // The library takes the pixels in pieces of 8 KiB, of which one has to be whole.
    const QByteArray bytes = made::png(made::gradient({1600, 960}), 8, true);
    const codec::Frame cut = decoded(bytes.chopped(500));
    ASSERT_FALSE(cut.image.isNull());
    EXPECT_FALSE(cut.isComplete);
    EXPECT_EQ(qAlpha(cut.image.pixel(1599, 959)), 255);
    EXPECT_EQ(cut.image.constScanLine(959)[1599 * 4 + 3], 255);
}

TEST(Formats, StrongReductionsOfDeepPicturesStayInPlace) {
    // Neither side divides evenly, and the last rows and columns count as well.
    const QImage image = made::gradient({701, 403});
    const QImage deep = decoded(made::png(image, 16, false), 30).image;
    const QImage plain = decoded(made::png(image, 8, false), 30).image;
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
