#include "browser/state/BrowserCarryOver.h"

#include "platform/tasks/MainThread.h"

BrowserCarryOver::Noted BrowserCarryOver::noted(
    BrowserLayout& layout, const BrowserLeafList& leaves, const PBImageBrowserIndex& current,
    const QRectF& visible) {
    platform::assertMainThread();
    Noted noted;
    const BrowserSelection selection(leaves);
    for (const auto& item : selection.selectedFileArray(FoldedLeaves::Included))
        noted.selectedIds.push_back(item->fileId());
    if (const auto item = leaves.imageFileAtIndex(current)) noted.currentId = item->fileId();

    const double line = visible.center().y();
    const auto anchorAt = [&](const PBImageBrowserIndex& index) {
        const auto item = leaves.imageFileAtIndex(index);
        if (!item) return;
        noted.anchorId = item->fileId();
        noted.anchorOffset = line - layout.cellRectAtIndex(index).center().y();
    };
    if (current.isValid() && layout.cellRectAtIndex(current).intersects(visible)) {
        anchorAt(current);
        return noted;
    }
    if (visible.top() <= 0) return noted; // the top of the sheet stays that
    const auto nearest =
        captureScrollWithMode(ScrollCaptureMode::Nearest, layout, leaves, visible, nullptr);
    if (!nearest) return noted;
    anchorAt(
        nearest->imageFileItem ? leaves.indexForImageFile(nearest->imageFileItem)
                               : PBImageBrowserIndex{leaves.groupOfData(*nearest->groupItem), 0});
    return noted;
}

void BrowserCarryOver::note(
    BrowserLayout& layout, const BrowserLeafList& leaves, const PBImageBrowserIndex& current,
    const QRectF& visible) {
    const Noted now = noted(layout, leaves, current, visible);
    _selectedIds.insert(now.selectedIds.begin(), now.selectedIds.end());
    if (now.currentId != 0) _currentId = now.currentId;
    if (now.anchorId == 0) return;
    _anchorId = now.anchorId;
    _anchorOffset = now.anchorOffset;
}

void BrowserCarryOver::forgetSelection() {
    _selectedIds.clear();
    _currentId = 0;
}

BrowserCarryOver::Found BrowserCarryOver::take(const BrowserLeafList& leaves) {
    platform::assertMainThread();
    Found found;
    leaves.forEachImage(
        FoldedLeaves::Included, [&](const PBImageBrowserIndex& index, const auto& item) {
            const qint64 id = item->fileId();
            if (!_selectedIds.empty() && _selectedIds.erase(id) != 0) {
                item->setIsSelected(true);
                found.hasSelected = true;
            }
            if (id == _currentId) {
                _currentId = 0;
                found.current = item;
            }
            if (id == _anchorId) {
                _anchorId = 0;
                found.place = {
                    PBImageBrowserViewScrollCapture::Anchored, leaves.leaf(index.group).data, item,
                    _anchorOffset};
            }
        });
    return found;
}
