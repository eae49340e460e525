#pragma once

#include "platform/files/FileSystemIdentity.h"
#include "platform/volumes/Volumes.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace platform {

/// What tells one folder of a file system from all others.
struct FolderMark {
    std::uint64_t inode = 0;
    /// Nanoseconds since 1970 of the creation; 0 where the file system doesn't keep it.
    std::int64_t creationTime = 0;
    /// The kernel's file handle, which carries a generation that inode numbers used again lack;
    /// empty where there is none.
    int handleType = 0;
    QByteArray handle;
};

/// A lasting reference to a folder: what is needed to find it again after a rename or a move on the
/// same file system, or after its volume was mounted elsewhere. A value; any thread.
struct Bookmark {
    QString path;             // where the folder was when the bookmark was made
    QString pathInFileSystem; // the same from the file system's own root
    FileSystemIdentity fileSystem;
    FolderMark folder;

    /// Of the folder now at the path; nothing if there is no folder. Waits for the disk.
    [[nodiscard]] static std::optional<Bookmark>
    bookmarkOfFolder(const QString& path, const Volumes& volumes);

    [[nodiscard]] QByteArray data() const;
    /// Nothing for bytes that `data` didn't write; junk is harmless.
    [[nodiscard]] static std::optional<Bookmark> fromData(const QByteArray& data);

    /// Whether `other`, just made of a folder at hand, is this very folder. `atSamePath` says that
    /// it lies where this one did, which decides where inode numbers tell nothing.
    [[nodiscard]] bool isSameFolder(const Bookmark& other, bool atSamePath) const;
};

/// The mark of the folder; nothing if there is none, with the reason in `errno`. Waits for the
/// disk.
[[nodiscard]] std::optional<FolderMark> markOfFolder(const QString& path);

} // namespace platform
