#include "codec/metadata/ImageProperties.h"
#include "codec/metadata/Pictures.h"

#include <QElapsedTimer>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using pictures::propertiesOf;

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
    const QByteArray picture = pictures::withMetadata(
        pictures::jpeg(), [](Exiv2::ExifData& exif, auto&, Exiv2::XmpData& xmp) {
            exif["Exif.Photo.UserComment"] = "charset=Unicode hello";
            xmp["Xmp.dc.description"] = "lang=x-default La mer";
        });
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

} // namespace
