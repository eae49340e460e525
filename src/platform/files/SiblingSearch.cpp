#include "platform/files/SiblingSearch.h"

#include "platform/files/DirectoryHandle.h"
#include "platform/files/PathNames.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

bool hasInode(const QByteArray& path, std::uint64_t inode) {
    struct statx status {};
    const int flags = AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
    return ::statx(AT_FDCWD, path.constData(), flags, STATX_TYPE | STATX_INO, &status) == 0 &&
           S_ISDIR(status.stx_mode) && status.stx_ino == inode;
}

} // namespace

std::optional<QByteArray> SiblingSearch::run(const QByteArray& path) const {
    qsizetype end = path.size(); // of the folder whose siblings are tried
    while (end > 1) {
        const qsizetype separator = path.lastIndexOf('/', end - 1);
        if (separator < 0) break;
        const QByteArray parent = path.left(std::max<qsizetype>(separator, 1));
        const QByteArray rest = path.mid(end);
        const DirectoryHandle directory =
            avoided.contains(parent) ? DirectoryHandle() : openDirectory(parent);
        while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr) {
            if (isOver()) return std::nullopt;
            const QByteArrayView name(static_cast<const char*>(entry->d_name));
            if (name == "." || name == "..") continue;
            if (entry->d_type != DT_DIR && entry->d_type != DT_UNKNOWN) continue;
            const QByteArray sibling = pathInFolder(parent, name);
            if (avoided.contains(sibling)) continue;
            const QByteArray candidate = sibling + rest;
            if (hasInode(candidate, inode) && isWanted(candidate)) return candidate;
        }
        end = separator;
    }
    return std::nullopt;
}

} // namespace platform
