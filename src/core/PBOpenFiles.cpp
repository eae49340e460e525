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
    const platform::Lock lock(_monitor);
    std::vector<OpenFolder> folders;
    for (const auto& folder : _openFileArray) {
        folders.push_back(
            {folder->folderPath, copyOf(folder->fileArray), copyOf(folder->focusOpenFileObj)});
    }
    return folders;
}

PBOpenFiles::FolderMatch PBOpenFiles::matchFolder(qint64 folderId, const QString& folderPath) {
    const platform::Lock lock(_monitor);
    const auto [kind, folder] = findFolder(folderId, folderPath);
    if (!folder) return {kind, {}, {}};
    return {kind, copyOf(folder->fileArray), copyOf(folder->focusOpenFileObj)};
}

PBOpenFiles::Found PBOpenFiles::findFolder(qint64 folderId, const QString& folderPath) {
    if (folderId > 0) {
        if (auto* folder = find(_openFileArray, folderId)) return {FolderMatch::Asked, folder};
        if (find(_openSubFolderArray, folderId)) return {FolderMatch::BelowAsked, nullptr};
        if (find(_notOpenFileArray, folderId)) return {};
    }
    // A copy, since a new id moves the entry.
    for (const auto& folder : PBOpenFolderArray(_openFileArray)) {
        const int place = PBUtilities::comparePath(folder->folderPath, folderPath);
        if (place == 0) {
            setFolderId(*folder, folderId);
            return {FolderMatch::Asked, folder.get()};
        }
        if (place == 1 && folder->fileArray.empty()) {
            remember(_openSubFolderArray, folderId);
            return {FolderMatch::BelowAsked, nullptr};
        }
    }
    remember(_notOpenFileArray, folderId);
    return {};
}

bool PBOpenFiles::matchFileInFolder(
    qint64 folderId, const QString& folderPath, qint64 fileId, const QString& fileName) {
    const platform::Lock lock(_monitor);
    const auto [kind, folder] = findFolder(folderId, folderPath);
    return folder ? matchFile(*folder, fileId, fileName) : kind == FolderMatch::BelowAsked;
}

bool PBOpenFiles::matchFile(PBOpenFolderObject& folder, qint64 fileId, const QString& fileName) {
    if (folder.fileArray.empty()) return true;
    const PBOpenFileObject wanted{fileId, {}};
    if (fileId > 0) {
        if (sortIndexOfObject(folder.fileArray, wanted, 0, false) != NSNotFound) return true;
        if (sortIndexOfObject(folder.notFileArray, wanted, 0, false) != NSNotFound) return false;
    }
    const auto named = std::ranges::find_if(folder.fileArray, [&](const auto& file) {
        return file->fileId == 0 && file->fileName == fileName;
    });
    if (named != folder.fileArray.end()) {
        (*named)->fileId = fileId;
        sortById(folder.fileArray, &PBOpenFileObject::fileId);
        return true;
    }
    if (fileId > 0) {
        sortAddObject(
            folder.notFileArray, std::make_shared<PBOpenFileObject>(wanted), 0, false,
            EqualElements::Refused);
    }
    return false;
}

void PBOpenFiles::setFolderId(PBOpenFolderObject& folder, qint64 folderId) {
    if (folderId <= 0) return;
    folder.folderId = folderId;
    sortById(_openFileArray, &PBOpenFolderObject::folderId);
}

PBOpenFolderObject* PBOpenFiles::find(const PBOpenFolderArray& array, qint64 folderId) {
    PBOpenFolderObject wanted;
    wanted.folderId = folderId;
    const std::int64_t index = sortIndexOfObject(array, wanted, 0, false);
    return index == NSNotFound ? nullptr : array[static_cast<std::size_t>(index)].get();
}

void PBOpenFiles::remember(PBOpenFolderArray& array, qint64 folderId) {
    if (folderId <= 0) return;
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderId = folderId;
    sortAddObject(array, std::move(folder), 0, false, EqualElements::Refused);
}
