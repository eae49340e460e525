#include "image/codec/metadata/ImageProperties.h"
#include "image/codec/metadata/Pictures.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QImage>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using pictures::propertiesOf;

using Sample = std::pair<QByteArray, QString>; // bytes and type

void writeAll(Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.Model"] = "Canon EOS 40D";
    exif["Exif.Photo.ISOSpeedRatings"] = uint16_t(100);
    exif["Exif.Photo.UserComment"] = "charset=Unicode hello";
    exif["Exif.Photo.LensSpecification"] = "24/1 70/1 28/10 28/10";
    exif["Exif.CanonCs.LensType"] = uint16_t(26);
    exif["Exif.GPSInfo.GPSLatitude"] = "52/1 30/1 36/1";
    exif["Exif.GPSInfo.GPSTimeStamp"] = "9/1 5/1 7/1";
    iptc["Iptc.Application2.City"] = "Paris";
    iptc["Iptc.Application2.DateCreated"] = "2010-07-01";
    xmp["Xmp.dc.description"] = "lang=x-default La mer";
    xmp["Xmp.aux.Lens"] = "35.0 mm f/2.0";
}

std::vector<Sample> samples() {
    QImage image(64, 48, QImage::Format_ARGB32);
    image.fill(Qt::red);
    std::vector<Sample> all;
    for (const char* format : {"JPEG", "PNG", "TIFF", "WEBP"})
        all.push_back({pictures::withMetadata(pictures::saved(image, format), writeAll), {}});
    all.push_back({pictures::dng(), u"com.adobe.raw-image"_s});
    for (const char* format : {"BMP", "PPM", "ICO"})
        all.push_back({pictures::saved(image, format), {}});
    all.push_back({pictures::tiff(true, 400), {}});
    all.push_back({pictures::heif({pictures::box("irot", QByteArray(1, 1))}), {}});
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

TEST(HostileMetadataTest, damagedFilesOfEveryFormatGiveSomethingSoundOrNothing) {
    constexpr int rounds = 150;
    for (const auto& [bytes, type] : samples()) {
        ASSERT_TRUE(propertiesOf(bytes, type)) << bytes.left(8).toHex().toStdString();
        std::mt19937 random(20240917);
        QElapsedTimer timer;
        timer.start();
        for (int round = 0; round < rounds; ++round) {
            const auto properties = propertiesOf(support::mutated(bytes, random), type);
            if (properties) expectSound(*properties);
        }
        // A hundredfold of what a debug build under a sanitizer takes.
        EXPECT_LT(timer.elapsed(), 60000);
    }
}

TEST(HostileMetadataTest, whatIsNoPictureIsNothingAtOnce) {
    const int zeros = memfd_create("zeros", MFD_CLOEXEC);
    ASSERT_EQ(ftruncate(zeros, off_t(200) << 20), 0);
    EXPECT_FALSE(codec::readImageProperties(zeros, u"public.jpeg"_s, 0));
    EXPECT_FALSE(codec::readImageProperties(zeros, u"com.nikon.raw-image"_s, 0));
    close(zeros);

    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_FALSE(codec::readImageProperties(ends[0], u"public.jpeg"_s, 0));
    close(ends[0]);
    close(ends[1]);

    const QTemporaryDir folder;
    const int directory = open(folder.path().toUtf8().constData(), O_RDONLY | O_CLOEXEC);
    EXPECT_FALSE(codec::readImageProperties(directory, u"public.jpeg"_s, 0));
    close(directory);
    EXPECT_FALSE(codec::readImageProperties(-1, {}, 0));
    for (const char* text :
         {"", "P", "Photograph of a cat", "RIFF....AVI LIST", "\xFF\xD8\xFF\xD9"})
        EXPECT_FALSE(propertiesOf(text)) << text;
}

TEST(HostileMetadataTest, lyingCountsAndCirclesCostNothing) {
    // A page that is its own successor, asked for as frame 60,000.
    QByteArray circle = pictures::tiff(false, 400);
    const qsizetype link = 8 + 2 + 9 * 12;
    circle[link] = 8;
    QElapsedTimer timer;
    timer.start();
    (void)propertiesOf(circle, {}, 60000);
    // Boxes and properties that claim to be more than there is.
    QByteArray boxes = pictures::heif({});
    const qsizetype association = boxes.indexOf("ipma");
    boxes.replace(association + 8, 4, "\xFF\xFF\xFF\xFF");
    (void)propertiesOf(boxes);
    // Thousands of tags that point at one large block.
    pictures::ByteWriter tags(true);
    tags.text("II").u16(43).u16(8).u16(0).u64(16).u64(4096);
    for (int tag = 0; tag < 4096; ++tag)
        tags.u16(1000 + static_cast<unsigned>(tag)).u16(1).u64(4 << 20).u64(0);
    (void)propertiesOf(tags.bytes() + QByteArray(5 << 20, 'x'));
    EXPECT_LT(timer.elapsed(), 5000);
}

TEST(HostileMetadataTest, fillerBehindAGoodStartIsNotReadToItsEnd) {
    const QByteArray starts[] = {
        "\xFF\xD8", pictures::jpeg().left(200), QByteArray("\x89PNG\r\n\x1A\n"),
        QByteArray("RIFF\xFF\xFF\xFF\x7FWEBP"), QByteArray("\0\0\0\x0CjP  \r\n\x87\n", 12)};
    for (const QByteArray& start : starts) {
        SCOPED_TRACE(start.left(12).toHex().toStdString());
        const int descriptor = memfd_create("filler", MFD_CLOEXEC);
        ASSERT_EQ(
            write(descriptor, start.data(), static_cast<std::size_t>(start.size())), start.size());
        ASSERT_EQ(ftruncate(descriptor, off_t(300) << 20), 0);
        (void)codec::readImageProperties(descriptor, {}, 0);
        struct stat status = {};
        ASSERT_EQ(fstat(descriptor, &status), 0);
        EXPECT_LT(status.st_blocks * 512, 64 << 20);
        close(descriptor);
    }
}

TEST(HostileMetadataTest, manyThreadsReadAtOnce) {
    const QByteArray picture = pictures::withMetadata(pictures::jpeg(), writeAll);
    const auto expected = propertiesOf(picture);
    ASSERT_TRUE(expected);
    std::atomic<int> different = 0;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (int round = 0; round < 25; ++round)
                if (propertiesOf(picture) != expected) ++different;
        });
    threads.clear();
    EXPECT_EQ(different, 0);
}

TEST(HostileMetadataTest, allSamplesHaveASizeWhereTheFolderIsThere) {
    const QString folder = qEnvironmentVariable("VELMORA_SAMPLES");
    if (folder.isEmpty()) GTEST_SKIP() << "VELMORA_SAMPLES names no folder";
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    int count = 0;
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.fileName().endsWith(u".xmp"_s)) continue;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const auto properties = codec::readImageProperties(file.handle(), {}, 0);
        ASSERT_TRUE(properties) << file.fileName().toStdString();
        expectSound(*properties);
        ++count;
    }
    EXPECT_GT(count, 0);
}

} // namespace
