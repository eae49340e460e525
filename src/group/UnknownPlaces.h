#pragma once

#include "group/PBGroupItem.h"

namespace group {

/// Takes the images out of the tree whose position has no address yet: those in groups of places,
/// or below them, that have the null marker for a value. Their groups stay, for those that come
/// back; `PBGroupItem::removeEmptyGroups` removes the others. On the thread of the tree.
[[nodiscard]] PBImageFileList takeItemsOfUnknownPlaces(const PBGroupItemArray& tree);

} // namespace group
