#pragma once

#include "group/PBGroupItem.h"

#include <unordered_set>

namespace group {

/// The images of the tree with these ids, in its order; the ids of those that are found are taken
/// out of the set. On the thread of the tree.
[[nodiscard]] PBImageFileList
takeItemsWithIds(const PBGroupItemArray& tree, std::unordered_set<qint64>& fileIds);

/// The same, and takes them out of the tree, with groups that become empty.
[[nodiscard]] PBImageFileList
removeItemsWithIds(PBGroupItemArray& tree, std::unordered_set<qint64>& fileIds);

} // namespace group
