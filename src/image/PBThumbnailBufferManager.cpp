#include "image/PBThumbnailBufferManager.h"

#include "core/SortedArray.h"
#include "group/PBImageFileItem.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>

PBThumbnailBufferManager::PBThumbnailBufferManager(std::uint64_t bufferCount)
    : _bufferCount(bufferCount == 0 ? 1 : bufferCount) {}

PBImageBrowserIndex
PBThumbnailBufferManager::imageFileItemIndex(const PBImageFileItem& item) const {
    return _order ? _order->indexForImageFile(item) : PBImageBrowserIndex{};
}

void PBThumbnailBufferManager::pushImageFileItem(
    std::shared_ptr<PBImageFileItem> item, std::optional<PBImageBrowserIndex> index) {
    platform::assertMainThread();
    const PBImageBrowserIndex position = index ? *index : imageFileItemIndex(*item);
    if (!position.isValid()) {
        item->clearThumbnailRef();
        return;
    }
    const qsizetype bytes = item->thumbnailRef().sizeInBytes();
    if (_imageFileItemCount >= _bufferCount && !_groupIndexObjectArray.empty())
        makeRoom(*item, position);
    while (_byteCount + bytes > _byteLimit && !_groupIndexObjectArray.empty())
        makeRoom(*item, position);
    GroupEntry* group = sortAddObject(
        _groupIndexObjectArray, std::make_unique<GroupEntry>(position.group, ItemEntries()), 0,
        false, EqualElements::Refused);
    sortAddObject(
        group->object(), std::make_unique<ItemEntry>(position.item, Held{std::move(item), bytes}),
        0, false, EqualElements::AddedBehind);
    ++_imageFileItemCount;
    _byteCount += bytes;
}

bool PBThumbnailBufferManager::applyPreloadThumbnail(
    const std::shared_ptr<PBImageFileItem>& item, const QImage& thumbnail,
    std::optional<PBImageBrowserIndex> index) {
    platform::assertMainThread();
    const QImage present = item->thumbnailRef();
    const auto pixels = [](const QImage& image) { return qint64{image.width()} * image.height(); };
    if (thumbnail.isNull() || pixels(thumbnail) <= pixels(present)) return false;
    if (!present.isNull()) forget(*item);
    item->setThumbnailRef(thumbnail);
    pushImageFileItem(item, index);
    return true;
}

void PBThumbnailBufferManager::clearThumbnailBuffer() {
    platform::assertMainThread();
    for (const auto& group : _groupIndexObjectArray)
        for (const auto& entry : group->object())
            entry->object().item->clearThumbnailRef();
    _groupIndexObjectArray.clear();
    _imageFileItemCount = 0;
    _byteCount = 0;
}

void PBThumbnailBufferManager::makeRoom(
    const PBImageFileItem& item, const PBImageBrowserIndex& index) {
    if (shouldDropFront(index)) {
        dropFront(item);
    } else {
        dropBack(item);
    }
    --_imageFileItemCount;
}

bool PBThumbnailBufferManager::shouldDropFront(const PBImageBrowserIndex& index) const {
    const std::int64_t leaves = _order ? _order->leafCount() : 0;
    if (leaves == 0) return false;
    const GroupEntry& firstGroup = *_groupIndexObjectArray.front();
    const GroupEntry& lastGroup = *_groupIndexObjectArray.back();
    PBImageBrowserIndex first{firstGroup.index(), firstGroup.object().front()->index()};
    PBImageBrowserIndex last{lastGroup.index(), lastGroup.object().back()->index()};
    // Old positions may lie beyond the present tree: its last leaf stands for them, whole.
    first.group = std::min(first.group, leaves - 1);
    last.group = std::min(last.group, leaves - 1);
    if (compareIndex(index, last) < 0) return true;
    if (compareIndex(index, first) > 0) return false;
    if (first.group != firstGroup.index()) first.item = 0;
    if (last.group != lastGroup.index()) last.item = _order->imageFileCount(last.group);
    return distance(first, index) >= distance(index, last);
}

std::int64_t PBThumbnailBufferManager::distance(
    const PBImageBrowserIndex& from, const PBImageBrowserIndex& to) const {
    std::int64_t images = 0;
    for (std::int64_t group = from.group; group <= to.group; ++group) {
        if (_order->isCollapsedForBrowser(group)) continue;
        const std::int64_t start = group == from.group ? from.item : 0;
        const std::int64_t end = group == to.group ? to.item : _order->imageFileCount(group);
        images += end - start;
    }
    return images;
}

void PBThumbnailBufferManager::dropFront(const PBImageFileItem& keep) {
    ItemEntries& entries = _groupIndexObjectArray.front()->object();
    const Held& held = entries.front()->object();
    if (held.item.get() != &keep) held.item->clearThumbnailRef();
    _byteCount -= held.bytes;
    entries.erase(entries.begin());
    if (entries.empty()) _groupIndexObjectArray.erase(_groupIndexObjectArray.begin());
}

void PBThumbnailBufferManager::dropBack(const PBImageFileItem& keep) {
    ItemEntries& entries = _groupIndexObjectArray.back()->object();
    const Held& held = entries.back()->object();
    if (held.item.get() != &keep) held.item->clearThumbnailRef();
    _byteCount -= held.bytes;
    entries.pop_back();
    if (entries.empty()) _groupIndexObjectArray.pop_back();
}

void PBThumbnailBufferManager::forget(const PBImageFileItem& item) {
    for (const auto& group : _groupIndexObjectArray)
        std::erase_if(group->object(), [&](const auto& entry) {
            if (entry->object().item.get() != &item) return false;
            --_imageFileItemCount;
            _byteCount -= entry->object().bytes;
            return true;
        });
    std::erase_if(
        _groupIndexObjectArray, [](const auto& group) { return group->object().empty(); });
}
