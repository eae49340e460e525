#pragma once

#include <QByteArray>
#include <QSet>

#include <cstdint>
#include <functional>
#include <optional>

namespace platform {

/// Looks for a folder where its path would lead if one of the folders on it had another name: a
/// renamed folder takes all below it along. Needs one list for each folder above the path and one
/// look for each entry of these, hidden ones too, which a search by depth would not come to.
struct SiblingSearch {
    std::uint64_t inode = 0;
    /// Whether the folder at the path, which has this inode number, is the one.
    std::function<bool(const QByteArray& path)> isWanted;
    /// Folders that are not to be touched, such as mount points of servers.
    QSet<QByteArray> avoided;
    /// Asked between entries; true ends the search.
    std::function<bool()> isOver;

    /// Beginning with the folder itself and going up: at each level the siblings of the folder of
    /// that level, with the rest of the path appended.
    [[nodiscard]] std::optional<QByteArray> run(const QByteArray& path) const;
};

} // namespace platform
