#include "codec/Bitmaps.h"
#include "codec/MadePictures.h"
#include "codec/PBImageImporter.h"
#include "codec/PBImageImporterManager.h"
#include "codec/pixels/Colour.h"

#include <sys/stat.h>
#include <unistd.h>

using formatpictures::gradient;

TEST(Colours, SamplesOfEveryKindBecomeWhatAScreenShows) {
    using enum codec::ColourModel;
    using enum codec::SampleType;
    using enum codec::AlphaType;
    using codec::ColourDescription;
    struct Case {
        codec::PixelLayout layout;
        ColourDescription colours;
        std::vector<double> samples; // as fractions of the most
        std::array<int, 4> shown;    // red, green, blue, alpha
    };
    const ColourDescription quantiser{{}, 1, 16, 0, {}};
    const Case cases[] = {
        {{.model = Gray}, {}, {0.5}, {128, 128, 128, 255}},
        {{.model = Gray, .sample = U16, .alpha = Straight}, {}, {1, 0.5}, {255, 255, 255, 128}},
        {{.sample = U16, .alpha = Premultiplied}, {}, {0.5, 0, 0.2, 0.5}, {255, 0, 102, 128}},
        {{.model = Cmyk}, {}, {1, 0, 0, 0.5}, {0, 128, 128, 255}},
        {{.model = Cmyk, .isInverted = true}, {}, {1, 0, 0.5, 1}, {255, 0, 128, 255}},
        {{.sample = Float}, {}, {0.2159, 2, -1}, {128, 255, 0, 255}},
        {{.model = Gray, .sample = Float, .alpha = Straight}, {}, {0.5, 0.5}, {188, 188, 188, 128}},
        {{}, {{}, 0, 0, 1, {}}, {0.2159, 1, 0}, {128, 255, 0, 255}},
        // 203, 100 and 10,000 nits, and a hue that stays when it is far too bright.
        {{.sample = U16}, quantiser, {0.58069, 0.58069, 0.58069}, {237, 237, 237, 255}},
        {{.sample = U16}, quantiser, {0.50808, 0.50808, 0.50808}, {186, 186, 186, 255}},
        {{.sample = U16}, quantiser, {1, 1, 1}, {254, 254, 254, 255}},
        {{.sample = U16, .alpha = Straight}, quantiser, {1, 0, 0, 0.5}, {254, 0, 0, 128}},
        {{.sample = U16}, {{}, 9, 16, 0, {}}, {0.50808, 0, 0}, {229, 0, 0, 255}},
        {{.sample = U16}, {{}, 9, 18, 0, {}}, {.75, .75, .75}, {237, 237, 237, 255}},
    };
    for (const Case& one : cases) {
        std::vector<std::uint8_t> bytes;
        std::vector<std::uint16_t> words;
        std::vector<float> floats;
        for (const double sample : one.samples) {
            bytes.push_back(static_cast<std::uint8_t>(std::lround(sample * 255) & 255));
            words.push_back(static_cast<std::uint16_t>(std::lround(sample * 65535) & 65535));
            floats.push_back(static_cast<float>(sample));
        }
        const std::array<const void*, 3> rows{bytes.data(), words.data(), floats.data()};
        QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
        codec::ColourConverter converter(one.layout, one.colours, {});
        converter.convertRow(
            rows[static_cast<std::size_t>(one.layout.sample)],
            reinterpret_cast<QRgb*>(image.scanLine(0)), 1);
        converter.finish(image);
        const QColor pixel = image.pixelColor(0, 0);
        const std::array shown{pixel.red(), pixel.green(), pixel.blue(), pixel.alpha()};
        for (std::size_t channel = 0; channel < 4; ++channel)
            EXPECT_NEAR(shown[channel], one.shown[channel], 1)
                << &one - cases << " channel " << channel;
    }
}

TEST(Importer, TypesFollowTheNameAndOddFilesAnswerNothing) {
    const QTemporaryDir folder;
    PBImageImporterManager manager;
    const auto importer = [&](const QString& name) {
        return manager.imageImporterForImageURL(folder.filePath(name));
    };
    const QByteArray jpeg = PBUtilities::cgImageRefToJpegData(gradient({40, 20}));
    const auto good = importer(u"a.JPG"_s);
    ASSERT_TRUE(good);
    EXPECT_FALSE(good->propertiesAtIndex(0, {}).ifRead()) << "not there yet";
    for (const auto* name : {u"a.JPG", u"a.mpo", u"a.txt"})
        support::writeFile(folder.filePath(QString::fromUtf16(name)), jpeg);
    EXPECT_EQ(good->imageCount(), 1U);
    EXPECT_EQ(good->utiType(), u"public.jpeg"_s);
    EXPECT_EQ(good->createImageWithMaxSize(10, 0).size(), QSize(10, 5));
    EXPECT_TRUE(good->createImageWithMaxSize(10, 7).isNull());
    EXPECT_FALSE(importer(u"a.mpo"_s));
    EXPECT_FALSE(importer(u"a.txt"_s));
    QDir(folder.path()).mkdir(u"x.jpg"_s);
    ASSERT_EQ(::mkfifo(folder.filePath(u"pipe.jpg"_s).toLocal8Bit().constData(), 0600), 0);
    std::vector<QString> paths;
    QString widths;
    for (const QString& name : support::words("x.jpg a.JPG a.txt pipe.jpg missing.jpg a.JPG")) {
        paths.push_back(folder.filePath(name));
        const auto odd = importer(name);
        if (!odd || name == u"a.JPG") continue;
        EXPECT_EQ(odd->imageCount(), 0U) << name.toStdString();
        EXPECT_TRUE(odd->utiType().isEmpty() && odd->createImageWithMaxSize(10, 0).isNull());
    }
    for (const auto& properties : manager.propertiesOfImages(paths))
        widths += properties.status == codec::PropertiesStatus::Read
                      ? properties.properties.at(u"PixelWidth"_s).toText() + u' '
                  : properties.status == codec::PropertiesStatus::NotNow ? u"later "_s
                                                                         : u"none "_s;
    EXPECT_EQ(widths, u"none 40 none none later 40 ");
}

TEST(Bitmaps, PreloadingCopiesNothingThatNeedNotBeCopied) {
    const QImage image = gradient({40, 30});
    for (const QColorSpace& same : {QColorSpace(), QColorSpace(QColorSpace::SRgb)})
        EXPECT_EQ(PBUtilities::preloadedImageRef(image, same).constBits(), image.constBits());
    QImage own = image.copy();
    const uchar* pixels = own.constBits();
    const QColorSpace wide(QColorSpace::DisplayP3);
    const QImage inPlace = PBUtilities::preloadedImageRef(std::move(own), wide);
    EXPECT_EQ(inPlace.constBits(), pixels);
    EXPECT_NE(inPlace, image);
    EXPECT_EQ(inPlace, PBUtilities::preloadedImageRef(image, wide));
}

TEST(Bitmaps, ScalesTurnsAndPlacesAsTold) {
    const QImage thin = gradient({4000, 1});
    EXPECT_EQ(PBUtilities::scaleCGImageRef(thin, 256).size(), QSize(256, 1));
    QImage pair(2, 1, QImage::Format_RGB32);
    pair.setPixel(0, 0, qRgb(1, 0, 200));
    pair.setPixel(1, 0, qRgb(2, 0, 100));
    EXPECT_EQ(PBUtilities::scaleCGImageRef(pair, 1).pixel(0, 0), qRgb(2, 0, 150)) << "rounded";
    QRectF rect(0, 0, 100, 50);
    EXPECT_EQ(PBUtilities::fitInRect(rect, 0, 10, true), 1.0);
    EXPECT_EQ(rect, QRectF(0, 0, 100, 50));
    EXPECT_EQ(PBUtilities::fitInRect(rect, 10, 10, false), 1.0);
    EXPECT_EQ(rect, QRectF(45, 20, 10, 10));
    const double angles[] = {0, 0, 0, 180, 0, 0, -90, 0, 90, 0};
    for (int orientation = 0; orientation < 10; ++orientation)
        EXPECT_EQ(PBUtilities::orientationToAngle(orientation), angles[orientation]);
}
