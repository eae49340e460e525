#include "group/ItemLookup.h"

PBImageFileList
group::takeItemsWithIds(const PBGroupItemArray& tree, std::unordered_set<qint64>& fileIds) {
    PBImageFileList found;
    for (const PBGroupItem* leaf : leavesOf(tree)) {
        if (fileIds.empty()) break;
        for (const auto& item : leaf->imageFiles()) {
            if (fileIds.erase(item->fileId()) == 0) continue;
            found.push_back(item);
            if (fileIds.empty()) return found; // a leaf may hold a million
        }
    }
    return found;
}

PBImageFileList
group::removeItemsWithIds(PBGroupItemArray& tree, std::unordered_set<qint64>& fileIds) {
    PBImageFileList taken;
    for (const auto& node : tree) {
        if (fileIds.empty()) break;
        node->takeImageFiles(fileIds, taken);
    }
    std::erase_if(tree, [](const auto& node) { return node->isEmpty(); });
    return taken;
}
