#pragma once

#include "core/SharedChunkArray.h"
#include "group/GroupTypes.h"
#include "group/PBGroupItemData.h"
#include "group/PBImageFileItem.h"
#include "group/ValueTexts.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

class PBGroupItem;

/// The nodes of one level, sorted; at the top level a whole tree.
using PBGroupItemArray = std::vector<std::unique_ptr<PBGroupItem>>;
/// The images of a leaf, sorted. Copies are cheap and independent.
using PBImageFileArray = SharedChunkArray<std::shared_ptr<PBImageFileItem>>;
using PBImageFileList = std::vector<std::shared_ptr<PBImageFileItem>>;
/// From a top-level node down to a leaf: nodes of their own that share their data with a tree.
using PBGroupItemChain = std::vector<std::shared_ptr<const PBGroupItem>>;

namespace group {

/// Called for each folder (without an item) and then for each of its images, with the folder's path
/// below the destination; false stops the walk.
using CopyMoveBlock =
    std::function<bool(const QString& path, const std::shared_ptr<PBImageFileItem>& item)>;

/// The leaves of a level and below it, in tree order.
[[nodiscard]] std::vector<PBGroupItem*> leavesOf(const PBGroupItemArray& level);

} // namespace group

/// One node of a group tree: one value of one criterion. Nodes of the chain's last link are leaves
/// and hold images, the others hold further nodes. A tree belongs to one thread and crosses to
/// another only as a copy; what the copies share (items, data) may be used by both.
class PBGroupItem {
public:
    /// A node with data of its own. The parent is not owned and outlives the node.
    [[nodiscard]] static std::unique_ptr<PBGroupItem>
    groupItemWithParent(PBGroupItem* parent, int type, PBValue value);
    /// A node that shares the data and leaves its `groupItem` alone.
    [[nodiscard]] static std::unique_ptr<PBGroupItem>
    groupItemWithParent(PBGroupItem* parent, std::shared_ptr<PBGroupItemData> data);
    PBGroupItem(PBGroupItem* parent, std::shared_ptr<PBGroupItemData> data);
    ~PBGroupItem();
    PBGroupItem(const PBGroupItem&) = delete;
    PBGroupItem& operator=(const PBGroupItem&) = delete;

    [[nodiscard]] PBGroupItem* parent() const { return _parent; }
    [[nodiscard]] const std::shared_ptr<PBGroupItemData>& data() const { return _data; }
    [[nodiscard]] int type() const { return _data->type(); }
    [[nodiscard]] const PBValue& value() const { return _data->value(); }
    [[nodiscard]] PBGroupItemArray& children() { return _children; }
    [[nodiscard]] const PBGroupItemArray& children() const { return _children; }
    /// Empty for a node that is no leaf.
    [[nodiscard]] const PBImageFileArray& imageFiles() const;
    /// The node holds images, or has held some.
    [[nodiscard]] bool isLeafNode() const { return _imageFiles.has_value(); }
    /// Neither images nor children: to be removed by the parent.
    [[nodiscard]] bool isEmpty() const { return _children.empty() && imageFiles().empty(); }

    /// The name for the group panel and the group heads.
    [[nodiscard]] QString displayName(const group::TagLookup& tagWithTagId) const;
    /// The same, but for a folder its path, for a place its whole address.
    [[nodiscard]] QString fullDisplayName(const group::TagLookup& tagWithTagId) const;
    /// The name of the folder that the group is copied into: one that a file system takes.
    [[nodiscard]] QString groupCopyPathName(const group::TagLookup& tagWithTagId) const;
    [[nodiscard]] group::IconName displayIcon() const;
    /// No value: shown in italics.
    [[nodiscard]] bool isUnspecified() const { return !value().hasValue(); }

    /// All images below the node.
    [[nodiscard]] std::size_t imageFileCount() const;
    /// The leaves below this node in tree order; none for a leaf itself.
    [[nodiscard]] std::vector<PBGroupItem*> leafGroupItemArray() const;
    /// This node if it is a leaf, else the first one below; nullptr if there is none.
    [[nodiscard]] PBGroupItem* firstLeafGroupItem();

    /// -1, 0 or 1: the order of siblings by their values. 0 is what makes two the same group.
    [[nodiscard]] std::int64_t sortCompare(const PBGroupItem& other) const;

    /// The node of the level with this value: the one that is there, or a new one at its place.
    static PBGroupItem&
    sortAddGroupItem(PBGroupItemArray& level, PBGroupItem* parent, int type, const PBValue& value);
    /// Makes the node a leaf, if it is none, and puts the item at its place; behind equal ones, at
    /// the end for the sort type 0.
    void
    sortAddImageFileItem(std::shared_ptr<PBImageFileItem> item, int sortType, bool isDescending);

    /// A copy of the node and all below it. It shares data and items and is independent in all
    /// else; what it costs grows with the number of groups, hardly with that of the images.
    [[nodiscard]] std::unique_ptr<PBGroupItem> copyWithParent(PBGroupItem* parent) const;
    /// Makes this node, and those below, the ones that their data name.
    void updateDataGroupItem();

    /// Takes each item that is below the node out of both the tree and the list.
    void removeImageFiles(PBImageFileList& imageFiles);
    /// The same by ids: takes each that is below the node out of the tree and out of the set.
    void takeImageFiles(std::unordered_set<qint64>& fileIds, PBImageFileList& taken);
    /// Removes the images of the chain's last node. The chain comes from another copy of the tree;
    /// its first node is to be found on the level below this one, or is this very node's twin when
    /// it is a leaf. Answers those that were there.
    PBImageFileList removeImageFilesWithRemoveGroupItemChain(PBGroupItemChain& chain);
    /// Takes all images out of a leaf, which stays where it is for those that come back.
    [[nodiscard]] PBImageFileList takeImageFiles();
    /// Removes the groups of a level, and below, that hold nothing.
    static void removeEmptyGroups(PBGroupItemArray& level);
    /// Removes the images whose files are gone, of which each is asked.
    void checkFileItemExist(const std::function<bool(PBImageFileItem& item)>& isGone);

    /// Walks the groups as folders and images; false if the block stopped it.
    bool copyMoveToWithBlock(
        const group::CopyMoveBlock& block, const group::TagLookup& tagWithTagId,
        const QString& parentPath = {}) const;

private:
    void removeChild(const PBGroupItem& child);
    void removeFromLeaves(
        std::unordered_set<const PBImageFileItem*>& wanted,
        std::unordered_set<const PBImageFileItem*>& removed);

    PBGroupItem* const _parent;
    const std::shared_ptr<PBGroupItemData> _data;
    PBGroupItemArray _children;
    std::optional<PBImageFileArray> _imageFiles;
};
