#pragma once

#include <QString>

#include <cstdint>

/// Which icon stands for a folder. Names are those of the freedesktop icon naming; whoever draws
/// them has a drawing of its own for each. Never touches the disk. Any
/// thread.
namespace FolderIcons {

/// By what the folder is to the user: home, pictures, desktop and so on; else a plain folder.
[[nodiscard]] QString nameForPath(const QString& path);
/// Of a folder root that can't be reached: server, removable disk or folder.
[[nodiscard]] QString nameForType(std::uint64_t aliasType);
/// Drawn over the icon of a folder root that can't be reached.
[[nodiscard]] QString aliasBadge();

} // namespace FolderIcons
