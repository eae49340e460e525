#include "platform/volumes/VolumeSearch.h"

#include "platform/volumes/BookmarkLook.h"

#include <QFile>

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

#include <sys/stat.h>

namespace platform {

namespace {

using Outcome = Resolution::Outcome;

/// All of the file system, and not merely some folder of it, is shown at the mount.
bool showsAll(const Mount& mount) {
    if (mount.root == QStringLiteral("/")) return true;
    // A subvolume is a file system of its own here; this is the number of its uppermost folder.
    constexpr ino_t subvolume = 256;
    struct stat status {};
    return mount.fileSystemType == "btrfs" &&
           ::stat(QFile::encodeName(mount.mountPoint).constData(), &status) == 0 &&
           status.st_ino == subvolume;
}

/// Nothing else lies over the path.
bool isShownAt(const Mount& mount, const QString& path, const MountTable& table) {
    const Mount* shown = table.mountOfPath(path);
    return shown && shown->id == mount.id;
}

/// The mount to look through: one that shows all, and among these the one that the path lies on.
std::optional<Mount> mountToSearch(const Bookmark& bookmark, BookmarkLook& look) {
    std::optional<Mount> best;
    int bestRank = -1;
    for (const Mount& mount : look.mountsOfVolume()) {
        const MountTable& table = look.mountTable();
        if (Volumes::mayHang(mount) || !isShownAt(mount, mount.mountPoint, table)) continue;
        const int rank =
            (showsAll(mount) ? 2 : 0) + (isShownAt(mount, bookmark.path, table) ? 1 : 0);
        if (rank <= bestRank) continue;
        best = mount;
        bestRank = rank;
    }
    return best;
}

/// One folder that is sought, on the mount that is looked through.
struct Sought {
    std::size_t index;
    const Bookmark& bookmark;
    BookmarkLook look;
    bool isFound = false;

    /// Whether it would have been met, were it there: its former place is not hidden by another
    /// mount, and each candidate could be looked at.
    [[nodiscard]] bool wouldBeMet(const Mount& mount) const {
        const QString place = pathBelowMount(mount, bookmark.pathInFileSystem);
        return !look.isInconclusive() && !place.isEmpty() &&
               isShownAt(mount, place, look.mountTable());
    }
};

} // namespace

VolumeSearch::VolumeSearch(const Volumes& volumes, FolderWalk::Pause pause, std::stop_token stop)
    : _volumes(volumes), _pause(std::move(pause)), _stop(std::move(stop)) {}

std::vector<Outcome> VolumeSearch::run(std::span<const Bookmark> wanted, const Found& found) const {
    std::vector<Outcome> outcomes(wanted.size(), Outcome::NoAnswer);
    const bool canSearch =
        !wanted.empty() && wanted.front().fileSystem.inodeStability() != InodeStability::None;
    if (!canSearch) return outcomes;
    std::deque<Sought> all; // stays in place
    for (std::size_t i = 0; i < wanted.size(); ++i)
        all.push_back({i, wanted[i], BookmarkLook(wanted[i], _volumes)});
    const auto mount = mountToSearch(wanted.front(), all.front().look);
    if (!mount) return outcomes;

    const auto isStillMounted = [&] {
        const MountTable table = _volumes.mountTable();
        const Mount* now = table.mountWithId(mount->id);
        return now && *now == *mount;
    };
    int untilLook = 0;
    const auto goesOn = [&] {
        constexpr int foldersBetweenLooks = 256;
        if (--untilLook < 0) {
            untilLook = foldersBetweenLooks;
            if (!isStillMounted()) return false;
        }
        const bool allFound = std::ranges::all_of(all, &Sought::isFound);
        return !allFound && _pause();
    };
    FolderWalk walk(
        [&](std::uint64_t inode, const QByteArray& path) {
            for (Sought& one : all) {
                if (one.isFound || one.bookmark.folder.inode != inode) continue;
                const QString place = QFile::decodeName(path);
                one.isFound = one.look.isThere(place, false);
                if (!one.isFound) continue;
                outcomes[one.index] = Outcome::Found;
                found(one.index, place);
            }
        },
        goesOn, _stop);
    constexpr int times = 2;
    for (int time = 0; time < times; ++time) {
        const auto end = walk.run(
            QFile::encodeName(mount->mountPoint),
            QFile::encodeName(pathBelowMount(*mount, wanted.front().pathInFileSystem)));
        if (end != FolderWalk::End::Complete || !isStillMounted()) return outcomes;
    }
    const bool sawAll =
        showsAll(*mount) && wanted.front().fileSystem.inodeStability() == InodeStability::Stable;
    for (const Sought& one : all) {
        if (!one.isFound && sawAll && one.wouldBeMet(*mount)) outcomes[one.index] = Outcome::Gone;
    }
    return outcomes;
}

} // namespace platform
