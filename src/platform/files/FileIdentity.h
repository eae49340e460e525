#pragma once

#include <QtGlobal>

namespace platform {

/// What the file system calls one file, on whatever device: it stays through renames and moves.
struct FileIdentity {
    quint64 inode = 0;
    qint64 creationTime = 0; ///< nanoseconds since 1970; 0 where the file system doesn't keep it

    /// Without a creation time a number tells nothing: it is used again after a file was removed.
    [[nodiscard]] bool isKnown() const { return inode != 0 && creationTime != 0; }
    bool operator==(const FileIdentity&) const = default;
};

} // namespace platform
