#include "browser/state/BrowserNeighbour.h"

#include "group/PBImageFileItem.h"

#include <algorithm>
#include <unordered_set>

BrowserNeighbour::BrowserNeighbour(
    const BrowserLeafList& leaves, const PBImageBrowserIndex& current)
    : _index(current), _current(leaves.imageFileAtIndex(current)) {
    if (!_current) return;
    _leaf = leaves.leaf(current.group).data;
    _siblings = leaves.leaf(current.group).imageFiles;
}

std::shared_ptr<PBImageFileItem> BrowserNeighbour::taken(const BrowserLeafList& leaves) const {
    if (!_current || leaves.leafCount() == 0) return nullptr;
    if (leaves.indexForImageFile(_current).isValid()) return nullptr;
    if (auto again = leaves.imageFileAtIndex(leaves.indexOfSamePhotograph(*_current))) return again;
    // Leaves may be empty for a moment; and nothing is selected out of sight.
    const auto hasShown = [&](std::int64_t group) {
        return leaves.imageFileCount(group) > 0 && leaves.takesPart(group, FoldedLeaves::Excluded);
    };
    const std::int64_t same = leaves.groupOfData(*_leaf);
    if (same >= 0 && hasShown(same)) return sibling(leaves, same);
    for (std::int64_t group = _index.group; group < leaves.leafCount(); ++group)
        if (hasShown(group)) return leaves.imageFileAtIndex({group, 0});
    for (std::int64_t group = leaves.leafCount() - 1; group >= 0; --group)
        if (hasShown(group))
            return leaves.imageFileAtIndex({group, leaves.imageFileCount(group) - 1});
    return nullptr;
}

/// Others may have gone with it.
std::shared_ptr<PBImageFileItem>
BrowserNeighbour::sibling(const BrowserLeafList& leaves, std::int64_t group) const {
    std::unordered_set<const PBImageFileItem*> there;
    for (const auto& item : leaves.leaf(group).imageFiles)
        there.insert(item.get());
    const auto at = [this](std::int64_t index) {
        return _siblings[static_cast<std::size_t>(index)];
    };
    const auto count = static_cast<std::int64_t>(_siblings.size());
    for (std::int64_t index = _index.item + 1; index < count; ++index)
        if (there.contains(at(index).get())) return at(index);
    for (std::int64_t index = _index.item - 1; index >= 0; --index)
        if (there.contains(at(index).get())) return at(index);
    return leaves.imageFileAtIndex(
        {group, std::min(_index.item, leaves.imageFileCount(group) - 1)});
}
