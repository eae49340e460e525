#pragma once

#include "platform/files/FileSystemIdentity.h"
#include "platform/volumes/MountTable.h"

#include <QString>
#include <QStringList>

namespace platform {

/// What kind of disk a file system lies on.
struct VolumeProperties {
    bool isLocal = true;      // not reached over a network or from another machine
    bool isEjectable = false; // its medium, or what the desktop mounts and unmounts for the user
    bool isRemovable = false; // the drive takes media, or can be unplugged
    bool isInternal = true;   // built in

    bool operator==(const VolumeProperties&) const = default;
};

/// Where the knowledge of volumes comes from.
struct VolumeSources {
    QString mountInfo = QStringLiteral("/proc/self/mountinfo");
    QString sysfs = QStringLiteral("/sys");
    QString udevData = QStringLiteral("/run/udev/data");
    QString disksByUuid = QStringLiteral("/dev/disk/by-uuid");
    /// Below these the desktop mounts disks for the user.
    QStringList mediaFolders = {QStringLiteral("/media"), QStringLiteral("/run/media")};
};

/// Mounted volumes. Any thread.
class Volumes {
public:
    explicit Volumes(VolumeSources sources = {});

    [[nodiscard]] const VolumeSources& sources() const { return _sources; }
    [[nodiscard]] MountTable mountTable() const;

    /// From the mount table and sysfs alone: never waits for the volume itself.
    [[nodiscard]] VolumeProperties properties(const Mount& mount, const MountTable& table) const;

    /// The volume that the path lies on, links followed: waits for the disk. A path that isn't
    /// there counts as local and internal.
    [[nodiscard]] VolumeProperties propertiesOfPath(const QString& path) const;

    /// The mount that holds the path, links followed: waits for the disk.
    [[nodiscard]] const Mount* mountHolding(const QString& path, const MountTable& table) const;

    /// From the mount table, udev and, for file systems of this machine only, the file system
    /// itself, which is asked at `path`: any path on it, such as the mount point. What a desktop
    /// mounts is told apart by the server or device that the path belongs to.
    [[nodiscard]] FileSystemIdentity identity(const Mount& mount, const QString& path) const;

    /// Whether asking this file system for anything may take long: a network, a user-space file
    /// system.
    [[nodiscard]] static bool mayHang(const Mount& mount);

private:
    [[nodiscard]] QString deviceFolder(const Mount& mount) const;
    void readDevice(const QString& folder, int depth, VolumeProperties& properties) const;
    [[nodiscard]] QByteArray uuidOfDevice(const Mount& mount) const;

    const VolumeSources _sources;
};

/// Whether a file system of this type and source is one of another machine.
[[nodiscard]] bool isNetworkFileSystem(const QByteArray& type, const QByteArray& source);

} // namespace platform
