#include "group/UnknownPlaces.h"

namespace group {

namespace {

void takeFrom(const PBGroupItemArray& level, bool isBelowUnknown, PBImageFileList& taken) {
    for (const auto& node : level) {
        const bool isUnknown = isBelowUnknown || (node->type() == Place && node->value().isNull());
        takeFrom(node->children(), isUnknown, taken);
        if (!isUnknown || !node->isLeafNode()) continue;
        const PBImageFileList items = node->takeImageFiles();
        taken.insert(taken.end(), items.begin(), items.end());
    }
}

} // namespace

PBImageFileList takeItemsOfUnknownPlaces(const PBGroupItemArray& tree) {
    PBImageFileList taken;
    takeFrom(tree, false, taken);
    return taken;
}

} // namespace group
