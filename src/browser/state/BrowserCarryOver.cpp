#include "browser/state/BrowserCarryOver.h"

#include "platform/tasks/MainThread.h"

void BrowserCarryOver::note(
    BrowserLayout& layout, const BrowserLeafList& leaves, const PBImageBrowserIndex& current,
    const QRectF& visible) {
    platform::assertMainThread();
    const BrowserSelection selection(leaves);
    for (const auto& item : selection.selectedFileArray(FoldedLeaves::Included))
        _selectedIds.insert(item->fileId());
    if (const auto item = leaves.imageFileAtIndex(current)) _currentId = item->fileId();

    const double line = visible.center().y();
    const auto anchorAt = [&](const PBImageBrowserIndex& index) {
        const auto item = leaves.imageFileAtIndex(index);
        if (!item) return;
        _anchorId = item->fileId();
        _anchorOffset = line - layout.cellRectAtIndex(index).center().y();
    };
    if (current.isValid() && layout.cellRectAtIndex(current).intersects(visible))
        return anchorAt(current);
    if (visible.top() <= 0) return; // the top of the sheet stays that
    const auto nearest =
        captureScrollWithMode(ScrollCaptureMode::Nearest, layout, leaves, visible, nullptr);
    if (!nearest) return;
    anchorAt(
        nearest->imageFileItem ? leaves.indexForImageFile(nearest->imageFileItem)
                               : PBImageBrowserIndex{leaves.groupOfData(*nearest->groupItem), 0});
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
