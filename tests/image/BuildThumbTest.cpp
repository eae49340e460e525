#include "image/PBBuildThumbOperation.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveThumbOperation.h"
#include "image/BuildThumbNotifier.h"
#include "image/ThumbnailStore.h"
#include "platform/work/MainLoop.h"
#include "platform/work/Mutex.h"
#include "platform/work/OperationQueue.h"
#include "support/Support.h"

#include <gtest/gtest.h>

#include <set>

using platform::OperationQueue;
using platform::QueuePriority;

namespace {

/// What the importers of a test did, and a gate that holds them up.
class Decodings {
public:
    QImage decode(const QImage& image, int maxSize, const std::stop_token& stop) {
        {
            platform::Lock lock(_mutex);
            _most = std::max(_most, ++_running);
            _sizes.push_back(maxSize);
            _changed.notifyAll();
            _changed.waitUnlessStopped(lock, stop, [this] {
                _mutex.assertHeld();
                return _isOpen;
            });
            --_running;
        }
        if (stop.stop_requested()) return {};
        if (image.isNull() || maxSize == 0) return image;
        return image.scaled(maxSize, maxSize, Qt::KeepAspectRatio);
    }
    void setOpen(bool isOpen) {
        const platform::Lock lock(_mutex);
        _isOpen = isOpen;
        _changed.notifyAll();
    }
    void waitForStarted(std::size_t count) {
        platform::Lock lock(_mutex);
        _changed.wait(lock, [&] {
            _mutex.assertHeld();
            return _sizes.size() >= count;
        });
    }
    /// Asked for, in the order of the decodings.
    [[nodiscard]] std::vector<int> sizes() {
        const platform::Lock lock(_mutex);
        return _sizes;
    }
    /// At a time.
    [[nodiscard]] int most() {
        const platform::Lock lock(_mutex);
        return _most;
    }

private:
    platform::Mutex _mutex;
    platform::Condition _changed;
    bool _isOpen VELMORA_GUARDED_BY(_mutex) = true;
    int _running VELMORA_GUARDED_BY(_mutex) = 0;
    int _most VELMORA_GUARDED_BY(_mutex) = 0;
    std::vector<int> _sizes VELMORA_GUARDED_BY(_mutex);
};

class ToldImporter final : public PBImageImporterProtocol {
public:
    ToldImporter(Decodings& decodings, QImage image)
        : _decodings(decodings), _image(std::move(image)) {}
    std::optional<PBDictionary> propertiesAtIndex(std::size_t) override { return std::nullopt; }
    QImage createImageWithMaxSize(unsigned maxSize, std::size_t, std::stop_token stop) override {
        return _decodings.decode(_image, static_cast<int>(maxSize), stop);
    }
    std::size_t imageCount() override { return 1; }
    QString utiType() override { return {}; }

private:
    Decodings& _decodings;
    const QImage _image;
};

class BuildThumbTest : public testing::Test {
protected:
    BuildThumbTest() {
        EXPECT_TRUE(db.open());
        EXPECT_TRUE(PBCatalogue(db).checkTables_Thumbnail());
        services = std::shared_ptr<BuildThumbServices>(
            new BuildThumbServices{.db = db, .queue = queue, .didBuild = [this](const auto& built) {
                                       order.push_back(built->fileId());
                                   }});
    }

    std::shared_ptr<PBBuildThumbOperation>
    add(qint64 fileId, const QImage& image, QSizeF known, bool checkExist = false) {
        auto operation = std::make_shared<PBBuildThumbOperation>(
            services, PBBuildThumbOperation::Request{
                          .fileId = fileId,
                          .imageImporter = std::make_unique<ToldImporter>(decodings, image),
                          .checkExist = checkExist,
                          .thumbSize = 256,
                          .imageSize = known});
        queue.addOperation(operation);
        return operation;
    }
    static QImage picture(int width, int height, QImage::Format format = QImage::Format_RGB32) {
        QImage image(width, height, format);
        image.fill(Qt::transparent);
        return image;
    }
    QImage stored(qint64 fileId) { return ThumbnailStore::loadThumbnail(db, fileId, true, {}); }

    FMDatabase db{QString()};
    Decodings decodings;
    std::vector<qint64> order; // written on the build queue's thread
    std::shared_ptr<BuildThumbServices> services;
    OperationQueue queue{QStringLiteral("build")};
};

} // namespace

TEST_F(BuildThumbTest, SizeAndEncodingFollowFromThePicture) {
    struct Case {
        const char* name;
        QSize size;
        QSizeF known;
        QImage::Format format;
        int asked;
        QSize thumbnail;
        bool isPng;
    };
    qint64 fileId = 0;
    const auto rgb = QImage::Format_RGB32;
    const auto alpha = QImage::Format_ARGB32_Premultiplied;
    for (const Case& one : {
             Case{"small", {200, 100}, {200, 100}, rgb, 0, {200, 100}, false},
             Case{"just", {256, 256}, {256, 256}, rgb, 0, {256, 256}, false},
             Case{"wide", {300, 100}, {300, 100}, rgb, 256, {256, 85}, false},
             Case{"tall", {100, 300}, {100, 300}, rgb, 256, {85, 256}, false},
             Case{"broad by one", {257, 9}, {257, 9}, rgb, 256, {256, 8}, false},
             Case{"unknown", {512, 512}, {}, rgb, 256, {256, 256}, false},
             Case{"alpha", {20, 10}, {20, 10}, alpha, 0, {20, 10}, true},
         }) {
        add(++fileId, picture(one.size.width(), one.size.height(), one.format), one.known);
        queue.waitUntilAllOperationsAreFinished();
        EXPECT_EQ(decodings.sizes().back(), one.asked) << one.name;
        const QImage thumbnail = stored(fileId);
        EXPECT_EQ(thumbnail.size(), one.thumbnail) << one.name;
        EXPECT_EQ(thumbnail.hasAlphaChannel(), one.isPng) << one.name;
        EXPECT_EQ(ThumbnailStore::thumbnailData(db, fileId).startsWith("\x89PNG"), one.isPng)
            << one.name;
    }
    EXPECT_EQ(services->built, 7U);
    EXPECT_EQ(services->finished, 7U);
    EXPECT_EQ(order.size(), 7U);
}

TEST_F(BuildThumbTest, AThumbnailThatIsThereStays) {
    add(1, picture(10, 10), {});
    queue.waitUntilAllOperationsAreFinished();
    const QByteArray first = ThumbnailStore::thumbnailData(db, 1);
    add(1, picture(20, 20), {}, true);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(decodings.sizes().size(), 1U) << "not even decoded";
    EXPECT_EQ(order.size(), 1U);
    add(1, picture(20, 20), {});
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(order.size(), 2U) << "told all the same";
    EXPECT_EQ(ThumbnailStore::thumbnailData(db, 1), first);
    EXPECT_EQ(services->failed, 0U);
    EXPECT_EQ(services->built, 1U);
    EXPECT_EQ(services->finished, 3U);

    queue.addOperation(std::make_shared<PBRemoveThumbOperation>(std::vector<qint64>{1, 7}, db));
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(ThumbnailStore::isThumbnailExist(db, 1));
}

TEST_F(BuildThumbTest, WhatCannotBeDecodedOrWasCancelledLeavesNothing) {
    add(1, {}, {});
    queue.waitUntilAllOperationsAreFinished();
    decodings.setOpen(false);
    const auto running = add(2, picture(9, 9), {});
    add(3, picture(9, 9), {});
    decodings.waitForStarted(2);
    queue.cancelAllOperations(); // ends the decoding, though its gate is shut
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(services->failed, 1U);
    for (const qint64 id : {1, 2, 3})
        EXPECT_FALSE(ThumbnailStore::isThumbnailExist(db, id));
}

TEST_F(BuildThumbTest, ThumbnailsThatCannotBeStoredHaveFailedAndAreToldOnce) {
    testing::internal::CaptureStderr();
    add(1, picture(9, 9), {});
    queue.waitUntilAllOperationsAreFinished();
    ASSERT_TRUE(db.executeUpdate(u"pragma query_only = on"_s));
    add(2, picture(9, 9), {});
    add(3, picture(9, 9), {});
    queue.waitUntilAllOperationsAreFinished();
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::ranges::count(told, '\n'), 1) << told;
    EXPECT_EQ(services->built, 1U);
    EXPECT_EQ(services->failed, 2U);
    EXPECT_EQ(order, (std::vector<qint64>{1, 2, 3})) << "shown all the same";
}

TEST_F(BuildThumbTest, StoredThumbnailsComeInTheColoursOfTheScreen) {
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(qRgb(200, 60, 60));
    add(1, image, {});
    queue.waitUntilAllOperationsAreFinished();
    const QColorSpace wide(QColorSpace::AdobeRgb);
    const auto colour = [&](bool preload, const QColorSpace& space) {
        return ThumbnailStore::loadThumbnail(db, 1, preload, space).pixelColor(4, 4);
    };
    const QColor plain = colour(false, wide);
    EXPECT_NEAR(plain.red(), 200, 3);
    EXPECT_EQ(colour(true, {}), plain);
    EXPECT_LT(colour(true, wide).red(), 185) << "the same red in a wider space";
    ASSERT_TRUE(db.executeUpdate(u"update Thumbnail set Data = 'damaged'"_s));
    EXPECT_TRUE(ThumbnailStore::loadThumbnail(db, 1, true, wide).isNull());
}

TEST_F(BuildThumbTest, IdleCoresDecodeAheadAndTheOrderStays) {
    constexpr int cores = 3;
    DecodeAhead ahead(cores);
    services->ahead = &ahead;
    queue.setSuspended(true);
    std::vector<std::shared_ptr<PBBuildThumbOperation>> operations;
    for (qint64 id = 1; id <= 30; ++id)
        operations.push_back(add(id, picture(400, 300), {}, id % 2 == 0));
    ASSERT_TRUE(PBCatalogue(db).insertThumbnailWithFileId(4, "there already"));
    operations[20]->setQueuePriority(QueuePriority::VeryHigh);
    decodings.setOpen(false);
    queue.setSuspended(false);
    // The build queue's own and one for each core, since it will wait for others most of the time.
    decodings.waitForStarted(cores + 1);
    decodings.setOpen(true);
    queue.waitUntilAllOperationsAreFinished();
    std::vector<qint64> expected{21};
    for (qint64 id = 1; id <= 30; ++id) {
        if (id != 4 && id != 21) expected.push_back(id);
    }
    EXPECT_EQ(order, expected);
    EXPECT_EQ(decodings.most(), cores + 1);
    EXPECT_EQ(decodings.sizes().size(), 29U);
    EXPECT_EQ(services->built, 29U);
    services->ahead = nullptr;
}

TEST_F(BuildThumbTest, NoMoreThanTwiceTheCoresAreDecodedAheadAndCancellingDropsThem) {
    DecodeAhead ahead(2);
    EXPECT_EQ(DecodeAhead(1).capacity(), 0);
    services->ahead = &ahead;
    decodings.setOpen(false);
    queue.setSuspended(true);
    for (qint64 id = 1; id <= 20; ++id)
        add(id, picture(10, 10), {});
    queue.setSuspended(false);
    decodings.waitForStarted(3);
    std::vector<DecodeAhead::Place> left;
    while (auto place = ahead.takePlace())
        left.push_back(std::move(place));
    EXPECT_EQ(left.size(), 0U);
    queue.cancelAllOperations();
    queue.waitUntilAllOperationsAreFinished();
    // All places come back, when the decodings that were cut off have ended.
    ASSERT_TRUE(support::spinUntil([&] {
        while (auto place = ahead.takePlace())
            left.push_back(std::move(place));
        return left.size() == 4;
    }));
    EXPECT_TRUE(order.empty());
    services->ahead = nullptr;
}

TEST_F(BuildThumbTest, EndedThumbnailsAreToldOnTheMainThread) {
    platform::MainLoop loop;
    auto notifier = std::make_unique<BuildThumbNotifier>();
    services->didBuild = notifier->poster();
    std::set<qint64> told;
    QObject::connect(
        notifier.get(), &BuildThumbNotifier::PBNotiName_BuildThumb, notifier.get(),
        [&](const PBBuildThumbOperation& operation) { told.insert(operation.fileId()); });
    {
        const platform::TrackingScope dragging; // holds up what can wait
        add(1, picture(9, 9), {});
        add(2, picture(9, 9), {});
        ASSERT_TRUE(support::spinUntil([&] { return told.size() == 2; }));
    }
    add(3, picture(9, 9), {});
    queue.waitUntilAllOperationsAreFinished();
    notifier.reset();
    bool posted = false;
    loop.post(platform::MainLoop::Mode::Common, [&] { posted = true; });
    ASSERT_TRUE(support::spinUntil([&] { return posted; }));
    EXPECT_EQ(told.size(), 2U);
}
