#pragma once

#include <QByteArray>

#include <cstdint>

namespace platform {

/// How far the inode number of a folder tells which folder it is.
enum class InodeStability {
    Stable,      // for the folder's whole life
    UntilCopied, // until the folder is first changed (overlays); the path decides first
    None         // numbers are made up at each mount: only the path and the volume decide
};

/// What tells a file system from all others, over unmounts and restarts.
struct FileSystemIdentity {
    QByteArray type;        // the kernel's name of the kind, such as "ext4"
    QByteArray uuid;        // hexadecimal digits in lower case without separators; empty if unknown
    QByteArray source;      // what was mounted: a device, or server and folder
    std::uint64_t fsid = 0; // of statfs, where the kind of file system makes it from what it keeps

    /// By the best mark that both know: UUID, then fsid, then kind and source.
    [[nodiscard]] bool agreesWith(const FileSystemIdentity& other) const;
    [[nodiscard]] InodeStability inodeStability() const;

    bool operator==(const FileSystemIdentity&) const = default;
};

/// Hexadecimal digits in lower case, all else left out.
[[nodiscard]] QByteArray normalizedUuid(const QByteArray& text);

/// Whether the fsid of this kind of file system stays the same over unmounts (or, for those in
/// memory, is new for each mount), rather than being made from a device number.
[[nodiscard]] bool hasLastingFsid(const QByteArray& type);

} // namespace platform
