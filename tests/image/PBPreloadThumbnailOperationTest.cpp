#include "image/PBPreloadThumbnailOperation.h"

#include "group/PBImageFileItem.h"
#include "platform/work/MainLoop.h"
#include "platform/work/MainThread.h"
#include "platform/work/OperationQueue.h"
#include "support/Support.h"

#include <latch>

namespace {

struct FakeLoader final : ThumbnailLoader {
    QImage loadThumbnail(const PBImageFileItem& item) override {
        loaded.push_back(item.fileId());
        if (onLoad) onLoad(item);
        if (item.fileId() == withoutThumbnail) return {};
        return QImage(static_cast<int>(item.fileId()), 4, QImage::Format_ARGB32_Premultiplied);
    }
    std::vector<qint64> loaded;
    std::function<void(const PBImageFileItem&)> onLoad;
    qint64 withoutThumbnail = -1;
};

struct PBPreloadThumbnailOperationTest : ::testing::Test {
    std::shared_ptr<PBPreloadThumbnailOperation> operation(int count) {
        std::vector<PBPreloadThumbnailObject> objects;
        for (int id = 1; id <= count; ++id)
            objects.push_back({PBImageFileItem::imageFileItemWithId(id, 1, u"a"_s, 1, 1), {}});
        items.clear();
        for (const auto& object : objects)
            items.push_back(object.imageFileItem);
        return std::make_shared<PBPreloadThumbnailOperation>(
            std::move(objects), loader, [this](const PBPreloadThumbnailObject& object) {
                EXPECT_TRUE(platform::isMainThread());
                EXPECT_EQ(object.thumbnailRef.width(), object.imageFileItem->fileId());
                finished.push_back(object.imageFileItem->fileId());
            });
    }

    platform::MainLoop loop;
    FakeLoader loader;
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    std::vector<qint64> finished;
    platform::OperationQueue queue{u"preload"_s};
};

TEST_F(PBPreloadThumbnailOperationTest, deliversInOrderLeavingOutWhatIsThereOrMissing) {
    loader.withoutThumbnail = 3;
    const auto preload = operation(5);
    items[1]->setThumbnailRef(QImage(1, 1, QImage::Format_ARGB32_Premultiplied));
    queue.addOperation(preload);
    ASSERT_TRUE(support::spinUntil([&] { return finished.size() == 3; }));
    EXPECT_EQ(finished, (std::vector<qint64>{1, 4, 5}));
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(loader.loaded, (std::vector<qint64>{1, 3, 4, 5}));
}

TEST_F(PBPreloadThumbnailOperationTest, aCancelledOneStopsAtTheNextItemAndDeliversWhatItHad) {
    const auto preload = operation(100);
    std::latch isDecoding(1);
    std::latch isCancelled(1);
    loader.onLoad = [&](const PBImageFileItem& item) {
        if (item.fileId() != 2) return;
        isDecoding.count_down();
        isCancelled.wait();
    };
    queue.addOperation(preload);
    isDecoding.wait();
    queue.cancelAllOperations();
    isCancelled.count_down();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(loader.loaded.size(), 2U);
    EXPECT_TRUE(support::spinUntil([&] { return finished.size() == 2; }));
}

} // namespace
