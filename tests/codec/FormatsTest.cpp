#include "codec/Bitmaps.h"
#include "codec/MadePictures.h"
#include "codec/formats/Codecs.h"
#include "codec/metadata/Pictures.h"
#include "codec/pixels/FrameWriter.h"
#include "formatpictures/Encoders.h"
#include "support/Images.h"

#include <QColorSpace>

#include <gif_lib.h>

using formatpictures::file;
using support::differenceOf;

namespace {

std::unique_ptr<codec::Decoder> opened(const QByteArray& bytes, QStringView hint = {}) {
    return codec::openDecoder(codec::Source::fromBytes(bytes), hint);
}

codec::Frame
decoded(const QByteArray& bytes, int maxSize = 0, QStringView hint = {}, std::size_t frame = 0) {
    const auto source = codec::Source::fromBytes(bytes);
    return codec::decode(source, hint, {.frame = frame, .maxSize = maxSize});
}

/// What a gray file shows of it: its red.
QImage redAsGray(QImage image) {
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, 0xFF000000U + 0x010101U * unsigned(qRed(image.pixel(x, y))));
    return image;
}

/// Red, green, blue, white, black or clear ("."); "?" for anything else.
QChar letterAt(const QImage& image, int x, int y) {
    static const std::map<QRgb, QChar> letters{{0xFFFF0000U, u'r'}, {0xFF00FF00U, u'g'},
                                               {0xFF0000FFU, u'b'}, {0xFFFFFFFFU, u'w'},
                                               {0xFF000000U, u'k'}, {0U, u'.'}};
    const auto letter = letters.find(image.pixel(x, y));
    return letter == letters.end() ? u'?' : letter->second;
}

/// The letters of all pixels, with "|" between the rows.
QString letters(const QImage& image) {
    QStringList rows;
    for (int y = 0; y < image.height(); ++y) {
        rows.append(QString());
        for (int x = 0; x < image.width(); ++x)
            rows.last() += letterAt(image, x, y);
    }
    return rows.join(u'|');
}

void expectColour(const QImage& image, QPoint point, const QColor& wanted, int tolerance = 2) {
    const QRgb shown = image.pixelColor(point).rgba();
    for (const int shift : {0, 8, 16, 24})
        EXPECT_NEAR(shown >> shift & 255, wanted.rgba() >> shift & 255, tolerance);
}

struct StripTiff {
    unsigned width = 2;
    unsigned height = 2;
    unsigned samples = 200;
    unsigned photometric = 2;
    unsigned arrangement = 1; // 2: in planes
    unsigned compression = 1;
    unsigned strips = 1;
    unsigned length = 4; // of each strip
};

/// A TIFF of 8 bits up to where the data begin; of planes there are four, which stand for all.
QByteArray stripTiff(const StripTiff& shape) {
    const auto& [width, height, samples, photometric, arrangement, compression, strips, length] =
        shape;
    constexpr unsigned tables = 8 + 2 + 12 * 10 + 4;
    const unsigned data = tables + 8 * strips;
    const unsigned rows = arrangement == 2 ? height : height / strips;
    pictures::ByteWriter file(true);
    file.text("II").u16(42).u32(8);
    const pictures::TiffEntry entries[] = {
        {256, 4, 1, width},       {257, 4, 1, height},
        {258, 4, 1, 8},           {259, 4, 1, compression},
        {262, 4, 1, photometric}, {273, 4, strips, strips > 1 ? tables : data},
        {277, 4, 1, samples},     {278, 4, 1, rows},
        {284, 4, 1, arrangement}, {279, 4, strips, strips > 1 ? tables + 4 * strips : length}};
    pictures::writeDirectory(file, false, entries);
    for (unsigned strip = 0; strip < strips; ++strip)
        file.u32(data + length * (arrangement == 2 ? strip % 4 : strip));
    for (unsigned strip = 0; strip < strips; ++strip)
        file.u32(length);
    return file.bytes();
}

} // namespace

TEST(Formats, PicturesComeOutWholeAndKeepToTheLimits) {
    const QImage image = formatpictures::picture();
    const QImage small = decoded(PBUtilities::cgImageRefToPngData(image), 64).image;
    ASSERT_EQ(small.size(), QSize(64, 38));
    const auto isRefused = [](const made::Picture& picture, codec::Limits limits) {
        const auto source = codec::Source::fromBytes(picture.bytes);
        return codec::decode(source, picture.typeHint, {.limits = limits}).image.isNull();
    };
    const codec::DecodeRequest stopped{.stop = codec::StopFlag(support::stopped())};
    constexpr std::uint64_t pixels = 160 * 96;
    for (const made::Picture& picture : made::gradients()) {
        SCOPED_TRACE(picture.name);
        const auto shown = [&](const QImage& each) {
            return picture.isGray ? redAsGray(each) : each;
        };
        const codec::Frame full = decoded(picture.bytes, 0, picture.typeHint);
        EXPECT_TRUE(full.isComplete);
        EXPECT_EQ(full.image.format(), QImage::Format_RGB32);
        EXPECT_LE(differenceOf(full.image, shown(image)).most, picture.tolerance);
        const QImage reduced = decoded(picture.bytes, 64, picture.typeHint).image;
        EXPECT_LE(differenceOf(reduced, shown(small)).most, picture.tolerance + 5);
        EXPECT_EQ(decoded(picture.bytes, 500, picture.typeHint).image.size(), image.size());
        const auto decoder = opened(picture.bytes, picture.typeHint);
        EXPECT_EQ(decoder->frameCount(), 1U);
        EXPECT_FALSE(decoder->isAnimation());
        EXPECT_TRUE(decoder->frame(stopped).image.isNull());
        EXPECT_TRUE(decoded(picture.bytes, 0, picture.typeHint, 1).image.isNull());
        EXPECT_FALSE(isRefused(picture, {pixels, 64U << 20}));
        EXPECT_TRUE(isRefused(picture, {pixels - 1, 64U << 20}));
        EXPECT_TRUE(isRefused(picture, {pixels, pixels * 4 - 1}));
        const auto properties = pictures::propertiesOf(picture.bytes, picture.typeHint);
        EXPECT_EQ(pictures::entry(properties, u".PixelWidth"_s), u"160"_s);
        EXPECT_EQ(pictures::entry(properties, u".PixelHeight"_s), u"96"_s);
    }
}

TEST(Formats, LimitsHoldToThePixelAndTheByte) {
    using codec::withinLimits;
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
    const QByteArray zeros(12, '\0');
    const std::pair<QByteArray, const char*> cases[] = {
        // An odd literal run and its padding, a run, a step over a row; the bottom row first.
        {bitmap(5, 3, 8, 1, palette + hex("0003000102000203 0000 00020201 0301 0001")),
         "rrggg|rrrrr|rgbww"},
        {bitmap(5, 2, 4, 2, palette + hex("0512 0000 000501230000 0001")), "rgbwr|gbgbg"},
        {bitmap(10, -2, 1, 0, palette.left(8) + hex("ff80000000400000"), 2),
         "gggggggggr|rrrrrrrrrg"},
        {bitmap(4, 1, 2, 0, palette + hex("1b000000")), "rgbw"},
        {bitmap(3, 1, 4, 0, palette + hex("21300000")), "bgw"},
        {bitmap(3, 1, 16, 0, hex("007c e003 1f00 0000"), 0), "rgb"},
        {bitmap(3, 1, 16, 3, hex("00f80000 e0070000 1f000000 00f8 e007 1f00 0000"), 0), "rgb"},
        {bitmap(2, 1, 32, 6, hex("ff00000000ff00000000ff00000000ff ff0000ff 00000000"), 0), "r."},
        {"BM" + zeros + hex("0c000000020001000100 0100 0000ff ff0000 40000000"), "rb"},
        {hex("000101 0000040018 00000000 04000100 0800 0000ff00ff00ff0000ffffff 03020100"), "wbgr"},
        {hex("000109 0100020018 00000000 05000100 0820 0000ff00ff00 82010102 01"), "rrrgr"},
        {hex("000002 0000000000 00000000 03000100 1001 00fc e083 1f00"), "rg."},
        {hex("000003 0000000000 00000000 02000200 0820 00ff ff00"), "kw|wk"},
        {"P1\n# 9 9\n3 2\n101\n0 1 0\n", "kwk|wkw"},
        {"P2 2 1 4 0 4 ", "kw"},
        {"P3 3 1 15 15 0 0 0 15 0 0 0 15", "rgb"},
        {"P4 9 2\n" + hex("8080 7f00"), "kwwwwwwwk|wkkkkkkkw"},
        {"P5 2 1 65535\n" + hex("0000 ffff"), "kw"},
        {"P6 2 1 255\n" + hex("ff0000 0000ff"), "rb"},
        {"P7\nWIDTH 3\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nENDHDR\n" + hex("00ff ffff ff00"), "kw."}};
    for (const auto& [bytes, pixels] : cases) {
        // Only the name says what is a TGA.
        const QString tga = bytes[0] == '\0' ? u"com.truevision.tga-image"_s : QString();
        const QImage image = decoded(bytes, 0, tga).image;
        EXPECT_EQ(letters(image), QLatin1StringView(pixels)) << bytes.left(60).toHex().data();
    }
}

TEST(Formats, OnlyANegativeNumberOfLayersMakesAChannelTransparency) {
    // A red of (200, 0, 100), half of it, on white.
    QByteArray bytes = file("layers.psd");
    expectColour(decoded(bytes).image, {7, 3}, QColor(200, 0, 100, 128));
    bytes.replace(QByteArray("\0\0\0\4\xFF\xFF", 6), QByteArray("\0\0\0\4\0\1", 6));
    EXPECT_EQ(decoded(bytes).image.pixelColor(7, 3), QColor(227, 127, 177));
}

TEST(Formats, ProfilesAreAppliedAndSourceDepthKeepsThemWithTheSamplesOfTheFile) {
    // Each as it comes for the screen, too: what is not red, green and blue is sRGB by then, and a
    // file whose profile exchanges red and blue is as it was stored.
    constexpr bool isDeep = true;
    const std::tuple<const char*, bool, bool> cases[] = {
        {"gradient.jxl", false, !isDeep},  {"deep.jxl", false, isDeep},
        {"deep-glass.jxl", false, isDeep}, {"odd16.png", false, isDeep},
        {"swapped8.png", true, !isDeep},   {"swapped16-interlaced.png", true, isDeep},
        {"swapped16.png", true, isDeep},   {"swapped8-interlaced.png", true, !isDeep},
        {"cmyk16-lzw.tif", false, isDeep}, {"lab16.tif", false, isDeep},
        {"tiles-lab.tif", false, !isDeep}, {"cmyk-inverted.jpg", false, !isDeep},
        {"frames.gif", false, !isDeep},    {"gradient.heic", false, !isDeep}};
    for (const auto& [name, hasProfile, hasDepth] : cases) {
        SCOPED_TRACE(name);
        const QByteArray bytes = file(name);
        if (bytes.isEmpty()) continue;
        for (const int maxSize : {0, 30}) {
            const codec::Frame frame = opened(bytes)->frame(
                {.maxSize = maxSize,
                 .targetProfile = formatpictures::swappedProfile(), // not used
                 .depth = codec::Depth::Source});
            const QImage shown = decoded(bytes, maxSize).image;
            EXPECT_EQ(frame.profile.isEmpty(), !hasProfile);
            const bool isOpaque = shown.format() == QImage::Format_RGB32;
            const auto wanted =
                isOpaque ? QImage::Format_RGBX64 : QImage::Format_RGBA64_Premultiplied;
            ASSERT_EQ(frame.image.format(), hasDepth ? wanted : shown.format());
            QImage eight = frame.image.convertToFormat(shown.format());
            if (hasProfile) eight = eight.rgbSwapped();
            EXPECT_LE(differenceOf(eight, shown).most, 3);
        }
    }
    // All 16 bits are there.
    const QByteArray samples("P6 1 2 65535\n\x12\x34\x56\x78\x9a\xbc", 19);
    const codec::Frame cut = opened(samples)->frame({.depth = codec::Depth::Source});
    EXPECT_EQ(cut.image.pixelColor(0, 0).rgba64(), qRgba64(0x1234, 0x5678, 0x9ABC, 0xFFFF));
    EXPECT_FALSE(cut.isComplete);
    EXPECT_EQ(cut.image.pixelColor(0, 1).rgba64(), qRgba64(0x8080, 0x8080, 0x8080, 0xFFFF));
}

TEST(Formats, AFilterLeavesNothingOfStripesThatAreTooFine) {
    QImage stripes(1500, 40, QImage::Format_RGB32);
    for (int y = 0; y < stripes.height(); ++y)
        for (int x = 0; x < stripes.width(); ++x)
            stripes.setPixel(x, y, x % 2 == 0 ? 0xff000000U : 0xffffffffU);
    for (const auto sample : {QImage::Format_RGB32, QImage::Format_RGBX64}) {
        const QByteArray bytes = PBUtilities::cgImageRefToPngData(stripes.convertToFormat(sample));
        // The last are so many that deep ones are averaged by blocks first.
        for (const int maxSize : {1001, 930, 700, 140}) {
            for (const auto depth : {codec::Depth::Screen, codec::Depth::Source}) {
                const codec::DecodeRequest request{
                    .maxSize = maxSize, .reduction = codec::Reduction::Filtered, .depth = depth};
                const QImage made = opened(bytes)->frame(request).image;
                ASSERT_EQ(made.width(), maxSize);
                for (int x = 8; x < made.width() - 8; ++x)
                    ASSERT_NEAR(qRed(made.pixel(x, made.height() / 2)), 127, 9) << maxSize;
            }
        }
    }
}

TEST(Formats, AFilterOnAThreadOfItsOwnMakesTheSamePicture) {
    const QByteArray whole =
        PBUtilities::cgImageRefToJpegData(formatpictures::gradient({1000, 801}));
    for (const QByteArray& bytes : {whole, whole.first(whole.size() / 2)}) {
        codec::DecodeRequest request{.maxSize = 700, .reduction = codec::Reduction::Filtered};
        const codec::Frame alone = codec::decode(codec::Source::fromBytes(bytes), {}, request);
        request.threads = 2;
        const codec::Frame beside = codec::decode(codec::Source::fromBytes(bytes), {}, request);
        EXPECT_EQ(beside.isComplete, bytes.size() == whole.size());
        EXPECT_TRUE(!alone.image.isNull() && beside.image == alone.image);
    }
}

TEST(Formats, ResultsSayWhichProfileTheyAreIn) {
    codec::DecodeRequest request;
    const QByteArray bytes = file("gradient.jxl");
    EXPECT_TRUE(opened(bytes)->frame(request).profile.isEmpty());
    request.targetProfile = "no profile";
    EXPECT_TRUE(opened(bytes)->frame(request).profile.isEmpty());
    request.targetProfile = formatpictures::swappedProfile();
    const codec::Frame frame = opened(bytes)->frame(request);
    EXPECT_EQ(frame.profile, request.targetProfile);
    EXPECT_LE(differenceOf(frame.image.rgbSwapped(), decoded(bytes).image).most, 3);
    // Whatever the number of threads, each row is converted once.
    const QByteArray large =
        PBUtilities::cgImageRefToPngData(formatpictures::gradient({1100, 1003}));
    const QImage alone = opened(large)->frame(request).image;
    request.threads = 4;
    EXPECT_EQ(opened(large)->frame(request).image, alone);
    EXPECT_LE(differenceOf(alone.rgbSwapped(), decoded(large).image).most, 3);
}

TEST(Formats, DeepGradientsKeepTheirStepsOnTheWayToTheScreensColours) {
    QImage gradient(8192, 1, QImage::Format_RGBX64);
    for (int x = 0; x < gradient.width(); ++x) {
        const auto grey = static_cast<quint16>(x * 8);
        gradient.setPixelColor(x, 0, QColor(QRgba64::fromRgba64(grey, grey, grey, 0xFFFF)));
    }
    const codec::DecodeRequest request{
        .targetProfile = QColorSpace(QColorSpace::SRgbLinear).iccProfile()};
    const QImage made = opened(PBUtilities::cgImageRefToPngData(gradient))->frame(request).image;
    std::set<int> steps;
    for (int x = 0; x < made.width(); ++x)
        steps.insert(qGreen(made.pixel(x, 0)));
    EXPECT_GE(steps.size(), 250U) << "some 180 of 256 by way of eight bits";
}

TEST(Formats, FramesAreComposed) {
    // In the square, in its transparent row, its last pixel and the next, in the third frame.
    const QPoint points[] = {{10, 10}, {10, 5}, {14, 14}, {15, 14}, {30, 20}, {2, 2}};
    const std::pair<int, QString> thirdFrames[] = {
        {DISPOSE_DO_NOT, u"brbrgr"_s},
        {DISPOSE_BACKGROUND, u"...rgr"_s},
        {DISPOSE_PREVIOUS, u"rrrrgr"_s}};
    using formatpictures::animatedPng;
    using formatpictures::gif;
    for (const auto& [disposal, third] : thirdFrames) {
        for (const QByteArray& bytes :
             {gif(disposal, false), gif(disposal, true), animatedPng(disposal, false),
              animatedPng(disposal, true)}) {
            SCOPED_TRACE(::testing::Message() << disposal << ' ' << bytes.left(40).toHex().data());
            const auto decoder = opened(bytes);
            ASSERT_EQ(decoder->frameCount(), 3U);
            EXPECT_TRUE(decoder->isAnimation());
            const std::pair<int, QString> frames[] = {
                {50, u"rrrrrr"_s}, {120, u"brbrrr"_s}, {10, third}};
            for (std::size_t frame = 0; frame < 3; ++frame) {
                const QImage image = decoded(bytes, 0, {}, frame).image;
                ASSERT_EQ(image.size(), QSize(40, 30));
                QString shown;
                for (const QPoint& point : points)
                    shown += letterAt(image, point.x(), point.y());
                EXPECT_EQ(std::pair(decoder->frameDelay(frame), shown), frames[frame]) << frame;
            }
            EXPECT_EQ(decoded(bytes).image.format(), QImage::Format_RGB32);
            EXPECT_EQ(letterAt(decoded(bytes, 20, {}, 1).image, 5, 5), u'b');
            EXPECT_TRUE(decoded(bytes, 0, {}, 3).image.isNull());
        }
    }
}

TEST(Formats, APngHasTheSizeThatItSaidFirst) {
    QByteArray file = formatpictures::animatedPng(DISPOSE_PREVIOUS, true);
    constexpr int headerAt = 8;
    constexpr int headerLength = 25;
    QByteArray smaller = file.sliced(headerAt, headerLength);
    smaller[11] = smaller[15] = 4; // the last bytes of width and height
    file.insert(file.indexOf("IEND") - 4, smaller);
    EXPECT_EQ(decoded(file, 0, {}, 2).image.size(), QSize(40, 30));
}

TEST(Formats, FramesComeAsTheyAreInWhateverOrderAndOnesThatWereDrawnAreNotReadAgain) {
    for (const auto& [bytes, count] :
         {std::pair(formatpictures::gif(DISPOSE_PREVIOUS, false), 3U),
          {file("frames.png"), 3U},
          {file("frames.webp"), 2U},
          {file("frames.jxl"), 2U},
          {file("frames.avif"), 2U}}) {
        const auto decoder = opened(bytes);
        for (const std::size_t frame : {0U, 1U, count - 1, count - 1, 0U, count - 1, 1U})
            EXPECT_EQ(decoder->frame({.frame = frame}).image, decoded(bytes, 0, {}, frame).image);
    }
    const QByteArray whole = formatpictures::gif(DISPOSE_PREVIOUS, false);
    std::string bytes = whole.toStdString();
    const auto decoder = opened(QByteArray::fromRawData(bytes.data(), whole.size()));
    EXPECT_FALSE(decoder->frame({.frame = 1}).image.isNull());
    std::fill_n(bytes.begin(), bytes.size() / 2, '\0');
    const QImage last = decoder->frame({.frame = 2}).image;
    EXPECT_EQ(last, decoded(whole, 0, {}, 2).image);
}

/// Where the data of a picture end, it is not worth to look for more in each of its rows.
TEST(Formats, ATiffWhoseDataEndIsGivenUpSoon) {
    const codec::Frame frame = decoded(
        stripTiff({.width = 4, .height = 200, .samples = 1, .photometric = 1, .strips = 200}) +
        QByteArray(4 * 100, '\xff'));
    EXPECT_FALSE(frame.isComplete);
    EXPECT_EQ(frame.image.pixel(0, 99), qRgb(255, 255, 255));
    EXPECT_EQ(frame.image.pixel(0, 120), qRgb(0, 0, 0)) << "one row more might have been there";
    EXPECT_EQ(frame.image.pixel(0, 199), qRgb(128, 128, 128));
}

/// Hundreds of samples a pixel cost neither memory nor time where three are shown.
TEST(Formats, ATiffOfManySamplesReadsThoseThatItShows) {
    const QByteArray planes("\xff\0\0\0\0\xff\0\0\0\0\xff\0\x11\x22\x33\x44", 16);
    const QByteArray colours = stripTiff({.arrangement = 2, .strips = 200});
    EXPECT_EQ(letters(decoded(colours + planes).image), u"rg|bk");
    const QByteArray grays = stripTiff({.photometric = 1, .arrangement = 2, .strips = 200});
    EXPECT_EQ(letters(decoded(grays + planes).image), u"wk|kk");
    QByteArray together(4 * 200, '\x55');
    together.replace(200, 3, QByteArray("\0\xff\0", 3));
    EXPECT_EQ(letters(decoded(stripTiff({.length = 800}) + together).image), u"?g|??");
    // More to unpack than a decode may hold, and all of it to be skipped: runs of 128 samples.
    const codec::DecodeRequest request{.limits = {.bytes = 200 * 1000 * 1000}};
    const QByteArray packed = stripTiff(
        {.width = 1200, .height = 1200, .compression = 32773, .strips = 1200, .length = 3750});
    const QByteArray row = QByteArray("\x81\x55").repeated(1875);
    EXPECT_TRUE(opened(packed + row)->frame(request).image.isNull());
}

TEST(Formats, FramesHaveTheirSizesDelaysAndTransparency) {
    // Files and their frame, size, delay, and the colour of a point.
    const std::tuple<const char*, std::size_t, QSize, int, QPoint, QColor> cases[] = {
        {"frames.webp frames.jxl frames.avif", 0, {40, 30}, 50, {7, 7}, QColor(255, 0, 0)},
        {"frames.webp frames.jxl frames.avif", 1, {40, 30}, 120, {7, 7}, QColor(0, 0, 255, 128)},
        // The largest entry of an icon comes first; the last one has a mask.
        {"sizes.ico", 0, {64, 64}, 0, {9, 9}, QColor(255, 255, 0, 50)},
        {"sizes.ico", 1, {48, 48}, 0, {20, 20}, QColor(0, 200, 0, 100)},
        {"sizes.ico", 2, {16, 16}, 0, {12, 12}, QColor(255, 0, 0)},
        {"sizes.ico", 2, {16, 16}, 0, {3, 12}, QColor(0, 0, 0, 0)},
        {"glass.jxl deep-glass.jxl", 0, {40, 30}, 0, {20, 20}, QColor(200, 100, 50, 128)}};
    for (const auto& [names, frame, size, delay, point, colour] : cases) {
        for (const QString& name : support::words(names)) {
            SCOPED_TRACE(::testing::Message() << name.toStdString() << ' ' << frame);
            const QByteArray bytes = file(name.toStdString());
            const QImage image = decoded(bytes, 0, {}, frame).image;
            ASSERT_EQ(image.size(), size);
            expectColour(image, point, colour);
            EXPECT_EQ(opened(bytes)->frameDelay(frame), delay);
            EXPECT_EQ(opened(bytes)->isAnimation(), delay > 0);
            EXPECT_EQ(decoded(bytes, 10, {}, frame).image.width(), 10);
        }
    }
    EXPECT_EQ(opened(file("frames.webp"))->frameCount(), 2U);
    EXPECT_EQ(opened(file("sizes.ico"))->frameCount(), 3U);
}

TEST(Formats, NegativesAreDeveloped) {
    const QString type = u"com.adobe.raw-image"_s;
    const QByteArray negative = file("sensor.dng");
    const QImage full = decoded(negative, 0, type).image;
    EXPECT_EQ(full.size(), QSize(64, 48)) << "as stored, not turned";
    const QImage small = decoded(negative, 32, type).image;
    ASSERT_EQ(small.size(), QSize(32, 24));
    EXPECT_LE(qRed(small.pixel(4, 4)) - qRed(small.pixel(28, 20)), 4) << "evenly lit";
    EXPECT_TRUE(decoded(negative, 0, type, 1).image.isNull());
    const QImage deep = opened(negative, type)->frame({.depth = codec::Depth::Source}).image;
    EXPECT_EQ(deep.format(), QImage::Format_RGBX64);
    EXPECT_LE(differenceOf(deep, full).most, 3);
}

TEST(Formats, CutOffPicturesKeepTheirRowsAndAreIncomplete) {
    const QImage image = formatpictures::gradient({600, 400});
    const QByteArray jpeg = PBUtilities::cgImageRefToJpegData(image);
    const codec::Frame half = decoded(jpeg.left(jpeg.size() / 2));
    ASSERT_EQ(half.image.size(), image.size());
    expectColour(half.image, {300, 40}, image.pixelColor(300, 40), 16);
    // The library takes the pixels in pieces of 8 KiB, of which one has to be whole.
    const codec::Frame cut = decoded(file("large-interlaced.png").chopped(500));
    ASSERT_EQ(cut.image.size(), QSize(1600, 960));
    EXPECT_EQ(cut.image.constScanLine(959)[1599 * 4 + 3], 255);
    EXPECT_FALSE(half.isComplete || cut.isComplete);
}

TEST(Formats, StrongReductionsOfDeepPicturesStayInPlace) {
    // Neither side divides evenly, and the last rows and columns count as well.
    const QImage image = formatpictures::gradient({701, 403});
    const QImage plain = decoded(PBUtilities::cgImageRefToPngData(image), 30).image;
    ASSERT_EQ(plain.size(), QSize(30, 17));
    EXPECT_LE(differenceOf(decoded(file("odd16.png"), 30).image, plain).most, 5);
    QByteArray bytes("P6 701 403 65535\n");
    const QImage samples = image.convertToFormat(QImage::Format_RGB888);
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 701 * 3; ++x)
            bytes.append(2, static_cast<char>(samples.constScanLine(y)[x])); // times 257
    const codec::Frame cut = decoded(bytes, 30);
    ASSERT_EQ(cut.image.size(), plain.size());
    EXPECT_FALSE(cut.isComplete);
    EXPECT_LE(differenceOf(cut.image.copy(0, 0, 30, 3), plain.copy(0, 0, 30, 3)).most, 5);
    EXPECT_EQ(cut.image.pixel(15, 16), 0xFF808080U);
}

TEST(Formats, DamageOfEveryKindDoesNoHarm) {
    made::forDamagedSamples(LLVMFuzzerTestOneInput);
}
