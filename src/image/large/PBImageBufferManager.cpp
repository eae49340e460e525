#include "image/large/PBImageBufferManager.h"

#include "group/PBImageFileItem.h"
#include "image/large/ImageVersions.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

namespace {

constexpr qint64 shareOfMemory = 16;
/// The focus, and one on either side.
constexpr std::int64_t keptDistance = 1;

} // namespace

qint64 PBImageBufferManager::usualByteLimit() {
    return qint64{::sysconf(_SC_PHYS_PAGES)} * ::sysconf(_SC_PAGESIZE) / shareOfMemory;
}

PBImageBufferManager::PBImageBufferManager(Environment environment)
    : _environment(std::move(environment)) {
    _environment.loadImageManager.addColoursObserver(this, [this] { coloursDidChange(); });
}

PBImageBufferManager::~PBImageBufferManager() {
    _environment.loadImageManager.removeColoursObserver(this);
}

void PBImageBufferManager::pushImageFileItem(
    const std::shared_ptr<PBImageFileItem>& item, std::int64_t index, Items keepItems) {
    platform::assertMainThread();
    if (std::ranges::find(_imageFileArray, item, &Held::item) == _imageFileArray.end()) {
        if (_imageFileArray.size() >= mostItems) {
            dropFarthest(index, [keepItems](const Held& held) {
                return std::ranges::find(keepItems, held.item) != keepItems.end();
            });
        }
        _imageFileArray.push_back({item, index});
    }
    keepWithinBytes(index);
}

void PBImageBufferManager::keepWithinBytes(std::int64_t index) {
    const std::int64_t focus = _environment.loadImageManager.focusIndex().value_or(index);
    const double side = _environment.loadImageManager.screen().fitInSide();
    const auto isKept = [focus, side](const Held& held) {
        return std::abs(held.index - focus) <= keptDistance ||
               fitInByteCount(*held.item, side) == 0;
    };
    while (fitInBytes() > byteLimit()) {
        if (!dropFarthest(focus, isKept)) return;
    }
}

qint64 PBImageBufferManager::byteLimit() const {
    // Where the machine's memory runs short, half of what is left and what is held here.
    const auto available = static_cast<qint64>(_environment.availableMemory());
    return std::min(_environment.byteLimit, (available + fitInBytes()) / 2);
}

bool PBImageBufferManager::dropFarthest(
    std::int64_t index, const std::function<bool(const Held&)>& isKept) {
    const Held* farthest = nullptr;
    for (const Held& held : _imageFileArray) {
        if (isKept(held)) continue;
        if (!farthest || std::abs(held.index - index) > std::abs(farthest->index - index))
            farthest = &held;
    }
    if (!farthest) return false;
    letGo(*farthest);
    _imageFileArray.erase(_imageFileArray.begin() + (farthest - _imageFileArray.data()));
    return true;
}

void PBImageBufferManager::letGo(const Held& held) const {
    const double side = _environment.loadImageManager.screen().fitInSide();
    clearMarkersOfLargerVersions(*held.item);
    clearFitInImage(*held.item, side);
    // An animation or an original of what was loaded ahead and never looked at has no other end.
    if (held.index != _environment.loadImageManager.focusIndex())
        clearUnFitInImages(*held.item, side);
}

void PBImageBufferManager::clearBuffer() {
    platform::assertMainThread();
    for (const Held& held : std::exchange(_imageFileArray, {})) {
        const double side = _environment.loadImageManager.screen().fitInSide();
        clearMarkersOfLargerVersions(*held.item);
        clearFitInImage(*held.item, side);
        clearUnFitInImages(*held.item, side);
    }
    _environment.loadImageManager.returnFreeMemory();
}

void PBImageBufferManager::coloursDidChange() {
    platform::assertMainThread();
    for (const Held& held : _imageFileArray)
        expireImages(*held.item);
}

void PBImageBufferManager::itemWasReplaced(
    const std::shared_ptr<PBImageFileItem>& former, const std::shared_ptr<PBImageFileItem>& item) {
    platform::assertMainThread();
    if (former == item) return;
    moveImages(*former, *item);
    _environment.loadImageManager.itemWasReplaced(*former, item);
    const auto held = std::ranges::find(_imageFileArray, former, &Held::item);
    if (held != _imageFileArray.end()) held->item = item;
}

qint64 PBImageBufferManager::byteCount() const {
    qint64 bytes = 0;
    for (const Held& held : _imageFileArray)
        bytes += imageByteCount(*held.item);
    return bytes;
}

qint64 PBImageBufferManager::fitInBytes() const {
    qint64 bytes = 0;
    for (const Held& held : _imageFileArray)
        bytes += fitInByteCount(*held.item, _environment.loadImageManager.screen().fitInSide());
    return bytes;
}
