#include "platform/volumes/BookmarkResolver.h"

#include "platform/files/FolderSearch.h"
#include "platform/files/Presence.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cerrno>
#include <utility>

namespace platform {

namespace {

// How deep each kind of place is searched, in levels of folders. A rename stays in the parent, a
// move usually goes next to it or into one of its neighbours.
constexpr int parentDepth = 2;
constexpr int grandparentDepth = 2;
constexpr int otherRootDepth = 2;
constexpr int commonFolderDepth = 4;

/// One resolving: what was asked, and what was met on the way.
class Attempt {
public:
    Attempt(const Bookmark& bookmark, const Volumes& volumes)
        : _bookmark(bookmark), _volumes(volumes), _table(volumes.mountTable()) {}

    [[nodiscard]] bool isThere(const QString& path, bool atSamePath) {
        if (path.isEmpty()) return false;
        errno = 0;
        const auto found = Bookmark::bookmarkOfFolder(path, _volumes);
        if (!found) _isInconclusive = _isInconclusive || presenceAfter(errno) == Presence::Unknown;
        return found && _bookmark.isSameFolder(*found, atSamePath);
    }

    /// Where the bookmarked folder's path is now, over all mounts of its file system.
    [[nodiscard]] QStringList placesOnVolume() {
        QStringList places;
        for (const Mount& mount : _table.mounts()) {
            if (!mayBeVolume(mount)) continue;
            if (!_bookmark.fileSystem.agreesWith(_volumes.identity(mount, mount.mountPoint))) {
                continue;
            }
            _isVolumeThere = true;
            const QString place = pathBelowMount(mount, _bookmark.pathInFileSystem);
            if (!place.isEmpty()) places.append(place);
        }
        return places;
    }

    [[nodiscard]] bool isVolumeThere() const { return _isVolumeThere; }
    [[nodiscard]] bool isInconclusiveSoFar() const { return _isInconclusive; }

    /// Mount points at which something may hang that has nothing to do with the folder.
    [[nodiscard]] QSet<QByteArray> avoidedFolders() const {
        QSet<QByteArray> folders;
        for (const Mount& mount : _table.mounts()) {
            if (Volumes::mayHang(mount) && !mayBeVolume(mount)) {
                folders.insert(QFile::encodeName(mount.mountPoint));
            }
        }
        return folders;
    }

    [[nodiscard]] bool isAvoided(const QString& path) const {
        const Mount* mount = _table.mountOfPath(path);
        return mount && Volumes::mayHang(*mount) && !mayBeVolume(*mount);
    }

private:
    /// Without asking file systems that may hang, unless it is by its name the one that is sought.
    [[nodiscard]] bool mayBeVolume(const Mount& mount) const {
        return !Volumes::mayHang(mount) || mount.fileSystemType == "fuseblk" ||
               mount.source == _bookmark.fileSystem.source;
    }

    const Bookmark& _bookmark;
    const Volumes& _volumes;
    const MountTable _table;
    bool _isVolumeThere = false;
    bool _isInconclusive = false;
};

QString parentOf(const QString& path) {
    return path == QStringLiteral("/") ? QString() : QFileInfo(path).path();
}

std::vector<FolderSearch::Place> searchOrder(
    const Bookmark& bookmark, const SearchPlaces& places, const QStringList& placesOnVolume,
    const Attempt& attempt) {
    std::vector<FolderSearch::Place> order;
    const auto add = [&](const QString& folder, int depth) {
        if (folder.isEmpty() || attempt.isAvoided(folder)) return;
        order.push_back({QFile::encodeName(folder), depth});
    };
    QStringList former{places.lastSeenPath, bookmark.path};
    former += placesOnVolume;
    former.removeDuplicates();
    former.removeAll(QString());
    for (const QString& path : former)
        add(parentOf(path), 1);
    for (const QString& path : former)
        add(parentOf(path), parentDepth);
    for (const QString& path : former)
        add(parentOf(parentOf(path)), grandparentDepth);
    for (const QString& root : places.otherRoots) {
        add(parentOf(root), otherRootDepth);
        add(root, otherRootDepth);
    }
    for (const QString& folder : places.commonFolders)
        add(folder, commonFolderDepth);
    return order;
}

} // namespace

BookmarkResolver::BookmarkResolver(VolumeSources sources, Clock clock)
    : _volumes(std::move(sources)),
      _clock(clock ? std::move(clock) : Clock(&std::chrono::steady_clock::now)) {}

QStringList BookmarkResolver::commonFolders(const VolumeSources& sources) {
    QStringList folders{
        QStandardPaths::writableLocation(QStandardPaths::PicturesLocation), QDir::homePath()};
    folders += sources.mediaFolders;
    return folders;
}

Resolution BookmarkResolver::resolve(
    const Bookmark& bookmark, const SearchPlaces& places, std::chrono::milliseconds limit,
    const std::stop_token& stop) const {
    using Outcome = Resolution::Outcome;
    const auto end = _clock() + limit;
    const auto clock = [&] { return stop.stop_requested() ? end : _clock(); };
    Attempt attempt(bookmark, _volumes);
    if (attempt.isThere(bookmark.path, true)) return {Outcome::Found, bookmark.path};

    const QStringList onVolume = attempt.placesOnVolume();
    if (!attempt.isVolumeThere()) {
        return {attempt.isInconclusiveSoFar() ? Outcome::NoAnswer : Outcome::VolumeAbsent, {}};
    }
    for (const QString& path : onVolume) {
        if (attempt.isThere(path, true)) return {Outcome::Found, path};
    }
    const bool canSearch = bookmark.fileSystem.inodeStability() != InodeStability::None;
    if (canSearch) {
        if (attempt.isThere(places.lastSeenPath, false)) {
            return {Outcome::Found, places.lastSeenPath};
        }
        FolderSearch search(
            bookmark.folder.inode,
            [&](const QByteArray& path) { return attempt.isThere(QFile::decodeName(path), false); },
            clock, end);
        search.setAvoided(attempt.avoidedFolders());
        if (const auto found = search.run(searchOrder(bookmark, places, onVolume, attempt))) {
            return {Outcome::Found, QFile::decodeName(*found)};
        }
        if (search.isUnfinished()) return {Outcome::Unfinished, {}};
    }
    return {attempt.isInconclusiveSoFar() ? Outcome::NoAnswer : Outcome::Missing, {}};
}

} // namespace platform
