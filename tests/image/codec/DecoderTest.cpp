#include "image/codec/Decoder.h"
#include "image/codec/Bitmaps.h"
#include "image/codec/MadePictures.h"
#include "image/codec/PBImageImporter.h"
#include "image/codec/PBImageImporterManager.h"
#include "image/codec/metadata/Pictures.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

using made::gradient;

codec::Frame decoded(const QByteArray& bytes, int maxSize = 0) {
    codec::DecodeRequest request;
    request.maxSize = maxSize;
    return codec::decode(codec::Source::fromBytes(bytes), {}, request);
}

bool isNear(QRgb one, QRgb other, int tolerance) {
    return std::abs(qRed(one) - qRed(other)) <= tolerance &&
           std::abs(qGreen(one) - qGreen(other)) <= tolerance &&
           std::abs(qBlue(one) - qBlue(other)) <= tolerance;
}

} // namespace

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
    QByteArray bmp = pictures::saved(gradient({4, 4}), "BMP");
    for (const int at : {18, 22})
        bmp.replace(at, 4, QByteArray::fromHex("60ea0000"));
    EXPECT_TRUE(decoded(bmp, 256).image.isNull());
    EXPECT_TRUE(decoded(QByteArray(1000, '\0')).image.isNull());
}

TEST(Importer, TypesFollowTheNameAndOddFilesHaveNone) {
    const QTemporaryDir folder;
    PBImageImporterManager manager;
    const auto importer = [&](const QString& name) {
        return manager.imageImporterForImageURL(QUrl::fromLocalFile(folder.filePath(name)));
    };
    const QByteArray jpeg = PBUtilities::cgImageRefToJpegData(gradient({40, 20}));
    support::writeFile(folder.filePath(u"a.JPG"_s), jpeg);
    support::writeFile(folder.filePath(u"a.mpo"_s), jpeg);
    support::writeFile(folder.filePath(u"a.txt"_s), jpeg);
    QDir(folder.path()).mkdir(u"x.jpg"_s);
    ASSERT_EQ(::mkfifo(folder.filePath(u"pipe.jpg"_s).toLocal8Bit().constData(), 0600), 0);
    const auto good = importer(u"a.JPG"_s);
    ASSERT_TRUE(good);
    EXPECT_EQ(good->imageCount(), 1U);
    EXPECT_EQ(good->utiType(), u"public.jpeg"_s);
    EXPECT_EQ(good->createImageWithMaxSize(10, 0).size(), QSize(10, 5));
    EXPECT_TRUE(good->createImageWithMaxSize(10, 7).isNull());
    for (const auto& name : {u"a.mpo", u"a.txt", u"x.jpg", u"pipe.jpg", u"missing.jpg"})
        EXPECT_FALSE(importer(QString::fromUtf16(name))) << QString::fromUtf16(name).toStdString();
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
    for (int orientation = 0; orientation < 10; ++orientation)
        EXPECT_EQ(PBUtilities::orientationToAngle(orientation), angles[orientation]);
}
