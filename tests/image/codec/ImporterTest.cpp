#include "core/FileTypes.h"
#include "image/codec/FrameReader.h"
#include "image/codec/MadePictures.h"
#include "image/codec/PBImageImporter.h"
#include "image/codec/PBImageImporterManager.h"
#include "platform/TypeIdentifiers.h"
#include "support/Support.h"

#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

/// Gives what the test says instead of decoding.
class ScriptedReader final : public codec::FrameReader {
public:
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
    std::optional<PBDictionary> properties(int, const QString&, std::size_t) override {
        throw std::runtime_error("damaged");
    }
};

class ImporterFallback : public ::testing::Test {
protected:
    void SetUp() override {
        const QString path = folder.filePath(QStringLiteral("a.jpg"));
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
    reader->full = made::gradient({100, 50});
    const QImage same = importer->createImageWithMaxSize(100, 0);
    EXPECT_EQ(same.cacheKey(), reader->full.cacheKey());
    EXPECT_EQ(reader->asked, (std::vector{100, 0}));
    const QImage scaled = importer->createImageWithMaxSize(50, 0);
    EXPECT_EQ(scaled.size(), QSize(50, 25));
    EXPECT_NEAR(qRed(scaled.pixel(25, 12)), 128, 4);
    reader->full = made::gradient({4000, 1});
    EXPECT_EQ(importer->createImageWithMaxSize(256, 0).size(), QSize(256, 1));
}

TEST_F(ImporterFallback, FailuresGiveNothingAndAreNotAskedAgain) {
    reader->full = made::gradient({100, 50});
    reader->thumbnails = codec::ReadStatus::Failed;
    EXPECT_TRUE(importer->createImageWithMaxSize(50, 0).isNull());
    EXPECT_EQ(reader->asked, std::vector{50});
    reader->thumbnails = codec::ReadStatus::Refused;
    reader->throwsForFull = true;
    EXPECT_TRUE(importer->createImageWithMaxSize(50, 0).isNull());
    EXPECT_TRUE(importer->createImageWithMaxSize(0, 0).isNull());
    EXPECT_FALSE(importer->propertiesAtIndex(0));
}

TEST(ImporterManager, ClassesAreChosenByConformanceAndTheMultiPictureTypeIsLeftOut) {
    const QStringList types = PBImageImporter::typeIdentifiers();
    EXPECT_TRUE(types.contains(QStringLiteral("public.jpeg")));
    EXPECT_FALSE(types.contains(QStringLiteral("public.mpo-image")));
    PBImageImporterManager manager;
    EXPECT_EQ(manager.supportImageTypes(), types);
    EXPECT_TRUE(manager.imageImporterClassForImageUTI(QStringLiteral("public.jpeg")));
    EXPECT_FALSE(manager.imageImporterClassForImageUTI(QStringLiteral("public.mpo-image")));
    EXPECT_FALSE(manager.imageImporterClassForImageUTI(QStringLiteral("public.plain-text")));

    // Rows without a list yield, and later rows serve what the first leaves out.
    PBImageImporterManager other;
    int made = 0;
    other.addImageImporterClass(
        {[] { return std::optional<QStringList>(); }, [](const QString&) { return nullptr; }});
    other.addImageImporterClass(
        {[] { return std::optional(QStringList{QStringLiteral("public.mpo-image")}); },
         [&made](const QString&) {
             ++made;
             return nullptr;
         }});
    const PBImageImporterClass* found =
        other.imageImporterClassForImageUTI(QStringLiteral("public.mpo-image"));
    ASSERT_TRUE(found);
    (void)found->initWithImagePath({});
    EXPECT_EQ(made, 1);
    // A camera's own type conforms to the general one without being in the list.
    const QString camera = QStringLiteral("com.nikon.raw-image");
    EXPECT_TRUE(PBUtilities::conformsToUTIArray(
        camera, {platform::TypeIdentifiers::cameraRawImage.toString()}));
    EXPECT_FALSE(PBUtilities::conformsToUTIArray(camera, {QStringLiteral("public.jpeg")}));
    EXPECT_FALSE(PBUtilities::conformsToUTIArray(camera, {}));
}
