#pragma once

#include "platform/files/FileSystem.h"

#include <QByteArray>

namespace fileactions {

/// Whether two paths are those of one entry of one folder, as where a link leads to the folder or
/// the disk takes no note of case. Two names of one file (hard links) in two folders are two
/// entries. Waits for disks; what can't be looked at is none. Any thread.
[[nodiscard]] bool
isSamePlace(platform::FileSystem& files, const QByteArray& path, const QByteArray& other);

/// Whether a symbolic link has the path, and the other path is that of its file or of a link on the
/// way there: in the place of that, it would lead to itself.
[[nodiscard]] bool
leadsOver(platform::FileSystem& files, const QByteArray& path, const QByteArray& other);

} // namespace fileactions
