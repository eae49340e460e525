#include "group/PBGroupItem.h"

#include <algorithm>

void PBGroupItem::removeChild(const PBGroupItem& child) {
    std::erase_if(_children, [&](const auto& held) { return held.get() == &child; });
}

void PBGroupItem::removeFromLeaves(
    std::unordered_set<const PBImageFileItem*>& wanted,
    std::unordered_set<const PBImageFileItem*>& removed) {
    if (_imageFiles) {
        _imageFiles->eraseIf([&](const auto& item) {
            if (wanted.erase(item.get()) == 0) return false;
            removed.insert(item.get());
            return true;
        });
    }
    for (const auto& child : _children) {
        if (wanted.empty()) break;
        child->removeFromLeaves(wanted, removed);
    }
    std::erase_if(_children, [](const auto& child) { return child->isEmpty(); });
}

void PBGroupItem::removeImageFiles(PBImageFileList& imageFiles) {
    if (imageFiles.empty()) return;
    std::unordered_set<const PBImageFileItem*> wanted;
    std::unordered_set<const PBImageFileItem*> removed;
    for (const auto& item : imageFiles)
        wanted.insert(item.get());
    removeFromLeaves(wanted, removed);
    std::erase_if(imageFiles, [&](const auto& item) { return removed.erase(item.get()) != 0; });
}

void PBGroupItem::takeImageFiles(std::unordered_set<qint64>& fileIds, PBImageFileList& taken) {
    if (_imageFiles) {
        _imageFiles->eraseIf([&](const auto& item) {
            if (fileIds.empty() || fileIds.erase(item->fileId()) == 0) return false;
            taken.push_back(item);
            return true;
        });
    }
    for (const auto& child : _children) {
        if (fileIds.empty()) break;
        child->takeImageFiles(fileIds, taken);
    }
    std::erase_if(_children, [](const auto& child) { return child->isEmpty(); });
}

PBImageFileList PBGroupItem::removeImageFilesWithRemoveGroupItemChain(PBGroupItemChain& chain) {
    if (chain.empty()) return {};
    if (!imageFiles().empty()) {
        const PBImageFileArray& unwanted = chain.front()->imageFiles();
        PBImageFileList taken(unwanted.begin(), unwanted.end());
        PBImageFileList missing = taken;
        removeImageFiles(missing);
        if (missing.empty()) return taken;
        const std::unordered_set<std::shared_ptr<PBImageFileItem>> left(
            missing.begin(), missing.end());
        std::erase_if(taken, [&](const auto& item) { return left.contains(item); });
        return taken;
    }
    const auto twin = std::ranges::find(_children, chain.front()->data(), &PBGroupItem::data);
    if (twin == _children.end()) return {};
    PBGroupItem& child = **twin;
    if (chain.size() >= 2) chain.erase(chain.begin());
    PBImageFileList taken = child.removeImageFilesWithRemoveGroupItemChain(chain);
    if (child.isEmpty()) removeChild(child);
    return taken;
}

PBImageFileList PBGroupItem::takeImageFiles() {
    PBImageFileList taken(imageFiles().begin(), imageFiles().end());
    if (_imageFiles) _imageFiles.emplace();
    return taken;
}

void PBGroupItem::removeEmptyGroups(PBGroupItemArray& level) {
    for (const auto& node : level)
        removeEmptyGroups(node->_children);
    std::erase_if(level, [](const auto& node) { return node->isEmpty(); });
}

void PBGroupItem::checkFileItemExist(const std::function<bool(PBImageFileItem& item)>& isGone) {
    if (_imageFiles) {
        _imageFiles->eraseIf([&](const auto& item) { return isGone(*item); });
    }
    for (const auto& child : _children)
        child->checkFileItemExist(isGone);
    std::erase_if(_children, [](const auto& child) { return child->isEmpty(); });
}
