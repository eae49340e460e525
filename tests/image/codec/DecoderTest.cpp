#include "image/codec/Decoder.h"
#include "image/codec/Bitmaps.h"
#include "image/codec/MadePictures.h"
#include "image/codec/PBImageImporter.h"
#include "image/codec/PBImageImporterManager.h"
#include "support/Support.h"

#include <QBuffer>
#include <QTemporaryDir>

#include <random>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <tiffio.h>
#include <webp/encode.h>

namespace {

using made::gradient;

QByteArray saved(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QByteArray webp(const QImage& image) {
    std::uint8_t* output = nullptr;
    const std::size_t length = WebPEncodeLosslessBGRA(
        image.constBits(), image.width(), image.height(), static_cast<int>(image.bytesPerLine()),
        &output);
    QByteArray bytes(reinterpret_cast<const char*>(output), static_cast<qsizetype>(length));
    WebPFree(output);
    return bytes;
}

/// Uncompressed, in tiles or strips, of 8 or 16 bits.
QByteArray madeTiff(const QTemporaryDir& folder, bool tiled, int bits, std::uint16_t photometric) {
    const QString path = folder.filePath(QStringLiteral("made.tif"));
    const std::uint32_t side = 64;
    const std::uint16_t samples = photometric == PHOTOMETRIC_SEPARATED ? 4 : 3;
    TIFF* file = TIFFOpen(path.toLocal8Bit().constData(), "w");
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    // Every pixel 200, 100, 50 of 255, or as inks, or as L = 78, a = 0, b = 0.
    const int rgb[] = {200, 100, 50, 0};
    const int lab[] = {200, 0, 0, 0};
    const int* values = photometric == PHOTOMETRIC_CIELAB ? lab : rgb;
    std::vector<std::uint8_t> pixels(side * side * samples * static_cast<std::size_t>(bits / 8));
    for (std::size_t index = 0; index < std::size_t{side} * side * samples; ++index) {
        const int value = values[index % samples];
        if (bits == 8)
            pixels[index] = static_cast<std::uint8_t>(value);
        else
            reinterpret_cast<std::uint16_t*>(pixels.data())[index] =
                static_cast<std::uint16_t>(value * 257);
    }
    if (tiled) {
        TIFFSetField(file, TIFFTAG_TILEWIDTH, side);
        TIFFSetField(file, TIFFTAG_TILELENGTH, side);
        TIFFWriteEncodedTile(file, 0, pixels.data(), static_cast<tmsize_t>(pixels.size()));
    } else {
        TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, side);
        TIFFWriteEncodedStrip(file, 0, pixels.data(), static_cast<tmsize_t>(pixels.size()));
    }
    TIFFClose(file);
    return support::readFile(path);
}

codec::Frame decoded(const QByteArray& bytes, int maxSize = 0, QStringView hint = {}) {
    codec::DecodeRequest request;
    request.maxSize = maxSize;
    return codec::decode(codec::Source::fromBytes(bytes), hint, request);
}

bool isNear(QRgb one, QRgb other, int tolerance) {
    return std::abs(qRed(one) - qRed(other)) <= tolerance &&
           std::abs(qGreen(one) - qGreen(other)) <= tolerance &&
           std::abs(qBlue(one) - qBlue(other)) <= tolerance;
}

std::map<QString, QByteArray> onePerFormat() {
    const QImage image = gradient({96, 64});
    const QTemporaryDir folder;
    return {
        {QStringLiteral("jpeg"), PBUtilities::cgImageRefToJpegData(image)},
        {QStringLiteral("png"), PBUtilities::cgImageRefToPngData(image)},
        {QStringLiteral("bmp"), saved(image, "BMP")},
        {QStringLiteral("ppm"), saved(image, "PPM")},
        {QStringLiteral("webp"), webp(image)},
        {QStringLiteral("tiff"), madeTiff(folder, false, 8, PHOTOMETRIC_RGB)},
    };
}

} // namespace

TEST(Decoder, FormatsGiveTheirPixelsAndTheWantedSize) {
    const QImage image = gradient({96, 64});
    for (const auto& [name, bytes] : onePerFormat()) {
        SCOPED_TRACE(name.toStdString());
        if (name == u"tiff") continue;
        const codec::Frame full = decoded(bytes);
        ASSERT_EQ(full.image.size(), image.size());
        EXPECT_TRUE(full.isComplete);
        EXPECT_EQ(full.image.format(), QImage::Format_RGB32);
        for (const QPoint point : {QPoint(2, 2), QPoint(90, 5), QPoint(10, 60), QPoint(48, 32)}) {
            EXPECT_TRUE(isNear(full.image.pixel(point), image.pixel(point), 16));
        }
        const QImage small = decoded(bytes, 24).image;
        ASSERT_EQ(small.size(), QSize(24, 16));
        EXPECT_TRUE(isNear(small.pixel(12, 8), image.pixel(50, 34), 16));
        EXPECT_EQ(decoded(bytes, 500).image.size(), image.size()) << "never enlarged";
    }
}

TEST(Decoder, TiffPixelsOfEveryModelComeOutRight) {
    const QTemporaryDir folder;
    for (const bool tiled : {false, true}) {
        for (const int bits : {8, 16}) {
            SCOPED_TRACE(::testing::Message() << "tiled " << tiled << ", " << bits << " bits");
            const auto pixel = [&](std::uint16_t photometric) {
                const QImage image = decoded(madeTiff(folder, tiled, bits, photometric)).image;
                return image.isNull() ? 0 : image.pixel(40, 40);
            };
            EXPECT_EQ(pixel(PHOTOMETRIC_RGB), qRgb(200, 100, 50));
            EXPECT_TRUE(isNear(pixel(PHOTOMETRIC_SEPARATED), qRgb(55, 155, 205), 2));
            // L = 78.4 is a gray of 194 in sRGB.
            EXPECT_TRUE(isNear(pixel(PHOTOMETRIC_CIELAB), qRgb(194, 194, 194), 3));
        }
    }
}

TEST(Decoder, AlphaIsKeptAndOpaquePicturesLoseIt) {
    QImage image(8, 8, QImage::Format_ARGB32);
    image.fill(qRgba(255, 0, 0, 128));
    const QImage half = decoded(PBUtilities::cgImageRefToPngData(image)).image;
    EXPECT_EQ(half.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(half.pixelColor(3, 3).rgba(), qRgba(255, 0, 0, 128));
    image.fill(Qt::red);
    EXPECT_EQ(
        decoded(PBUtilities::cgImageRefToPngData(image)).image.format(), QImage::Format_RGB32);
}

TEST(Decoder, TruncatedPicturesKeepTheirRows) {
    const QImage image = gradient({600, 400});
    const QByteArray jpeg = PBUtilities::cgImageRefToJpegData(image);
    const codec::Frame half = decoded(jpeg.left(jpeg.size() / 2));
    ASSERT_EQ(half.image.size(), image.size());
    EXPECT_FALSE(half.isComplete);
    EXPECT_TRUE(isNear(half.image.pixel(300, 40), image.pixel(300, 40), 16));
}

TEST(Decoder, ImpossibleDeclarationsAreRefused) {
    EXPECT_TRUE(decoded("P6 60000 60000 255\n12345").image.isNull());
    QByteArray bmp = saved(gradient({4, 4}), "BMP");
    for (const int at : {18, 22})
        bmp.replace(at, 4, QByteArray::fromHex("60ea0000"));
    EXPECT_TRUE(decoded(bmp, 256).image.isNull());
    EXPECT_TRUE(decoded(QByteArray(1000, '\0')).image.isNull());
}

TEST(Decoder, DamagedBytesNeverDoHarm) {
    std::mt19937 random(20240607); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same cases every time
    for (const auto& [name, bytes] : onePerFormat()) {
        SCOPED_TRACE(name.toStdString());
        for (int round = 0; round < 300; ++round) {
            QByteArray damaged = bytes;
            const auto at = [&] {
                return static_cast<qsizetype>(random() % static_cast<unsigned>(damaged.size()));
            };
            if (round % 3 == 0) damaged.truncate(at() + 1);
            for (int flip = 0; flip < 1 + round % 8; ++flip)
                damaged[at()] = static_cast<char>(random());
            if (round % 5 == 0) damaged.insert(at(), damaged.mid(at(), 40));
            codec::DecodeRequest request;
            request.maxSize = round % 2 == 0 ? 0 : 32;
            request.limits = {1U << 18, 16U << 20};
            const codec::Frame frame =
                codec::decode(codec::Source::fromBytes(damaged), {}, request);
            EXPECT_LE(frame.image.width() * 1LL * frame.image.height(), 1 << 18);
        }
    }
}

TEST(Importer, TypesFollowTheNameAndOddFilesHaveNone) {
    const QTemporaryDir folder;
    PBImageImporterManager manager;
    const auto importer = [&](const QString& name) {
        return manager.imageImporterForImageURL(QUrl::fromLocalFile(folder.filePath(name)));
    };
    const QByteArray jpeg = PBUtilities::cgImageRefToJpegData(gradient({40, 20}));
    support::writeFile(folder.filePath(QStringLiteral("a.JPG")), jpeg);
    support::writeFile(folder.filePath(QStringLiteral("a.mpo")), jpeg);
    support::writeFile(folder.filePath(QStringLiteral("a.txt")), jpeg);
    QDir(folder.path()).mkdir(QStringLiteral("x.jpg"));
    ASSERT_EQ(
        ::mkfifo(folder.filePath(QStringLiteral("pipe.jpg")).toLocal8Bit().constData(), 0600), 0);
    const auto good = importer(QStringLiteral("a.JPG"));
    ASSERT_TRUE(good);
    EXPECT_EQ(good->imageCount(), 1U);
    EXPECT_EQ(good->utiType(), QStringLiteral("public.jpeg"));
    EXPECT_EQ(good->createImageWithMaxSize(10, 0).size(), QSize(10, 5));
    EXPECT_TRUE(good->createImageWithMaxSize(10, 7).isNull());
    for (const auto& name : {u"a.mpo", u"a.txt", u"x.jpg", u"pipe.jpg", u"missing.jpg"}) {
        EXPECT_FALSE(importer(QString::fromUtf16(name))) << QString::fromUtf16(name).toStdString();
    }
}

TEST(Bitmaps, ScalesTurnsAndPlacesAsTold) {
    const QImage thin = gradient({4000, 1});
    EXPECT_EQ(PBImageImporter::scaleCGImageRef(thin, 256).size(), QSize(256, 1));
    EXPECT_TRUE(PBUtilities::scaleCGImageRef(thin, 256).isNull());
    const QImage image = gradient({40, 20});
    EXPECT_EQ(PBUtilities::rotateImageRef(image, 720).cacheKey(), image.cacheKey());
    const QImage turned = PBUtilities::rotateImageRef(image, 90);
    ASSERT_EQ(turned.size(), QSize(20, 40));
    EXPECT_EQ(turned.pixel(0, 39), image.pixel(0, 0)) << "counter-clockwise";
    EXPECT_EQ(PBUtilities::rotateImageRef(image, -90), PBUtilities::rotateImageRef(image, 270));
    QRectF rect(0, 0, 100, 50);
    EXPECT_EQ(PBUtilities::fitInRect(rect, 0, 10, true), 1.0);
    EXPECT_EQ(rect, QRectF(0, 0, 100, 50));
    EXPECT_EQ(PBUtilities::fitInRect(rect, 10, 10, false), 1.0);
    EXPECT_EQ(rect, QRectF(45, 20, 10, 10));
    EXPECT_EQ(PBUtilities::rotateRect({10, 10, 20, 10}, -90), QRectF(15, 5, 10, 20));
    const double angles[] = {0, 0, 0, 180, 0, 0, -90, 0, 90, 0};
    for (int orientation = 0; orientation < 10; ++orientation) {
        EXPECT_EQ(PBUtilities::orientationToAngle(orientation), angles[orientation]);
    }
}
