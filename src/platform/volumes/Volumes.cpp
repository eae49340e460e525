#include "platform/volumes/Volumes.h"

#include "platform/volumes/DesktopShare.h"

#include "platform/files/PathNames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace platform {

namespace {

using namespace std::string_view_literals;

std::string_view view(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

template <std::size_t N>
bool contains(const std::array<std::string_view, N>& names, const QByteArray& name) {
    return std::ranges::find(names, view(name)) != names.end();
}

QByteArray firstLine(const QString& file) {
    QFile source(file);
    return source.open(QIODevice::ReadOnly) ? source.readLine(256).trimmed() : QByteArray();
}

/// User-space file systems of phones and cameras.
bool isPortableDevice(const QByteArray& type) {
    static constexpr std::array names{"fuse.jmtpfs"sv,   "fuse.simple-mtpfs"sv,  "fuse.mtpfs"sv,
                                      "fuse.go-mtpfs"sv, "fuse.aft-mtp-mount"sv, "fuse.gphotofs"sv,
                                      "fuse.ifuse"sv};
    return contains(names, type);
}

bool isBelow(const QString& path, const QString& folder) {
    return path.startsWith(pathInFolder(folder, {}));
}

/// From Linux 6.9 on the kernel answers the UUID of a mounted file system to everybody. The numbers
/// are those of its interface, which older headers don't have.
QByteArray kernelUuid(const QByteArray& path) {
    struct Answer {
        std::uint8_t length;
        std::uint8_t uuid[16];
    };
    constexpr unsigned long getFileSystemUuid = _IOR(0x15, 0, Answer);
    const int folder = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    if (folder < 0) return {};
    Answer answer{};
    const bool answered = ::ioctl(folder, getFileSystemUuid, &answer) == 0;
    ::close(folder);
    if (!answered) return {};
    const auto length = std::min<qsizetype>(answer.length, 16);
    const QByteArray uuid(reinterpret_cast<const char*>(answer.uuid), length);
    return uuid.count('\0') == uuid.size() ? QByteArray() : uuid.toHex();
}

} // namespace

bool isNetworkFileSystem(const QByteArray& type, const QByteArray& source) {
    static constexpr std::array names{
        "nfs"sv,    "nfs4"sv,   "cifs"sv,  "smb3"sv,     "smbfs"sv,    "ncpfs"sv,
        "afs"sv,    "coda"sv,   "ceph"sv,  "lustre"sv,   "orangefs"sv, "glusterfs"sv,
        "beegfs"sv, "gpfs"sv,   "9p"sv,    "virtiofs"sv, "vboxsf"sv,   "prl_fs"sv,
        "davfs"sv,  "autofs"sv, "ocfs2"sv, "gfs2"sv};
    static constexpr std::array userSpace{
        "fuse.sshfs"sv,
        "fuse.davfs"sv,
        "fuse.davfs2"sv,
        "fuse.rclone"sv,
        "fuse.s3fs"sv,
        "fuse.curlftpfs"sv,
        "fuse.smbnetfs"sv,
        "fuse.glusterfs"sv,
        "fuse.ceph"sv,
        "fuse.ceph-fuse"sv,
        "fuse.gvfsd-fuse"sv,
        "fuse.kio-fuse"sv,
        "fuse.vmhgfs-fuse"sv,
        "fuse.juicefs"sv,
        "fuse.gcsfuse"sv,
        "fuse.onedriver"sv,
        "fuse.google-drive-ocamlfuse"sv,
        "fuse.seaweedfs"sv,
        "fuse.mfs"sv,
        "fuse.beegfs"sv};
    if (contains(names, type) || contains(userSpace, type)) return true;
    if (!type.startsWith("fuse")) return false;
    // A server's address, as in "https://host/", "//host/share" or "host:/folder".
    return source.contains("://") || source.startsWith("//") ||
           (!source.startsWith('/') && source.contains(":/"));
}

Volumes::Volumes(VolumeSources sources) : _sources(std::move(sources)) {}

MountTable Volumes::mountTable() const {
    return MountTable::load(_sources.mountInfo);
}

bool Volumes::mayHang(const Mount& mount) {
    return mount.fileSystemType.startsWith("fuse") ||
           isNetworkFileSystem(mount.fileSystemType, mount.source);
}

VolumeProperties Volumes::properties(const Mount& mount, const MountTable& table) const {
    VolumeProperties properties;
    if (isPortableDevice(mount.fileSystemType)) {
        properties.isEjectable = properties.isRemovable = true;
        properties.isInternal = false;
        return properties;
    }
    if (isNetworkFileSystem(mount.fileSystemType, mount.source)) {
        properties.isLocal = properties.isInternal = false;
        return properties;
    }
    // What the system runs from is at home here, however the disk is plugged in.
    const Mount* system = table.mountOfPath(QStringLiteral("/"));
    if (system && system->major == mount.major && system->minor == mount.minor) return properties;
    properties.isEjectable = mount.fileSystemType == "iso9660" || mount.fileSystemType == "udf" ||
                             std::ranges::any_of(_sources.mediaFolders, [&](const QString& folder) {
                                 return isBelow(mount.mountPoint, folder);
                             });
    if (const QString device = deviceFolder(mount); !device.isEmpty()) {
        readDevice(device, 0, properties);
    }
    return properties;
}

/// The device's folder in sysfs; empty for a file system without a device.
QString Volumes::deviceFolder(const Mount& mount) const {
    const QString byNumber =
        QStringLiteral("%1/dev/block/%2:%3").arg(_sources.sysfs).arg(mount.major).arg(mount.minor);
    QString folder = mount.major != 0 ? QFileInfo(byNumber).canonicalFilePath() : QString();
    // Some file systems show a number of their own, but name the device as their source.
    if (folder.isEmpty() && mount.source.startsWith("/dev/")) {
        const QString device = QFileInfo(QFile::decodeName(mount.source)).canonicalFilePath();
        const QString name =
            QFileInfo(device.isEmpty() ? QFile::decodeName(mount.source) : device).fileName();
        folder =
            QFileInfo(_sources.sysfs + QStringLiteral("/class/block/") + name).canonicalFilePath();
    }
    return folder;
}

void Volumes::readDevice(const QString& folder, int depth, VolumeProperties& properties) const {
    constexpr int deepestStack = 8; // devices made of devices
    QString disk = folder;
    if (QFileInfo::exists(disk + QStringLiteral("/partition"))) disk = QFileInfo(disk).path();

    const QString slaves = disk + QStringLiteral("/slaves");
    const QStringList below = QDir(slaves).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    if (!below.isEmpty() && depth < deepestStack) {
        for (const QString& slave : below) {
            readDevice(
                QFileInfo(pathInFolder(slaves, slave)).canonicalFilePath(), depth + 1, properties);
        }
        return;
    }

    if (firstLine(disk + QStringLiteral("/removable")) == "1") properties.isRemovable = true;
    if (QFileInfo(disk).fileName().startsWith(QStringLiteral("sr"))) properties.isEjectable = true;
    const QString top = QFileInfo(_sources.sysfs).canonicalFilePath();
    for (QString parent = disk; parent.size() > top.size(); parent = QFileInfo(parent).path()) {
        const QString name = QFileInfo(parent).fileName();
        const bool isNumbered = name.size() > 3 && name[3].isDigit();
        if (name.startsWith(QStringLiteral("usb")) && isNumbered) properties.isInternal = false;
        // FireWire units; a memory card, but not the same chip soldered to the board.
        if (name.startsWith(QStringLiteral("fw")) && name.mid(2, 1).toInt() > 0) {
            properties.isInternal = false;
        }
        if (name.startsWith(QStringLiteral("mmc_host")) &&
            firstLine(disk + QStringLiteral("/device/type")) != "MMC") {
            properties.isRemovable = true;
        }
        if (parent != disk && firstLine(parent + QStringLiteral("/removable")) == "removable") {
            properties.isRemovable = true;
        }
    }
    if (properties.isRemovable) properties.isInternal = false;
}

const Mount* Volumes::mountHolding(const QString& path, const MountTable& table) const {
    struct statx status {};
    const QByteArray bytes = QFile::encodeName(path);
    if (::statx(AT_FDCWD, bytes.constData(), 0, STATX_MNT_ID, &status) != 0) return nullptr;
    if ((status.stx_mask & STATX_MNT_ID) != 0) {
        if (const Mount* mount = table.mountWithId(status.stx_mnt_id)) return mount;
    }
    return table.mountOfPath(QFileInfo(path).canonicalFilePath());
}

VolumeProperties Volumes::propertiesOfPath(const QString& path) const {
    const MountTable table = mountTable();
    const Mount* mount = mountHolding(path, table);
    if (!mount) return {};
    VolumeProperties found = properties(*mount, table);
    if (isDesktopMount(mount->fileSystemType)) {
        const QString device =
            QFileInfo(path).canonicalFilePath().mid(mount->mountPoint.size() + 1);
        for (const auto* scheme : {u"mtp:", u"gphoto2:", u"afc:", u"mtp/", u"camera/"}) {
            if (!device.startsWith(scheme)) continue;
            found = {
                .isLocal = true, .isEjectable = true, .isRemovable = true, .isInternal = false};
        }
    }
    return found;
}

FileSystemIdentity Volumes::identity(const Mount& mount, const QString& path) const {
    FileSystemIdentity identity;
    identity.type = mount.fileSystemType;
    identity.source = mount.source;
    if (isDesktopMount(mount.fileSystemType)) {
        const QByteArray share = desktopShare(
            mount.fileSystemType, pathInFileSystem(mount, QFileInfo(path).canonicalFilePath()));
        if (!share.isEmpty()) identity.source = share;
    }
    if (mayHang(mount) && mount.fileSystemType != "fuseblk") return identity;
    identity.uuid = uuidOfDevice(mount);
    const QByteArray bytes = QFile::encodeName(path);
    if (identity.uuid.isEmpty()) identity.uuid = kernelUuid(bytes);
    struct statfs status {};
    if (hasLastingFsid(mount.fileSystemType) && ::statfs(bytes.constData(), &status) == 0) {
        static_assert(sizeof status.f_fsid == sizeof identity.fsid);
        std::memcpy(&identity.fsid, &status.f_fsid, sizeof identity.fsid);
    }
    return identity;
}

QByteArray Volumes::uuidOfDevice(const Mount& mount) const {
    const QString device = deviceFolder(mount);
    if (device.isEmpty()) return {};
    const QByteArray number = firstLine(device + QStringLiteral("/dev"));
    QFile record(_sources.udevData + QStringLiteral("/b") + QString::fromLatin1(number));
    if (record.open(QIODevice::ReadOnly)) {
        constexpr QByteArrayView key = "E:ID_FS_UUID=";
        for (const QByteArray& line : record.readAll().split('\n')) {
            if (line.startsWith(key)) return normalizedUuid(line.mid(key.size()));
        }
    }
    const QString name = QFileInfo(device).fileName();
    const QFileInfoList links =
        QDir(_sources.disksByUuid).entryInfoList(QDir::System | QDir::Files);
    for (const QFileInfo& link : links) {
        if (QFileInfo(link.symLinkTarget()).fileName() == name) {
            return normalizedUuid(link.fileName().toLatin1());
        }
    }
    return {};
}

} // namespace platform
