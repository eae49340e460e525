#pragma once

#include "platform/files/FolderWalk.h"
#include "platform/volumes/BookmarkResolver.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>
#include <vector>

namespace platform {

/// Looks for bookmarked folders in all folders of their file system, hidden ones and the trash too:
/// the only way to know that a folder is gone. Takes as long as the disk is large; any thread.
///
/// Looks through file systems of this machine only, and through those whose inode numbers tell
/// folders apart: for all others there is no answer.
class VolumeSearch {
public:
    /// Told at once, with the folder's place among those that were asked for.
    using Found = std::function<void(std::size_t index, const QString& path)>;

    VolumeSearch(const Volumes& volumes, FolderWalk::Pause pause, std::stop_token stop);

    /// The folders are of one file system. For each: `Found`; `Gone` where every folder was looked
    /// at twice (what moves from the unseen part to the seen one slips through once); or `NoAnswer`
    /// where something could not be looked at, the search was stopped, or the volume went.
    [[nodiscard]] std::vector<Resolution::Outcome>
    run(std::span<const Bookmark> wanted, const Found& found) const;

private:
    const Volumes& _volumes;
    const FolderWalk::Pause _pause;
    const std::stop_token _stop;
};

} // namespace platform
