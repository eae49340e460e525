#include "browser/input/BrowserInput.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// The mouse may tremble so far, in points, before it drags.
constexpr double dragThreshold = 3;

} // namespace

BrowserInput::BrowserInput(
    BrowserLayout& layout, const BrowserLeafList& leaves, const BrowserTextWidths& textWidths,
    BrowserInputHost& host)
    : _layout(layout), _leaves(leaves), _textWidths(textWidths), _host(host), _selection(leaves) {}

void BrowserInput::reset() {
    platform::assertMainThread();
    cancelDrag();
    _shiftFileItem.reset();
    _downImageFileItem.reset();
}

void BrowserInput::setCurrent(const std::shared_ptr<PBImageFileItem>& item) {
    platform::assertMainThread();
    _downImageFileItem = item;
    _shiftFileItem = item;
}

void BrowserInput::setDragging(bool isDragging) {
    if (std::exchange(_isDragging, isDragging) != isDragging) _host.setDragging(isDragging);
}

void BrowserInput::selectOnly(const std::shared_ptr<PBImageFileItem>& item) {
    _selection.deselectAll();
    item->setIsSelected(true);
}

void BrowserInput::mouseDown(const QPointF& point, BrowserModifiers modifiers) {
    platform::assertMainThread();
    endBand();
    _downPoint = point;
    _downModifiers = modifiers;
    const BrowserHit hit = _layout.itemIndexByPoint(point, _textWidths);
    _downImageFileItem = _leaves.imageFileAtIndex(hit.index);

    bool hasChanged = false;
    bool isRename = false;
    if (!_downImageFileItem) {
        if (!modifiers.shift && !modifiers.command) hasChanged = _selection.deselectAll();
    } else if (modifiers.shift) {
        PBImageBrowserIndex anchor = _leaves.indexForImageFile(_shiftFileItem);
        if (!anchor.isValid()) anchor = {0, 0};
        hasChanged = _selection.selectFrom(anchor, hit.index);
    } else if (!modifiers.command) {
        if (!_downImageFileItem->isSelected()) {
            selectOnly(_downImageFileItem);
            _shiftFileItem = _downImageFileItem;
            hasChanged = true;
        }
        isRename = hit.part == BrowserPart::FileName;
    }
    if (hasChanged) _host.selectDidChange();
    if (isRename) {
        _host.beginRename(hit.index);
        _downImageFileItem.reset();
        return;
    }
    setDragging(true);
}

void BrowserInput::mouseUp(int clickCount) {
    platform::assertMainThread();
    if (!_isDragging) return;
    if (_downImageFileItem && _downModifiers.command && !_downModifiers.shift) {
        const bool select = !_downImageFileItem->isSelected();
        _downImageFileItem->setIsSelected(select);
        if (select) _shiftFileItem = _downImageFileItem;
        _host.selectDidChange();
    }
    endBand();
    setDragging(false);
    if (clickCount == 2 && _downImageFileItem) {
        const PBImageBrowserIndex index = _leaves.indexForImageFile(_downImageFileItem);
        if (index.isValid()) _host.enterToLargeView(index);
    }
}

void BrowserInput::cancelDrag() {
    platform::assertMainThread();
    endBand();
    setDragging(false);
}

bool BrowserInput::cancelBand() {
    platform::assertMainThread();
    if (!_hasBand) return false;
    // One that touches nothing leaves everything as it was before.
    const QRectF nothing(QPointF(-1, -1), QSizeF());
    if (applyBand(nothing)) _host.selectDidChange();
    cancelDrag();
    return true;
}

void BrowserInput::mouseDragged(const QPointF& point) {
    platform::assertMainThread();
    if (!_isDragging) return;
    if (_hasBand) return updateBand(point);
    const QPointF way = point - _downPoint;
    if (std::abs(way.x()) <= dragThreshold && std::abs(way.y()) <= dragThreshold) return;
    if (!_downImageFileItem) {
        beginBand();
        return updateBand(point);
    }
    if (_downModifiers.command && !_downImageFileItem->isSelected()) {
        _downImageFileItem->setIsSelected(true);
        _shiftFileItem = _downImageFileItem;
        _host.selectDidChange();
    }
    const PBImageBrowserIndex index = _leaves.indexForImageFile(_downImageFileItem);
    if (!_downImageFileItem->isSelected() || !index.isValid()) return;
    setDragging(false);
    _host.beginDragOut(index);
}

void BrowserInput::beginBand() {
    _selection.storeCommandSelect();
    _hasBand = true;
    _bandRange = {};
}

void BrowserInput::endBand() {
    if (!std::exchange(_hasBand, false)) return;
    _host.setSelectTimerScrollStep(0);
    _host.showBand({});
}

void BrowserInput::updateBand(const QPointF& point) {
    updateAutoScroll(point);
    const QRectF band = QRectF(_downPoint, point).normalized();
    _host.showBand(band);
    if (applyBand(band)) _host.selectDidChange();
}

void BrowserInput::updateAutoScroll(const QPointF& point) {
    constexpr double speed = 1.5; // of the distance outside, each frame
    const QRectF visible = _host.visibleRect();
    double outside = 0;
    if (point.y() < visible.top()) outside = point.y() - visible.top();
    if (point.y() > visible.bottom()) outside = point.y() - visible.bottom();
    _host.setSelectTimerScrollStep(static_cast<int>(outside * speed));
}

bool BrowserInput::applyBand(const QRectF& band) {
    const BrowserRange range = _layout.visibleRange(band.top(), band.bottom());
    const BrowserColumns columns = _layout.visibleColumns(band.left(), band.right());
    const std::int64_t columnCount = _layout.cellColumn();
    const auto isInside = [&](const PBImageBrowserIndex& index) {
        const auto items = _layout.itemsInRange(index.group, range.begin, range.end);
        if (!items || index.item < items->first || index.item > items->last) return false;
        const BrowserBand leaves = _layout.bandOf(index.group);
        const std::int64_t column = leaves.column + index.item % columnCount;
        if (column < columns.begin || column > columns.end) return false;
        const std::int64_t row = index.item / columnCount;
        const bool isOnEdge =
            leaves.isShared() || column == columns.begin || column == columns.end ||
            (index.group == range.begin.group && row == items->first / columnCount) ||
            (index.group == range.end.group && row == items->last / columnCount);
        return !isOnEdge || _layout.cellRectAtIndex(index).intersects(band);
    };
    bool hasChanged = false;
    const auto apply = [&](std::int64_t group, std::int64_t first, std::int64_t last) {
        for (std::int64_t item = first; item <= last; ++item) {
            const auto image = _leaves.imageFileAtIndex({group, item});
            const bool isIn = range.isComplete() && group >= range.begin.group &&
                              group <= range.end.group && isInside({group, item});
            // With the command key the band toggles, else it selects.
            const bool inside = _downModifiers.command ? !image->storedSelect() : true;
            const bool wanted = isIn ? inside : image->storedSelect();
            if (image->isSelected() == wanted) continue;
            image->setIsSelected(wanted);
            hasChanged = true;
        }
    };
    // Only where the band is, or was, can anything have changed.
    for (const BrowserRange& each : {_bandRange, range}) {
        if (!each.isComplete()) continue;
        // There may be fewer leaves by now than there were.
        const std::int64_t last = std::min(each.end.group, _leaves.leafCount() - 1);
        for (std::int64_t group = each.begin.group; group <= last; ++group) {
            if (_layout.isCollapsed(group)) continue;
            const auto items = _layout.itemsInRange(group, each.begin, each.end);
            if (items) apply(group, items->first, items->last);
        }
    }
    _bandRange = range;
    return hasChanged;
}

bool BrowserInput::rightMouseDown(const QPointF& point) {
    platform::assertMainThread();
    const BrowserHit hit = _layout.itemIndexByPoint(point, _textWidths);
    const auto item = _leaves.imageFileAtIndex(hit.index);
    if (!item) {
        if (_selection.deselectAll()) _host.selectDidChange();
    } else if (!item->isSelected()) {
        selectOnly(item);
        _shiftFileItem = item;
        _downImageFileItem = item;
        _host.selectDidChange();
    }
    return item != nullptr;
}
