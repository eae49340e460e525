#include "codec/MadePictures.h"
#include "codec/PBImageImporter.h"
#include "codec/process/FrameReader.h"

namespace {

/// Gives what the test says instead of decoding.
struct ScriptedReader final : codec::FrameReader {
    codec::ReadStatus thumbnails = codec::ReadStatus::Refused;
    QImage full;
    bool throwsForFull = false;
    std::vector<int> asked; // the sizes, in order

    codec::ReadResult
    decode(int, const QString&, const codec::DecodeRequest& request, std::stop_token) override {
        asked.push_back(request.maxSize);
        if (request.maxSize > 0) return {thumbnails, {}};
        if (throwsForFull) throw std::runtime_error("damaged");
        return {full.isNull() ? codec::ReadStatus::Refused : codec::ReadStatus::Decoded, {full}};
    }
    std::size_t countFrames(int, const QString&) override { return 1; }
    codec::PictureProperties
    properties(int, const QString&, std::size_t, std::stop_token) override {
        throw std::runtime_error("damaged");
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

} // namespace

TEST_F(ImporterFallback, SmallFramesComeUnscaledAndLargeOnesScaled) {
    reader->full = formatpictures::gradient({100, 50});
    const QImage same = importer->createImageWithMaxSize(100, 0);
    EXPECT_EQ(same.cacheKey(), reader->full.cacheKey());
    EXPECT_EQ(reader->asked, (std::vector{100, 0}));
    const QImage scaled = importer->createImageWithMaxSize(50, 0);
    EXPECT_EQ(scaled.size(), QSize(50, 25));
    EXPECT_NEAR(qRed(scaled.pixel(25, 12)), 128, 4);
}

TEST_F(ImporterFallback, FailuresGiveNothingAndAreNotAskedAgain) {
    reader->full = formatpictures::gradient({100, 50});
    reader->thumbnails = codec::ReadStatus::Failed;
    EXPECT_TRUE(importer->createImageWithMaxSize(50, 0).isNull());
    EXPECT_EQ(reader->asked, std::vector{50});
    reader->thumbnails = codec::ReadStatus::Refused;
    reader->throwsForFull = true;
    EXPECT_TRUE(importer->createImageWithMaxSize(50, 0).isNull());
    EXPECT_TRUE(importer->createImageWithMaxSize(0, 0).isNull());
    EXPECT_FALSE(importer->propertiesAtIndex(0));
}
