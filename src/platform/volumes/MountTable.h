#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

namespace platform {

/// One line of the kernel's mount table.
struct Mount {
    std::uint64_t id = 0;
    std::uint32_t major = 0; // device numbers; 0 and a counter for file systems without a device
    std::uint32_t minor = 0;
    QString root;       // the folder of the file system that is shown here, usually "/"
    QString mountPoint; // where it is shown
    QByteArray fileSystemType;
    QByteArray source; // device, server and folder, or a mere name

    bool operator==(const Mount&) const = default;
};

/// The mounts of this process at one moment. A value; any thread.
class MountTable {
public:
    /// Reads the form of `/proc/self/mountinfo`; lines that don't have it are left out.
    [[nodiscard]] static MountTable parse(const QByteArray& mountInfo);
    /// Empty if the file can't be read. Never waits for any of the mounted file systems.
    [[nodiscard]] static MountTable load(const QString& file);

    [[nodiscard]] const std::vector<Mount>& mounts() const { return _mounts; }

    /// The mount that shows the path: the deepest mount point at or above it, and of several at one
    /// place the one mounted last. Links are not followed. nullptr for a path that is not absolute.
    [[nodiscard]] const Mount* mountOfPath(const QString& path) const;
    [[nodiscard]] const Mount* mountWithId(std::uint64_t id) const;

private:
    std::vector<Mount> _mounts; // in the kernel's order
};

/// The path below the mount that shows the folder `pathInFileSystem` (counted from the file
/// system's own root); empty if the mount doesn't show it.
[[nodiscard]] QString pathBelowMount(const Mount& mount, const QString& pathInFileSystem);
/// The reverse: the folder of the file system that `path`, at or below the mount point, shows.
[[nodiscard]] QString pathInFileSystem(const Mount& mount, const QString& path);

} // namespace platform
