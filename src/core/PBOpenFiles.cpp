#include "core/PBOpenFiles.h"

#include "core/Paths.h"

#include <algorithm>

namespace {

template <typename T>
std::int64_t compared(T left, T right) {
    return left < right ? -1 : left > right ? 1 : 0;
}

std::shared_ptr<const PBOpenFileObject> copyOf(const std::shared_ptr<PBOpenFileObject>& object) {
    return object ? std::make_shared<const PBOpenFileObject>(*object) : nullptr;
}

std::vector<PBOpenFileObject> copyOf(const PBOpenFileArray& array) {
    std::vector<PBOpenFileObject> copy;
    copy.reserve(array.size());
    for (const auto& object : array)
        copy.push_back(*object);
    return copy;
}

template <typename Array, typename Id>
void sortById(Array& array, Id id) {
    std::ranges::stable_sort(array, {}, [&](const auto& object) { return (*object).*id; });
}

} // namespace

std::int64_t PBOpenFileObject::sortCompare(const PBOpenFileObject& other, int /*context*/) const {
    return compared(fileId, other.fileId);
}

std::int64_t
PBOpenFolderObject::sortCompare(const PBOpenFolderObject& other, int /*context*/) const {
    return compared(folderId, other.folderId);
}

PBOpenFiles::PBOpenFiles(PBOpenFolderArray openFileArray)
    : _openFileArray(std::move(openFileArray)) {
    sortById(_openFileArray, &PBOpenFolderObject::folderId);
}

std::vector<PBOpenFiles::OpenFolder> PBOpenFiles::openFileArray() const {
    const std::lock_guard lock(_monitor);
    std::vector<OpenFolder> folders;
    for (const auto& folder : _openFileArray) {
        folders.push_back(
            {folder->folderPath, copyOf(folder->fileArray), copyOf(folder->focusOpenFileObj)});
    }
    return folders;
}

void PBOpenFiles::setOpenFileArray(PBOpenFolderArray openFileArray) {
    const std::lock_guard lock(_monitor);
    _openFileArray = std::move(openFileArray);
    sortById(_openFileArray, &PBOpenFolderObject::folderId);
    _openSubFolderArray.clear();
    _notOpenFileArray.clear();
}

PBOpenFiles::FolderMatch
PBOpenFiles::matchFolder(std::int64_t folderId, const QString& folderPath) {
    const std::lock_guard lock(_monitor);
    const auto asked = [](const PBOpenFolderObject& folder) {
        return FolderMatch{
            FolderMatch::Asked, copyOf(folder.fileArray), copyOf(folder.focusOpenFileObj)};
    };
    if (folderId > 0) {
        if (const auto* folder = openFolder(folderId)) return asked(*folder);
        if (find(_openSubFolderArray, folderId)) return {FolderMatch::BelowAsked, {}, {}};
        if (find(_notOpenFileArray, folderId)) return {};
    }
    // A copy, since a new id moves the entry.
    for (const auto& folder : PBOpenFolderArray(_openFileArray)) {
        const int place = PBUtilities::comparePath(folder->folderPath, folderPath);
        if (place == 0) {
            setFolderId(*folder, folderId);
            return asked(*folder);
        }
        if (place == 1 && folder->fileArray.empty()) {
            remember(_openSubFolderArray, folderId);
            return {FolderMatch::BelowAsked, {}, {}};
        }
    }
    remember(_notOpenFileArray, folderId);
    return {};
}

bool PBOpenFiles::matchFileInFolder(
    std::int64_t folderId, const QString& folderPath, std::int64_t fileId,
    const QString& fileName) {
    const std::lock_guard lock(_monitor);
    if (folderId > 0) {
        if (auto* folder = openFolder(folderId)) return matchFile(*folder, fileId, fileName);
        if (find(_openSubFolderArray, folderId)) return true;
        if (find(_notOpenFileArray, folderId)) return false;
    }
    for (const auto& folder : PBOpenFolderArray(_openFileArray)) {
        const int place = PBUtilities::comparePath(folder->folderPath, folderPath);
        if (place == 0) {
            setFolderId(*folder, folderId);
            return matchFile(*folder, fileId, fileName);
        }
        if (place == 1 && folder->fileArray.empty()) {
            remember(_openSubFolderArray, folderId);
            return true;
        }
    }
    remember(_notOpenFileArray, folderId);
    return false;
}

bool PBOpenFiles::matchFile(
    PBOpenFolderObject& folder, std::int64_t fileId, const QString& fileName) {
    if (folder.fileArray.empty()) return true;
    const PBOpenFileObject wanted{fileId, {}};
    if (fileId > 0) {
        if (sortIndexOfObject(folder.fileArray, wanted, 0, false) != NSNotFound) return true;
        if (sortIndexOfObject(folder.notFileArray, wanted, 0, false) != NSNotFound) return false;
    }
    const auto named = std::ranges::find_if(folder.fileArray, [&](const auto& file) {
        return file->fileId == 0 && file->fileName.compare(fileName, Qt::CaseInsensitive) == 0;
    });
    if (named != folder.fileArray.end()) {
        (*named)->fileId = fileId;
        sortById(folder.fileArray, &PBOpenFileObject::fileId);
        return true;
    }
    if (fileId > 0) {
        sortAddObject(
            folder.notFileArray, std::make_shared<PBOpenFileObject>(wanted), 0, false, false);
    }
    return false;
}

PBOpenFolderObject* PBOpenFiles::openFolder(std::int64_t folderId) const {
    return find(_openFileArray, folderId);
}

void PBOpenFiles::setFolderId(PBOpenFolderObject& folder, std::int64_t folderId) {
    if (folderId <= 0) return;
    folder.folderId = folderId;
    sortById(_openFileArray, &PBOpenFolderObject::folderId);
}

PBOpenFolderObject* PBOpenFiles::find(const PBOpenFolderArray& array, std::int64_t folderId) {
    PBOpenFolderObject wanted;
    wanted.folderId = folderId;
    const std::int64_t index = sortIndexOfObject(array, wanted, 0, false);
    return index == NSNotFound ? nullptr : array[static_cast<std::size_t>(index)].get();
}

void PBOpenFiles::remember(PBOpenFolderArray& array, std::int64_t folderId) {
    if (folderId <= 0) return;
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderId = folderId;
    sortAddObject(array, std::move(folder), 0, false, false);
}
