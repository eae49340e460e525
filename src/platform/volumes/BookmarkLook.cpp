#include "platform/volumes/BookmarkLook.h"

#include "platform/files/PathNames.h"
#include "platform/files/Presence.h"
#include "platform/volumes/DesktopShare.h"

#include <QFile>

#include <cerrno>

namespace platform {

BookmarkLook::BookmarkLook(const Bookmark& bookmark, const Volumes& volumes)
    : _bookmark(bookmark), _volumes(volumes), _table(volumes.mountTable()) {}

const std::vector<Mount>& BookmarkLook::mountsOfVolume() {
    if (_mountsOfVolume) return *_mountsOfVolume;
    std::vector<Mount>& found = _mountsOfVolume.emplace();
    for (const Mount& mount : _table.mounts()) {
        if (!mayBeVolume(mount)) continue;
        if (_bookmark.fileSystem.agreesWith(_volumes.identity(mount, placeOfShare(mount)))) {
            found.push_back(mount);
        }
    }
    return found;
}

bool BookmarkLook::isThere(const QString& path, bool atSamePath) {
    if (path.isEmpty()) return false;
    errno = 0;
    const auto found = Bookmark::bookmarkOfFolder(path, _volumes);
    if (!found) _isInconclusive = _isInconclusive || presenceAfter(errno) == Presence::Unknown;
    return found && _bookmark.isSameFolder(*found, atSamePath);
}

QStringList BookmarkLook::placesOnVolume() {
    QStringList places;
    for (const Mount& mount : mountsOfVolume()) {
        const QString place = pathBelowMount(mount, _bookmark.pathInFileSystem);
        if (!place.isEmpty()) places.append(place);
    }
    return places;
}

QSet<QByteArray> BookmarkLook::avoidedFolders() const {
    QSet<QByteArray> folders;
    for (const Mount& mount : _table.mounts()) {
        if (Volumes::mayHang(mount) && !mayBeVolume(mount)) {
            folders.insert(QFile::encodeName(mount.mountPoint));
        }
    }
    return folders;
}

bool BookmarkLook::isAvoided(const QString& path) const {
    const Mount* mount = _table.mountOfPath(path);
    return mount && Volumes::mayHang(*mount) && !mayBeVolume(*mount);
}

/// Without asking file systems that may hang, unless it is by its name the one that is sought.
bool BookmarkLook::mayBeVolume(const Mount& mount) const {
    return !Volumes::mayHang(mount) || mount.fileSystemType == "fuseblk" ||
           mount.source == _bookmark.fileSystem.source ||
           (isDesktopMount(mount.fileSystemType) &&
            mount.fileSystemType == _bookmark.fileSystem.type);
}

/// A server or device that the user is not connected with leaves behind the mount point of all of
/// them, which is another volume.
QString BookmarkLook::placeOfShare(const Mount& mount) const {
    if (!isDesktopMount(mount.fileSystemType)) return mount.mountPoint;
    const QByteArray share = desktopShare(mount.fileSystemType, _bookmark.pathInFileSystem);
    return share.isEmpty() ? mount.mountPoint
                           : pathInFolder(mount.mountPoint, QString::fromUtf8(share));
}

} // namespace platform
