#include "image/PBPreloadThumbnailOperation.h"
#include "image/SharpThumbnailOperation.h"

#include "group/PBImageFileItem.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"
#include "support/FakeFiles.h"

namespace {

/// Has no thumbnail of the third image, and cancels at the fifth.
struct FakeLoader final : ThumbnailLoader {
    QImage loadThumbnail(const PBImageFileItem& item) override {
        loaded.push_back(item.fileId());
        if (item.fileId() == 5) queue.cancelAllOperations();
        if (item.fileId() == 3) return {};
        return QImage(static_cast<int>(item.fileId()), 4, QImage::Format_ARGB32_Premultiplied);
    }
    std::vector<qint64> loaded;
    platform::OperationQueue queue{u"preload"_s};
};

TEST(PBPreloadThumbnailOperationTest, deliversInOrderWhatWasMissingAndLoadsNoMoreWhenCancelled) {
    const platform::MainLoop loop;
    FakeLoader loader;
    std::vector<PBPreloadThumbnailObject> objects;
    for (int id = 1; id <= 9; ++id)
        objects.push_back(
            {.imageFileItem = PBImageFileItem::imageFileItemWithId(id, 1, u"a"_s, 1, 1)});
    objects[1].imageFileItem->setThumbnailRef(QImage(1, 1, QImage::Format_RGB32));
    objects[3].imageFileItem->setThumbnailRef(QImage(1, 1, QImage::Format_RGB32));
    objects[3].isAgain = true; // all the same
    objects[3].pixels = {3, 2};
    objects[4].pixels = {5, 2}; // needs all of its width
    std::vector<std::pair<qint64, QSize>> finished;
    loader.queue.addOperation(std::make_shared<PBPreloadThumbnailOperation>(
        std::move(objects), loader, [&](const PBPreloadThumbnailObject& object) {
            EXPECT_TRUE(platform::isMainThread());
            EXPECT_EQ(object.isReduced, object.imageFileItem->fileId() == 4);
            finished.emplace_back(object.imageFileItem->fileId(), object.thumbnailRef.size());
        }));
    EXPECT_TRUE(support::spinUntil([&] { return finished.size() == 3; }));
    EXPECT_EQ(finished, (decltype(finished){{1, {1, 4}}, {4, {3, 2}}, {5, {5, 4}}}));
    loader.queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(loader.loaded, (std::vector<qint64>{1, 3, 4, 5}));
}

TEST(SharpThumbnailOperationTest, tellsWhatCantBeReadAndNothingOfWhatWasStopped) {
    const platform::MainLoop loop;
    platform::OperationQueue queue{u"preload"_s};
    std::vector<SharpThumbnailOperation::Request> requests;
    for (int id = 1; id <= 4; ++id) {
        const auto read = [&queue, id](const auto& request, const auto& stop) {
            if (id == 3) queue.cancelAllOperations();
            if (id == 2 || stop.stop_requested()) return codec::ReadResult();
            return codec::ReadResult{
                codec::ReadStatus::Decoded,
                {.image = support::filled({request.maxSize, request.maxSize})}};
        };
        requests.push_back(
            {PBImageFileItem::imageFileItemWithId(id, 1, u"a"_s, 1, 1),
             std::make_unique<support::FakeImporter>(read), 10 * id});
    }
    std::vector<std::pair<qint64, int>> sizes;
    queue.addOperation(std::make_shared<SharpThumbnailOperation>(
        std::move(requests), [&](const auto& item, int side, const QImage& image) {
            EXPECT_TRUE(platform::isMainThread());
            EXPECT_EQ(side, 10 * item->fileId());
            sizes.emplace_back(item->fileId(), image.width());
        }));
    EXPECT_TRUE(support::spinUntil([&] { return sizes.size() == 2; }));
    queue.waitUntilAllOperationsAreFinished();
    QCoreApplication::processEvents();
    EXPECT_EQ(sizes, (decltype(sizes){{1, 10}, {2, 0}}));
}

} // namespace
