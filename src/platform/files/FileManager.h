#pragma once

#include "platform/files/FileIdentity.h"
#include "platform/files/Presence.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <system_error>

namespace platform {

/// What the file system says of one entry, links followed.
struct ResourceValues {
    bool isDirectory = false;
    bool isRegularFile = false;
    qint64 fileSize = 0; // bytes
    /// Seconds since 1970, made from the kernel's seconds and nanoseconds in one fixed way, so that
    /// an unchanged file always gives the same bits.
    double modificationDate = 0;
    /// The birth time where the file system keeps one, else the modification date.
    double creationDate = 0;
    FileIdentity identity;
};

/// A look at one entry.
struct EntryLook {
    Presence presence = Presence::Unknown;
    ResourceValues values; ///< of what is there
};

/// One entry of a folder.
struct DirectoryEntry {
    QString name;
    bool isDirectory = false; // a link to a folder counts as a folder
    bool isPackage = false;   // a folder that is shown as a file
    bool isLink = false;
    /// The number of the entry itself, for a link that of the link; it tells entries of one folder
    /// apart, also over renames. On some disks it is made up at each look.
    std::uint64_t inode = 0;
};

/// The file system. Paths are absolute; every operation blocks as long as the disk does. Any
/// thread.
namespace FileManager {

[[nodiscard]] EntryLook look(const QString& path);
/// Nothing for what is not there, or can't be looked at.
[[nodiscard]] std::optional<ResourceValues> resourceValues(const QString& path);
/// Whether this process may read the file.
[[nodiscard]] bool isReadable(const QString& path);

/// A folder kept open, for asking about many of its entries without walking its path each time. It
/// stays the same folder when it is renamed meanwhile.
class OpenFolder {
public:
    explicit OpenFolder(const QString& path);
    ~OpenFolder();
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;

    /// As of the path of folder and name. What lies in a folder that could not be opened is as
    /// unknown as the folder.
    [[nodiscard]] EntryLook look(const QString& name) const;

private:
    const int _descriptor;
    const Presence _presence; ///< of the folder
};

/// Calls the visitor with each entry of the folder itself (not of those below), in the order in
/// which the disk gives them, without hidden entries and without names that are not valid in the
/// file system's encoding (no other part of the program could open them): those are told to
/// `undecodable`, as far as they can be shown. The visitor answers false to stop. The error is that
/// of opening or reading the folder; no error is the zero code.
[[nodiscard]] std::error_code enumerate(
    const QString& folder, const std::function<bool(const DirectoryEntry&)>& visitor,
    const std::function<void(const DirectoryEntry&)>& undecodable = {});

/// Gives a file or folder another path on the same file system. What has that path already is left
/// as it is, with the error `file_exists`, unless it is the very same file (a name that differs in
/// case only, where the file system takes no note of case). No error is the zero code.
[[nodiscard]] std::error_code moveItem(const QString& path, const QString& toPath);

/// Whether a folder of this name or path is one document of another program's, such as a photo
/// library or an application bundle on a drive that another system shares: its content is that
/// program's own.
[[nodiscard]] bool isPackageName(QStringView name);

} // namespace FileManager
} // namespace platform
