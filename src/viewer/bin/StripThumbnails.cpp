#include "viewer/bin/StripThumbnails.h"

#include "group/PBImageFileItem.h"
#include "image/PBThumbnailBufferManager.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <utility>

StripThumbnails::StripThumbnails(
    const ThumbnailSources& sources, std::function<void(const PBImageFileItem&)> arrived,
    std::function<double()> clock)
    : _sources(sources), _arrived(std::move(arrived)), _clock(std::move(clock)),
      _self(std::make_shared<StripThumbnails*>(this)) {}

void StripThumbnails::beginPaint(double budget, double side) {
    platform::assertMainThread();
    _side = side;
    _paintEnd = _clock() + budget;
}

QImage StripThumbnails::thumbnail(const std::shared_ptr<PBImageFileItem>& item) {
    if (item->hasThumbnail()) {
        _hasMissed = _hasMissed || isTooSmall(*item);
        return item->thumbnailRef();
    }
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
        if (!item->hasThumbnail() || isTooSmall(*item))
            objects.push_back({.imageFileItem = item, .isAgain = item->hasThumbnail()});
    if (objects.empty()) return;
    _sources.preloadQueue.cancelAllOperations();
    _sources.preloadQueue.addOperation(std::make_shared<PBPreloadThumbnailOperation>(
        std::move(objects), _sources.preloadLoader,
        [self = std::weak_ptr(_self)](const PBPreloadThumbnailObject& object) {
            if (const auto alive = self.lock()) (*alive)->didLoad(object);
        }));
}

void StripThumbnails::didLoad(const PBPreloadThumbnailObject& object) {
    const PBImageFileItem& item = *object.imageFileItem;
    const bool isLarger =
        _sources.buffer.applyPreloadThumbnail(object.imageFileItem, object.thumbnailRef);
    _whole[item.fileId()] = item.thumbnailRef().cacheKey();
    if (isLarger) _arrived(item);
}

bool StripThumbnails::isTooSmall(const PBImageFileItem& item) const {
    const auto longer = [](const auto& size) {
        return static_cast<double>(std::max(size.width(), size.height()));
    };
    const QImage thumbnail = item.thumbnailRef();
    if (longer(thumbnail.size()) >= std::min(_side, longer(item.imageSize()))) return false;
    const auto whole = _whole.find(item.fileId());
    return whole == _whole.end() || whole->second != thumbnail.cacheKey();
}

void StripThumbnails::adjustBuildThumb(const std::unordered_set<qint64>& shownFileIds) {
    platform::assertMainThread();
    auto& queue = _sources.buildQueue;
    if (queue.operationCount() == 0) return;
    std::unordered_map<std::int64_t, platform::QueuePriority> priorities;
    for (const qint64 fileId : shownFileIds)
        priorities.emplace(fileId, platform::QueuePriority::VeryHigh);
    queue.prefer(priorities);
}
