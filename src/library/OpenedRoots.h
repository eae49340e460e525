#pragma once

#include "library/PBAliasManager.h"

class PBFolderItem;

/// Opened roots: folders of files that were opened from outside and lie in no other root. Such a
/// root is for this run only, and is its own folder without what is below: that is neither shown,
/// nor scanned, nor watched.
namespace OpenedRoots {

/// Bit of `PBAliasObject::state`.
inline constexpr std::uint64_t openedState = 2;

/// Any thread, as the next.
[[nodiscard]] inline bool isOpened(const PBAliasObject& root) {
    return (root.state() & openedState) != 0;
}
[[nodiscard]] PBAliasArray of(const PBAliasManager& manager);
/// The paths of those that are mounted.
[[nodiscard]] QStringList paths(const PBAliasManager& manager);
/// Whether the root with that path shows the folder: it is its own, or below it and neither hidden
/// nor a document.
[[nodiscard]] bool isShownIn(const QString& rootPath, const QString& folder);
/// Main thread.
[[nodiscard]] bool isOpened(const PBFolderItem& item);

/// The folder of a new root holds those of opened ones: they are folders of it like others, and
/// keep their rows. Answers whether there were such. Main thread.
bool takeInto(const PBAliasObject& root, PBAliasManager& manager);

} // namespace OpenedRoots
