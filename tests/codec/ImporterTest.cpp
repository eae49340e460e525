#include "codec/MadePictures.h"
#include "codec/PBImageImporter.h"
#include "codec/metadata/Pictures.h"
#include "support/Images.h"

using pictures::ByteWriter;

namespace {

/// Gives what the test says instead of decoding.
struct ScriptedReader final : codec::FrameReader {
    codec::ReadStatus thumbnails = codec::ReadStatus::Refused;
    QImage full = formatpictures::gradient({100, 50});
    bool throwsForFull = false;
    std::vector<int> asked; // the sizes, in order
    std::vector<codec::Urgency> urgencies;

    codec::ReadResult
    decode(int, const QString&, const codec::DecodeRequest& request, std::stop_token) override {
        asked.push_back(request.maxSize);
        urgencies.push_back(request.urgency);
        if (request.maxSize > 0) return {thumbnails, {}};
        if (throwsForFull) throw std::runtime_error("damaged");
        return {codec::ReadStatus::Decoded, {full}};
    }
    codec::OpenedSequence openSequence(
        int, const QString&, const codec::DecodeRequest& request, std::stop_token) override {
        urgencies.push_back(request.urgency);
        return {};
    }
    std::size_t countFrames(int, const QString&, codec::Urgency urgency) override {
        urgencies.push_back(urgency);
        return 1;
    }
    codec::PictureProperties
    properties(int, const QString&, std::size_t, std::stop_token) override {
        throw std::runtime_error("damaged");
    }
    codec::ReadMetadata metadataBlocks(int, const codec::NewPicture&, std::stop_token) override {
        throw std::runtime_error("damaged");
    }
    bool embedMetadata(
        QByteArray&, const codec::MetadataBlocks&, const QByteArray&, std::stop_token) override {
        return false;
    }
};

struct ImporterFallback : ::testing::Test {
    void SetUp() override {
        const QString path = folder.filePath(u"a.jpg"_s);
        support::writeFile(path, "anything");
        importer = PBImageImporter::initWithImagePath(path);
        ASSERT_TRUE(importer);
        codec::setFrameReader(reader);
    }
    void TearDown() override { codec::setFrameReader(nullptr); }

    QTemporaryDir folder;
    std::shared_ptr<ScriptedReader> reader = std::make_shared<ScriptedReader>();
    std::unique_ptr<PBImageImporter> importer;
};

/// An EXIF block in Intel's order, whose second directory names a JPEG of that place and length.
QByteArray exifSegment(const QByteArray& thumbnail, quint32 place, quint32 length) {
    ByteWriter block(true);
    block.text("II").u16(42).u32(8).u16(0).u32(14);
    const pictures::TiffEntry entries[] = {{0x0201, 4, 1, place}, {0x0202, 4, 1, length}};
    pictures::writeDirectory(block, false, entries);
    block.text(thumbnail);
    const auto size = static_cast<unsigned>(block.bytes().size()) + 8;
    const QByteArray mark("Exif\0\0", 6);
    return ByteWriter(false).text("\xFF\xE1").u16(size).text(mark).bytes() + block.bytes();
}

} // namespace

TEST_F(ImporterFallback, SmallFramesComeUnscaledAndLargeOnesScaledAndFailuresAreNotAskedAgain) {
    const QImage same = importer->createImageWithMaxSize(100, 0);
    EXPECT_EQ(same.cacheKey(), reader->full.cacheKey());
    const QImage scaled = importer->createImageWithMaxSize(50, 0);
    EXPECT_EQ(scaled.size(), QSize(50, 25));
    EXPECT_NEAR(qRed(scaled.pixel(25, 12)), 128, 4);
    reader->thumbnails = codec::ReadStatus::Failed;
    EXPECT_TRUE(importer->createImageWithMaxSize(49, 0).isNull());
    EXPECT_EQ(reader->asked, (std::vector{100, 0, 50, 0, 49}));
    reader->thumbnails = codec::ReadStatus::Refused;
    reader->throwsForFull = true;
    EXPECT_TRUE(importer->createImageWithMaxSize(50, 0).isNull());
    EXPECT_TRUE(importer->createImageWithMaxSize(0, 0).isNull());
    EXPECT_FALSE(importer->propertiesAtIndex(0, {}).ifRead());
}

TEST_F(ImporterFallback, WhoWaitsIsToldWithEveryQuestion) {
    using enum codec::Urgency;
    const auto askAll = [&] {
        reader->urgencies.clear();
        static_cast<void>(importer->createImageWithMaxSize(0, 0));
        static_cast<void>(importer->createEmbeddedImage(50));
        static_cast<void>(importer->imageCount());
        return reader->urgencies;
    };
    EXPECT_EQ(askAll(), (std::vector{Thumbnail, ThumbnailOnShow, Properties}));
    importer->setUrgency(Next);
    EXPECT_EQ(askAll(), (std::vector{Next, Next, Next}));
    reader->urgencies.clear();
    const codec::DecodeRequest request{.maxSize = 60, .urgency = Focus};
    const codec::ReadResult result = importer->readImage(request, {});
    EXPECT_EQ(result.status, codec::ReadStatus::Decoded);
    EXPECT_EQ(result.frame.image.size(), QSize(60, 30)) << "decoded in full, and reduced";
    static_cast<void>(importer->openSequence(request, {}));
    EXPECT_EQ(reader->urgencies, (std::vector{Focus, Focus, Focus}));
    reader->thumbnails = codec::ReadStatus::NotNow;
    EXPECT_EQ(importer->readImage(request, {}).status, codec::ReadStatus::NotNow);
    // No file says nothing of the picture; what is no file can't be one.
    const auto statusOf = [&](const QString& name) {
        const auto other = PBImageImporter::initWithImagePath(folder.filePath(name));
        EXPECT_EQ(other->readImage({}, {}).status, other->openSequence({}, {}).status);
        return other->readImage({}, {}).status;
    };
    EXPECT_EQ(statusOf(u"missing.jpg"_s), codec::ReadStatus::NotNow);
    EXPECT_EQ(statusOf(u"."_s), codec::ReadStatus::Refused);
}

TEST(EmbeddedPicture, OfAJpegIsTheCamerasSmallOneOrNothing) {
    QTemporaryDir folder;
    const QByteArray thumbnail = pictures::saved(support::filled({160, 120}), "JPEG");
    const auto length = static_cast<quint32>(thumbnail.size());
    constexpr quint32 place = 44; // behind the directories
    const auto embeddedOf = [&](const QByteArray& segment) {
        QByteArray file = pictures::saved(support::filled({800, 600}, Qt::blue), "JPEG");
        file.insert(2, segment);
        const QString path = folder.filePath(u"a.jpg"_s);
        support::writeFile(path, file);
        return PBImageImporter::initWithImagePath(path)->createEmbeddedImage(320);
    };
    const QImage found = embeddedOf(exifSegment(thumbnail, place, length));
    EXPECT_EQ(found.size(), QSize(160, 120));
    EXPECT_GT(found.pixelColor(80, 60).red(), 240);
    EXPECT_TRUE(embeddedOf({}).isNull()) << "the photograph itself is not asked for";
    const std::pair<quint32, quint32> hostile[] = {
        {place, length + 1}, {place, 0}, {0xFFFFFFFF, length}, {place + 1, length - 1}, {place, 3}};
    for (const auto& [at, bytes] : hostile)
        EXPECT_TRUE(embeddedOf(exifSegment(thumbnail, at, bytes)).isNull()) << at << ' ' << bytes;
    for (int cut = 2; cut < 60; ++cut)
        (void)embeddedOf(exifSegment(thumbnail, place, length).first(cut));
}
