#include "viewer/bin/StripThumbnails.h"

#include "group/PBImageFileItem.h"
#include "image/PBBuildThumbOperation.h"
#include "image/PBThumbnailBufferManager.h"
#include "platform/tasks/MainThread.h"

#include <utility>

StripThumbnails::StripThumbnails(
    const ThumbnailSources& sources, std::function<void(const PBImageFileItem&)> arrived,
    std::function<double()> clock)
    : _sources(sources), _arrived(std::move(arrived)), _clock(std::move(clock)),
      _self(std::make_shared<StripThumbnails*>(this)) {}

void StripThumbnails::beginPaint(double budget) {
    platform::assertMainThread();
    _paintEnd = _clock() + budget;
}

QImage StripThumbnails::thumbnail(const std::shared_ptr<PBImageFileItem>& item) {
    if (item->hasThumbnail()) return item->thumbnailRef();
    if (!hasTimeLeft()) {
        _hasMissed = true;
        return {};
    }
    const QImage stored = _sources.loader.loadThumbnail(*item);
    if (!stored.isNull()) (void)_sources.buffer.applyPreloadThumbnail(item, stored);
    return stored;
}

void StripThumbnails::preloadThumbnail(const Items& items) {
    platform::assertMainThread();
    std::vector<PBPreloadThumbnailObject> objects;
    for (const auto& item : items)
        if (!item->hasThumbnail()) objects.push_back({.imageFileItem = item});
    if (objects.empty()) return;
    _sources.preloadQueue.cancelAllOperations();
    _sources.preloadQueue.addOperation(std::make_shared<PBPreloadThumbnailOperation>(
        std::move(objects), _sources.preloadLoader,
        [self = std::weak_ptr(_self),
         &buffer = _sources.buffer](const PBPreloadThumbnailObject& object) {
            const auto alive = self.lock();
            if (alive && buffer.applyPreloadThumbnail(object.imageFileItem, object.thumbnailRef))
                (*alive)->_arrived(*object.imageFileItem);
        }));
}

void StripThumbnails::adjustBuildThumb(const std::unordered_set<qint64>& shownFileIds) {
    platform::assertMainThread();
    auto& queue = _sources.buildQueue;
    if (queue.operationCount() == 0) return;
    const bool wasSuspended = queue.isSuspended();
    // No operation may start between two changes of priority.
    queue.setSuspended(true);
    for (const auto& operation : queue.operations()) {
        const auto* build = dynamic_cast<const PBBuildThumbOperation*>(operation.get());
        if (!build) continue;
        const auto priority = shownFileIds.contains(build->fileId())
                                  ? platform::QueuePriority::VeryHigh
                                  : platform::QueuePriority::Normal;
        if (operation->queuePriority() != priority) operation->setQueuePriority(priority);
    }
    if (!wasSuspended) queue.setSuspended(false);
}
