#include "shell/large/LargeViewLists.h"

#include "core/PBOpenFiles.h"
#include "group/PBImageFileItem.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace {

using LargeViewLists::List;

template <typename Predicate>
PBImageFileArray imagesWhere(const BrowserLeafList& leaves, Predicate predicate) {
    PBImageFileArray images;
    leaves.forEachImage(FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
        if (predicate(*item)) images.push_back(item);
    });
    return images;
}

List ofGroup(const BrowserLeafList& leaves, std::int64_t group) {
    const BrowserLeafList::Leaf& leaf = leaves.leaf(group);
    return {leaf.imageFiles, leaf.data};
}

/// Those of the bin that are still shown, in the order of the tree. A scan may have brought them
/// again as other items.
std::optional<List> stillThere(const BrowserLeafList& leaves, const PhotoBin& bin) {
    if (bin.count() == 0) return std::nullopt;
    std::unordered_set<qint64> fileIds;
    std::unordered_multimap<QString, const PBImageFileItem*> byName;
    std::unordered_set<const PBImageFileItem*> items;
    for (const auto& item : bin.fileItemArray()) {
        fileIds.insert(item->fileId());
        byName.emplace(item->fileName(), item.get());
        items.insert(item.get());
    }
    const auto isWrittenAnew = [&](const PBImageFileItem& item) {
        const auto [first, last] = byName.equal_range(item.fileName());
        return std::any_of(first, last, [&](const auto& named) {
            return item.samenessWith(*named.second) == PBImageFileItem::Sameness::WrittenAnew;
        });
    };
    bool isSame = true;
    PBImageFileArray images = imagesWhere(leaves, [&](const PBImageFileItem& item) {
        const bool isIn = fileIds.erase(item.fileId()) > 0 || isWrittenAnew(item);
        isSame = isSame && (!isIn || items.contains(&item));
        return isIn;
    });
    // Those that only changed places keep the order that the user went through.
    if (isSame && std::ssize(images) == bin.count()) return std::nullopt;
    return List{std::move(images), nullptr};
}

/// -1 where the group is gone.
std::int64_t leafOfPath(const BrowserLeafList& leaves, const LargeViewLists::GroupPath& path) {
    const std::int64_t same = leaves.groupOfData(*path.front());
    if (same >= 0) return same;
    for (std::int64_t group = 0; group < leaves.leafCount(); ++group) {
        const auto isSame = [](const auto& one, const auto& other) {
            return one->orderKey().compare(other->orderKey()) == 0;
        };
        // Few leaves share the innermost value.
        if (!isSame(leaves.leaf(group).data, path.front())) continue;
        if (std::ranges::equal(LargeViewLists::groupPath(leaves.leaf(group).data), path, isSame))
            return group;
    }
    return -1;
}

} // namespace

LargeViewLists::GroupPath LargeViewLists::groupPath(const std::shared_ptr<PBGroupItemData>& leaf) {
    GroupPath path;
    if (!leaf) return path;
    path.push_back(leaf);
    const PBGroupItem* node = leaf->groupItem();
    for (node = node ? node->parent() : nullptr; node; node = node->parent())
        path.push_back(node->data());
    return path;
}

LargeViewLists::List
LargeViewLists::forEntering(const BrowserLeafList& leaves, const PBImageBrowserIndex& index) {
    PBImageFileArray selected =
        imagesWhere(leaves, [](const PBImageFileItem& item) { return item.isSelected(); });
    const auto focus = leaves.imageFileAtIndex(index);
    if (selected.size() < 2 || !focus->isSelected()) return ofGroup(leaves, index.group);
    return {std::move(selected), nullptr};
}

std::optional<LargeViewLists::List> LargeViewLists::afterRebuild(
    const BrowserLeafList& leaves, const PhotoBin& bin, const GroupPath& path,
    PBOpenFiles* openFiles, const group::FolderPaths& folderPaths) {
    if (openFiles) {
        group::FolderPathCache folderCache;
        return List{
            imagesWhere(
                leaves,
                [&](const PBImageFileItem& item) {
                    return openFiles->matchFileInFolder(
                        item.folderId(), item.folderPath(folderPaths, folderCache), item.fileId(),
                        item.fileName());
                }),
            nullptr};
    }
    if (!bin.groupItem()) return stillThere(leaves, bin);
    const std::int64_t group = leafOfPath(leaves, path);
    if (group < 0) return List{{}, bin.groupItem()};
    return ofGroup(leaves, group);
}
