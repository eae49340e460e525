#include "browser/feed/BrowserThumbnailFeed.h"

#include "image/PBThumbnailBufferManager.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"
#include "ui/PreparedThumbnails.h"

#include <algorithm>
#include <cmath>

namespace {

/// Pixels of the longer side: more than most cameras put into their files.
constexpr int standInSide = 320;
/// Some hundred screens; they go with the thumbnails that replace them.
constexpr std::size_t mostStandIns = 2000;

} // namespace

BrowserThumbnailFeed::BrowserThumbnailFeed(
    BrowserLayout& layout, const BrowserLeafList& leaves, BrowserServices& services,
    std::function<void(const PBImageFileItem&)> arrived, std::function<double()> clock)
    : _layout(layout), _leaves(leaves), _services(services), _arrived(std::move(arrived)),
      _clock(std::move(clock)), _self(std::make_shared<BrowserThumbnailFeed*>(this)) {}

BrowserThumbnailFeed::~BrowserThumbnailFeed() = default;

void BrowserThumbnailFeed::beginPaint(double budget, double pixelRatio) {
    platform::assertMainThread();
    _pixelRatio = pixelRatio;
    _paintEnd = _clock() + budget;
    _hasMissed = false;
}

void BrowserThumbnailFeed::endPaint(const QRectF& visible) {
    if (!std::exchange(_hasMissed, false)) return;
    const double half = visible.height() / 2;
    const auto ahead = _direction < 0
                           ? preloadThumbnailOperation(visible.top() - half, visible.top())
                           : preloadThumbnailOperation(visible.bottom(), visible.bottom() + half);
    replacePreloads({preloadThumbnailOperation(visible.top(), visible.bottom()), ahead});
}

bool BrowserThumbnailFeed::hasTimeLeft() const {
    return _clock() < _paintEnd;
}

QImage BrowserThumbnailFeed::thumbnail(
    const PBImageBrowserIndex& index, const std::shared_ptr<PBImageFileItem>& item) {
    if (item->hasThumbnail()) {
        _hasTooSmall = _hasTooSmall || isTooSmall(index, *item) || couldBeSharper(index, *item);
        return item->thumbnailRef();
    }
    if (!hasTimeLeft()) {
        _hasMissed = true;
        const auto known = _standIns.find(item->fileId());
        return known == _standIns.end() ? QImage() : known->second;
    }
    const QImage stored = _services.thumbnailLoader().loadThumbnail(*item);
    if (stored.isNull()) return standIn(*item);
    const QImage loaded = reducedThumbnail(stored, neededPixels(index, *item));
    noteLoaded(*item, loaded.size() != stored.size());
    _services.thumbnailBufferManager().applyPreloadThumbnail(item, loaded, index);
    _hasTooSmall = _hasTooSmall || couldBeSharper(index, *item);
    return loaded;
}

QSize BrowserThumbnailFeed::neededPixels(
    const PBImageBrowserIndex& index, const PBImageFileItem& item) const {
    // At other angles it is drawn larger than its cell shows.
    if (std::fmod(item.rotateAngle(), 90) != 0) return {};
    const QSize shown = _layout.picturePixels(index, _pixelRatio);
    return quarterTurns(item.rotateAngle()) % 2 == 0 ? shown : shown.transposed();
}

bool BrowserThumbnailFeed::isTooSmall(
    const PBImageBrowserIndex& index, const PBImageFileItem& item) const {
    if (!_reduced.contains(item.fileId())) return false;
    const QSize needed = neededPixels(index, item);
    const QSize size = item.thumbnailRef().size();
    return needed.isEmpty() || size.width() < needed.width() || size.height() < needed.height();
}

bool BrowserThumbnailFeed::couldBeSharper(
    const PBImageBrowserIndex& index, const PBImageFileItem& item) const {
    const auto longer = [](auto size) { return std::max(size.width(), size.height()); };
    const int needed = longer(neededPixels(index, item));
    const int present = longer(item.thumbnailRef().size());
    if (present >= needed || present >= longer(item.imageSize()) || item.isAway()) return false;
    const auto done = _sharpened.find(item.fileId());
    return done == _sharpened.end() || done->second < needed;
}

void BrowserThumbnailFeed::noteLoaded(const PBImageFileItem& item, bool isReduced) {
    _sharpened.erase(item.fileId());
    _standIns.erase(item.fileId());
    if (isReduced) {
        _reduced.insert(item.fileId());
    } else {
        _reduced.erase(item.fileId());
    }
}

QImage BrowserThumbnailFeed::standIn(const PBImageFileItem& item) {
    const auto known = _standIns.find(item.fileId());
    if (known != _standIns.end()) return known->second;
    _lacksPicture = _lacksPicture || !item.isAway();
    return {};
}

void BrowserThumbnailFeed::loadStandIns(const QRectF& visible) {
    platform::assertMainThread();
    if (_services.isLargeView()) return;
    if (const auto running = _readingStandIns.lock()) {
        if (!running->isCancelled() && !running->isFinished() && _standInsPart == visible) return;
        running->cancel();
    }
    if (_standIns.size() > mostStandIns) _standIns.clear();
    std::vector<SharpThumbnailOperation::Request> requests;
    _layout.forEachVisible(visible.top(), visible.bottom(), [&](const PBImageBrowserIndex& index) {
        const auto item = _leaves.imageFileAtIndex(index);
        if (!item || item->hasThumbnail() || item->isAway() || _standIns.contains(item->fileId()))
            return;
        if (auto importer = _services.imageImporter(*item))
            requests.push_back({item, std::move(importer), standInSide, true});
    });
    if (requests.empty()) return;
    const auto operation = std::make_shared<SharpThumbnailOperation>(
        std::move(requests),
        [self = std::weak_ptr(_self)](const auto& item, int, const QImage& image) {
            const auto alive = self.lock();
            if (!alive || item->hasThumbnail()) return;
            (*alive)->_standIns[item->fileId()] = image;
            if (!image.isNull()) (*alive)->_arrived(*item);
        });
    operation->setQueuePriority(platform::QueuePriority::High);
    _readingStandIns = operation;
    _standInsPart = visible;
    _services.preloadThumbnailOperationQueue().addOperation(operation);
}

bool BrowserThumbnailFeed::isPictured(const QRectF& visible) const {
    bool isPictured = true;
    _layout.forEachVisible(visible.top(), visible.bottom(), [&](const PBImageBrowserIndex& index) {
        const auto item = _leaves.imageFileAtIndex(index);
        if (!item || item->hasThumbnail()) return;
        const auto standIn = _standIns.find(item->fileId());
        isPictured = isPictured && standIn != _standIns.end() && !standIn->second.isNull();
    });
    return isPictured;
}

void BrowserThumbnailFeed::loadLarger(const QRectF& visible) {
    platform::assertMainThread();
    if (_services.isLargeView()) return;
    std::vector<PBPreloadThumbnailObject> again;
    std::vector<SharpThumbnailOperation::Request> sharper;
    _layout.forEachVisible(visible.top(), visible.bottom(), [&](const PBImageBrowserIndex& index) {
        const auto item = _leaves.imageFileAtIndex(index);
        if (!item || !item->hasThumbnail()) return;
        const QSize needed = neededPixels(index, *item);
        if (isTooSmall(index, *item)) {
            again.push_back({.imageFileItem = item, .pixels = needed, .isAgain = true});
        } else if (couldBeSharper(index, *item)) {
            if (auto importer = _services.imageImporter(*item))
                sharper.push_back(
                    {item, std::move(importer), std::max(needed.width(), needed.height())});
        }
    });
    sharpen(std::move(sharper), visible);
    if (auto operation = preloadOperation(std::move(again))) {
        _loadingLarger = operation;
        _services.preloadThumbnailOperationQueue().addOperation(std::move(operation));
    }
}

void BrowserThumbnailFeed::preloadThumbnailWithPosition(const QRectF& visible, int flag) {
    platform::assertMainThread();
    _direction = flag;
    const double half = visible.height() / 2;
    const auto above = preloadThumbnailOperation(visible.top() - half, visible.top());
    const auto below = preloadThumbnailOperation(visible.bottom(), visible.bottom() + half);
    if (flag < 0) {
        replacePreloads({above, below});
    } else {
        replacePreloads({below, above});
    }
}

void BrowserThumbnailFeed::cancelPreloads() {
    const auto isRunning = [](const std::weak_ptr<platform::Operation>& operation) {
        const auto running = operation.lock();
        return running && !running->isCancelled() && !running->isFinished();
    };
    // What remains on show is not painted again, and would not be asked for.
    _lacksPicture = _lacksPicture || isRunning(_readingStandIns);
    _hasTooSmall = _hasTooSmall || isRunning(_loadingLarger) || isRunning(_sharpening);
    _services.preloadThumbnailOperationQueue().cancelAllOperations();
}

void BrowserThumbnailFeed::replacePreloads(
    std::initializer_list<std::shared_ptr<platform::Operation>> wanted) {
    auto& queue = _services.preloadThumbnailOperationQueue();
    bool isFirst = true;
    for (const auto& operation : wanted) {
        if (!operation) continue;
        if (std::exchange(isFirst, false)) cancelPreloads();
        queue.addOperation(operation);
    }
}

void BrowserThumbnailFeed::sharpen(
    std::vector<SharpThumbnailOperation::Request> requests, const QRectF& visible) {
    if (requests.empty()) return;
    if (const auto running = _sharpening.lock()) {
        if (!running->isCancelled() && !running->isFinished() && _sharpeningPart == visible) return;
        running->cancel();
    }
    const auto operation = std::make_shared<SharpThumbnailOperation>(
        std::move(requests),
        [self = std::weak_ptr(_self)](const auto& item, int side, const QImage& image) {
            if (const auto alive = self.lock()) (*alive)->sharpened(item, side, image);
        });
    _sharpening = operation;
    _sharpeningPart = visible;
    _services.preloadThumbnailOperationQueue().addOperation(operation);
}

void BrowserThumbnailFeed::sharpened(
    const std::shared_ptr<PBImageFileItem>& item, int side, const QImage& image) {
    platform::assertMainThread();
    if (!item->hasThumbnail()) return; // it was dropped meanwhile: it is not on show
    _sharpened[item->fileId()] = side;
    if (_services.thumbnailBufferManager().applyPreloadThumbnail(item, image)) _arrived(*item);
}

std::shared_ptr<platform::Operation>
BrowserThumbnailFeed::preloadThumbnailOperation(double topLine, double bottomLine) {
    if (_services.isLargeView()) return nullptr;
    std::vector<PBPreloadThumbnailObject> objects;
    _layout.forEachVisible(topLine, bottomLine, [&](const PBImageBrowserIndex& index) {
        const auto item = _leaves.imageFileAtIndex(index);
        if (item && !item->hasThumbnail())
            objects.push_back({.imageFileItem = item, .pixels = neededPixels(index, *item)});
    });
    return preloadOperation(std::move(objects));
}

std::shared_ptr<platform::Operation>
BrowserThumbnailFeed::preloadOperation(std::vector<PBPreloadThumbnailObject> objects) {
    if (objects.empty()) return nullptr;
    return std::make_shared<PBPreloadThumbnailOperation>(
        std::move(objects), _services.preloadThumbnailLoader(),
        [self = std::weak_ptr(_self)](const PBPreloadThumbnailObject& object) {
            if (const auto alive = self.lock()) (*alive)->preloadThumbnailFinished(object);
        });
}

void BrowserThumbnailFeed::preloadThumbnailFinished(const PBPreloadThumbnailObject& object) {
    platform::assertMainThread();
    const bool isTaken = _services.thumbnailBufferManager().applyPreloadThumbnail(
        object.imageFileItem, object.thumbnailRef);
    if (!isTaken && !object.isAgain) return;
    noteLoaded(*object.imageFileItem, object.isReduced);
    if (isTaken) _arrived(*object.imageFileItem);
}

void BrowserThumbnailFeed::adjustBuildThumb(const QRectF& visible, bool isScrollingDown) {
    platform::assertMainThread();
    auto& queue = _services.buildThumbOperationQueue();
    if (_services.isLargeView() || queue.operationCount() == 0) return;
    std::unordered_map<std::int64_t, platform::QueuePriority> priorities;
    const auto prefer = [&](const QRectF& part, platform::QueuePriority priority) {
        _layout.forEachVisible(part.top(), part.bottom(), [&](const PBImageBrowserIndex& index) {
            priorities.try_emplace(_leaves.imageFileAtIndex(index)->fileId(), priority);
        });
    };
    prefer(visible, platform::QueuePriority::VeryHigh);
    prefer(
        visible.translated(0, isScrollingDown ? visible.height() : -visible.height()),
        platform::QueuePriority::High);
    queue.prefer(priorities);
}
