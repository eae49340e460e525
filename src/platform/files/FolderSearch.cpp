#include "platform/files/FolderSearch.h"

#include "platform/files/DirectoryHandle.h"
#include "platform/files/PathNames.h"

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace platform {

FolderSearch::FolderSearch(
    std::uint64_t inode, std::function<bool(const QByteArray&)> isWanted, Clock clock,
    std::chrono::steady_clock::time_point end)
    : _inode(inode), _isWanted(std::move(isWanted)), _clock(std::move(clock)), _end(end) {}

std::optional<QByteArray> FolderSearch::run(const std::vector<Place>& places) {
    for (const Place& place : places) {
        std::vector<Folder> level;
        std::int64_t changed = 0;
        if (isFirstVisit(place.folder, place.depth, changed)) {
            level.push_back({place.folder, place.depth, changed});
        }
        while (!level.empty()) {
            std::vector<Folder> next;
            for (const Folder& folder : level) {
                if (isOver()) return std::nullopt;
                if (auto found = list(folder, next)) return found;
            }
            std::ranges::stable_sort(next, std::ranges::greater{}, &Folder::changed);
            level = std::move(next);
        }
    }
    return std::nullopt;
}

std::optional<QByteArray>
FolderSearch::list(const Folder& folder, std::vector<Folder>& subfolders) {
    constexpr int entriesBetweenLooks = 128;
    const DirectoryHandle directory = openDirectory(folder.path);
    if (!directory) return std::nullopt;
    std::vector<QByteArray> below;
    int untilLook = entriesBetweenLooks;
    while (const dirent* entry = ::readdir(directory.get())) {
        if (--untilLook == 0) {
            if (isOver()) return std::nullopt;
            untilLook = entriesBetweenLooks;
        }
        if (entry->d_name[0] == '.') continue;
        if (entry->d_type != DT_DIR && entry->d_type != DT_UNKNOWN) continue;
        const QByteArray path = pathInFolder(folder.path, entry->d_name);
        if (_avoided.contains(path)) continue;
        if (entry->d_ino == _inode && _isWanted(path)) return path;
        if (folder.depth > 1) below.push_back(path);
    }
    for (const QByteArray& path : below) {
        if (--untilLook == 0) {
            if (isOver()) return std::nullopt;
            untilLook = entriesBetweenLooks;
        }
        std::int64_t changed = 0;
        if (isFirstVisit(path, folder.depth - 1, changed)) {
            subfolders.push_back({path, folder.depth - 1, changed});
        }
    }
    return std::nullopt;
}

/// False for what is no folder, and for one that was already searched at least as deep.
bool FolderSearch::isFirstVisit(const QByteArray& path, int depth, std::int64_t& changed) {
    if (_avoided.contains(path)) return false;
    struct statx status {};
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
    if (::statx(AT_FDCWD, path.constData(), flags, STATX_TYPE | STATX_INO | STATX_MTIME, &status) !=
            0 ||
        !S_ISDIR(status.stx_mode)) {
        return false;
    }
    changed = status.stx_mtime.tv_sec * 1'000'000'000 + status.stx_mtime.tv_nsec;
    const std::uint64_t device = makedev(status.stx_dev_major, status.stx_dev_minor);
    const auto deeper = _visited.lower_bound({device, {status.stx_ino, depth}});
    if (deeper != _visited.end() && deeper->first == device &&
        deeper->second.first == status.stx_ino) {
        return false;
    }
    _visited.insert({device, {status.stx_ino, depth}});
    return true;
}

} // namespace platform
