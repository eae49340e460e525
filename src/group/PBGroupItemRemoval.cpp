#include "group/FolderPaths.h"
#include "group/PBGroupItem.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"

#include <algorithm>

namespace {

/// The path of the item's folder if that is on the disk; empty otherwise.
QString existingFolder(
    qint64 folderId, group::FolderExistence& folders, const group::FolderPaths& folderPaths) {
    if (folders.gone.contains(folderId)) return {};
    if (const auto known = folders.existing.find(folderId); known != folders.existing.end())
        return known->second;
    const QString path = folderPaths.pathOfFolderId(folderId);
    if (path.isEmpty() || !platform::FileManager::resourceValues(path)) {
        folders.gone.insert(folderId);
        return {};
    }
    folders.existing.emplace(folderId, path);
    return path;
}

bool fileExists(const QString& folder, const QString& fileName) {
    return platform::FileManager::resourceValues(platform::pathInFolder(folder, fileName))
        .has_value();
}

} // namespace

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

void PBGroupItem::removeImageFilesWithRemoveGroupItemChain(PBGroupItemChain& chain) {
    if (chain.empty()) return;
    if (!imageFiles().empty()) {
        const PBImageFileArray& unwanted = chain.front()->imageFiles();
        PBImageFileList list(unwanted.begin(), unwanted.end());
        removeImageFiles(list);
        return;
    }
    const auto twin = std::ranges::find(_children, chain.front()->data(), &PBGroupItem::data);
    if (twin == _children.end()) return;
    PBGroupItem& child = **twin;
    if (chain.size() >= 2) chain.erase(chain.begin());
    child.removeImageFilesWithRemoveGroupItemChain(chain);
    if (child.isEmpty()) removeChild(child);
}

void PBGroupItem::checkFileItemExist(
    std::vector<qint64>& fileIds, group::FolderExistence& folders,
    const group::FolderPaths& folderPaths) {
    if (_imageFiles) {
        _imageFiles->eraseIf([&](const auto& item) {
            const QString folder = existingFolder(item->folderId(), folders, folderPaths);
            if (!folder.isEmpty() && fileExists(folder, item->fileName())) return false;
            fileIds.push_back(item->fileId());
            return true;
        });
    }
    for (const auto& child : _children)
        child->checkFileItemExist(fileIds, folders, folderPaths);
    std::erase_if(_children, [](const auto& child) { return child->isEmpty(); });
}
