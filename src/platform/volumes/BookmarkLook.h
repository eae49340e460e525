#pragma once

#include "platform/volumes/Bookmark.h"
#include "platform/volumes/Volumes.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace platform {

/// Looks for one bookmarked folder at one place after the other, by the mounts of one moment, and
/// keeps whether all of them could be looked at. Any thread; waits for disks.
class BookmarkLook {
public:
    /// Both outlive this object.
    BookmarkLook(const Bookmark& bookmark, const Volumes& volumes);

    /// Whether the bookmarked folder is at the path. `atSamePath`: as for `isSameFolder`.
    [[nodiscard]] bool isThere(const QString& path, bool atSamePath);
    /// Some place could not be looked at: that nothing was found means nothing.
    [[nodiscard]] bool isInconclusive() const { return _isInconclusive; }

    /// The mounts of the bookmark's file system.
    [[nodiscard]] const std::vector<Mount>& mountsOfVolume();
    /// Where the bookmarked folder's path is now, over all of these.
    [[nodiscard]] QStringList placesOnVolume();
    [[nodiscard]] const MountTable& mountTable() const { return _table; }

    /// Mount points at which something may hang that has nothing to do with the folder.
    [[nodiscard]] QSet<QByteArray> avoidedFolders() const;
    [[nodiscard]] bool isAvoided(const QString& path) const;

private:
    [[nodiscard]] bool mayBeVolume(const Mount& mount) const;
    /// Where the bookmarked folder's file system begins, if that is the mount of it.
    [[nodiscard]] QString placeOfShare(const Mount& mount) const;

    const Bookmark& _bookmark;
    const Volumes& _volumes;
    const MountTable _table;
    std::optional<std::vector<Mount>> _mountsOfVolume; // asked for when somebody wants to know
    bool _isInconclusive = false;
};

} // namespace platform
