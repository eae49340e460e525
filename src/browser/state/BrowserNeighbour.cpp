#include "browser/state/BrowserNeighbour.h"

#include "group/PBImageFileItem.h"

#include <algorithm>

BrowserNeighbour::BrowserNeighbour(
    const BrowserLeafList& leaves, const PBImageBrowserIndex& current)
    : _index(current), _current(leaves.imageFileAtIndex(current)) {
    if (!_current) return;
    _leaf = leaves.leaf(current.group).data;
    _wasSelected = _current->isSelected();
}

std::shared_ptr<PBImageFileItem> BrowserNeighbour::taken(const BrowserLeafList& leaves) const {
    if (!_current || leaves.leafCount() == 0) return nullptr;
    if (leaves.indexForImageFile(_current).isValid()) return nullptr;
    std::shared_ptr<PBImageFileItem> again;
    leaves.forEachImage(FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
        if (item->fileId() == _current->fileId()) again = item;
    });
    if (again) return again;
    const std::int64_t same = leaves.groupOfData(*_leaf);
    if (same >= 0 && leaves.imageFileCount(same) > 0)
        return leaves.imageFileAtIndex(
            {same, std::min(_index.item, leaves.imageFileCount(same) - 1)});
    const std::int64_t last = leaves.leafCount() - 1;
    if (_index.group <= last) return leaves.imageFileAtIndex({_index.group, 0});
    return leaves.imageFileAtIndex({last, leaves.imageFileCount(last) - 1});
}
