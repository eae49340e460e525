#include "codec/MadePictures.h"
#include "codec/metadata/ImageProperties.h"
#include "codec/metadata/Pictures.h"

#include <QDeadlineTimer>

#include <fcntl.h>
#include <sys/stat.h>

using codec::process::Descriptor;
using pictures::propertiesOf;

TEST(HostileMetadataTest, whatIsNoPictureIsNothingAtOnce) {
    const Descriptor zeros = pictures::fileOf({}, 200 << 20);
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    const Descriptor reading(ends[0]), writing(ends[1]);
    const Descriptor folder(open("/", O_RDONLY | O_CLOEXEC));
    for (const int descriptor : {zeros.get(), reading.get(), folder.get(), -1})
        for (const QString& type : support::words("public.jpeg com.nikon.raw-image"))
            EXPECT_FALSE(codec::readImageProperties(descriptor, type, 0)) << descriptor;
    for (const char* text :
         {"", "P", "Photograph of a cat", "RIFF....AVI LIST", "\xFF\xD8\xFF\xD9"})
        EXPECT_FALSE(propertiesOf(text)) << text;
}

TEST(HostileMetadataTest, lyingCountsAndCirclesCostNothing) {
    // A page that is its own successor, asked for as frame 60,000.
    QByteArray circle = pictures::tiff(false, 400);
    const qsizetype link = 8 + 2 + 9 * 12;
    circle[link] = 8;
    const QDeadlineTimer deadline(5000);
    (void)propertiesOf(circle, {}, 60000);
    // Boxes and properties that claim to be more than there is.
    QByteArray boxes = pictures::heif({});
    boxes.replace(boxes.indexOf("ipma") + 8, 4, "\xFF\xFF\xFF\xFF");
    (void)propertiesOf(boxes);
    // Thousands of tags that point at one large block.
    pictures::ByteWriter tags(true);
    tags.text("II").u16(43).u16(8).u16(0).u64(16).u64(4096);
    for (int tag = 0; tag < 4096; ++tag)
        tags.u16(1000 + static_cast<unsigned>(tag)).u16(1).u64(4 << 20).u64(0);
    (void)propertiesOf(tags.bytes() + QByteArray(5 << 20, 'x'));
    EXPECT_FALSE(deadline.hasExpired());
}

TEST(HostileMetadataTest, ofALargeFileOnlyTheStartIsRead) {
    // Starts, and how many MiB of such a file may be looked at; what can be read needs only one.
    const std::pair<QByteArray, int> starts[] = {
        {"\xFF\xD8", 64},
        {pictures::jpeg().left(200), 64},
        {"\x89PNG\r\n\x1A\n", 64},
        {"RIFF\xFF\xFF\xFF\x7FWEBP", 64},
        {QByteArray("\0\0\0\x0CjP  \r\n\x87\n", 12), 64},
        {pictures::tiff(false, 1 << 20), 1},
        {pictures::tiff(true, 1 << 20), 1}};
    for (const auto& [start, most] : starts) {
        SCOPED_TRACE(start.left(12).toHex().toStdString());
        const Descriptor file = pictures::fileOf(start, 300 << 20);
        const auto properties = codec::readImageProperties(file.get(), {}, 0);
        EXPECT_TRUE(properties || most > 1);
        // A page of this file comes to be when it is first looked at.
        struct stat status = {};
        ASSERT_EQ(fstat(file.get(), &status), 0);
        EXPECT_LT(status.st_blocks * 512, most << 20);
    }
}

TEST(HostileMetadataTest, damageOfEveryKindDoesNoHarm) {
    made::forDamagedSamples(LLVMFuzzerTestOneInput);
}
