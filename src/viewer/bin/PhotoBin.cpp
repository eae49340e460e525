#include "viewer/bin/PhotoBin.h"

#include "platform/tasks/MainThread.h"
#include "viewer/bin/PhotoBinHost.h"

#include <algorithm>
#include <cstdlib>

std::shared_ptr<PBImageFileItem> PhotoBin::itemAt(std::int64_t index) const {
    if (index < 0 || index >= count()) return nullptr;
    return _fileItemArray[static_cast<std::size_t>(index)];
}

void PhotoBin::setFocusImageFileItem(std::shared_ptr<PBImageFileItem> item) {
    if (_focusImageFileItem == item) return;
    const auto old = std::exchange(_focusImageFileItem, std::move(item));
    if (old) _host.focusDidLeave(*old);
}

void PhotoBin::forgetFocus() {
    setFocusImageFileItem(nullptr);
    _focusIndex = -1;
}

std::int64_t PhotoBin::indexOfFocus() const {
    if (itemAt(_focusIndex) == _focusImageFileItem) return _focusIndex;
    const auto found = std::ranges::find(_fileItemArray, _focusImageFileItem);
    return found == _fileItemArray.end() ? -1 : static_cast<std::int64_t>(found.index());
}

std::int64_t PhotoBin::indexOf(PBImageFileItem::Sameness sameness) const {
    const auto found = std::ranges::find(_fileItemArray, sameness, [this](const auto& item) {
        return item->samenessWith(*_focusImageFileItem);
    });
    return found == _fileItemArray.end() ? -1 : static_cast<std::int64_t>(found.index());
}

void PhotoBin::refreshFocusIndex() {
    platform::assertMainThread();
    if (count() == 0) return takeFocus(-1);
    if (!_focusImageFileItem)
        return takeFocus(std::clamp<std::int64_t>(_focusIndex, 0, count() - 1));
    const std::int64_t known = indexOfFocus();
    if (known >= 0) {
        _focusIndex = known;
        return;
    }
    const std::int64_t same = indexOf(PBImageFileItem::Sameness::Same);
    if (same >= 0) return replaceFocus(same);
    const std::int64_t anew = indexOf(PBImageFileItem::Sameness::WrittenAnew);
    takeFocus(anew >= 0 ? anew : std::clamp<std::int64_t>(_focusIndex, 0, count() - 1));
}

void PhotoBin::replaceFocus(std::int64_t index) {
    _focusIndex = index;
    replaceFocusImageFileItem(itemAt(index));
}

void PhotoBin::replaceFocusImageFileItem(const std::shared_ptr<PBImageFileItem>& item) {
    const auto former = std::exchange(_focusImageFileItem, item);
    former->setIsSelected(false);
    _focusImageFileItem->setIsSelected(true);
    _host.focusWasReplaced(former, _focusImageFileItem);
    _host.selectDidChange();
}

/// -1 takes the focus away.
void PhotoBin::takeFocus(std::int64_t index) {
    const bool hadFocus = _focusImageFileItem != nullptr;
    if (hadFocus) _focusImageFileItem->setIsSelected(false);
    _focusIndex = index;
    setFocusImageFileItem(itemAt(index));
    if (_focusImageFileItem) _focusImageFileItem->setIsSelected(true);
    if (!hadFocus && !_focusImageFileItem) return;
    _strip.focusDidChange();
    _host.showImageAtIndex(_focusIndex);
    _host.selectDidChange();
}

void PhotoBin::changeFocus(std::int64_t index) {
    takeFocus(index);
    _host.tryPreloadNextOrPrevImage();
}

void PhotoBin::moveTo(std::int64_t target, int direction, bool animation) {
    platform::assertMainThread();
    if (count() == 0) return;
    target = std::clamp<std::int64_t>(target, 0, count() - 1);
    if (target == _focusIndex) return;
    _loadDirection = direction;
    _strip.scrollIndexToCenter(target, animation);
    changeFocus(target);
}

void PhotoBin::navigateToPreviousImage() {
    moveTo(_focusIndex - 1, -1, true);
}

void PhotoBin::navigateToNextImage() {
    moveTo(_focusIndex + 1, 1, true);
}

void PhotoBin::navigateToFirstImage() {
    moveTo(0, -1, _focusIndex < farJump);
}

void PhotoBin::navigateToLastImage() {
    moveTo(count() - 1, 1, count() - 1 - _focusIndex < farJump);
}

void PhotoBin::goTo(std::int64_t index) {
    if (itemAt(index)) moveTo(index, index > _focusIndex ? 1 : -1, true);
}

void PhotoBin::stoppedAt(std::int64_t index, int direction) {
    platform::assertMainThread();
    if (!itemAt(index) || index == _focusIndex) return;
    _loadDirection = direction;
    changeFocus(index);
}

std::vector<IndexedImage> PhotoBin::preloadImageFileItemWithCount(std::int64_t count) const {
    std::vector<IndexedImage> items;
    if (_focusIndex < 0) return items;
    // From an end there is one way only, whichever led there.
    const bool isBackward =
        _focusIndex > 0 && (_loadDirection == -1 || _focusIndex == this->count() - 1);
    const std::int64_t begin =
        isBackward ? std::max<std::int64_t>(0, _focusIndex - count) : _focusIndex + 1;
    const std::int64_t end =
        isBackward ? _focusIndex : std::min(this->count(), _focusIndex + 1 + count);
    for (std::int64_t index = begin; index < end; ++index)
        items.push_back({itemAt(index), index});
    return items;
}
