#include "platform/volumes/Bookmark.h"

#include "platform/volumes/DesktopShare.h"

#include <QCborMap>
#include <QCborValue>
#include <QFile>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

// The keys of the byte form, which is a CBOR map behind four letters.
constexpr QByteArrayView magic = "PBbm";
constexpr qint64 version = 1;
constexpr qsizetype greatestSize = 64 * 1024;
enum Key : int {
    Version,
    Path,
    PathInFileSystem,
    Type,
    Uuid,
    Source,
    Fsid,
    Inode,
    CreationTime,
    HandleType,
    Handle
};

void readHandle(const QByteArray& path, FolderMark& mark) {
    struct alignas(file_handle) Room {
        std::array<std::byte, sizeof(file_handle) + MAX_HANDLE_SZ> bytes;
    } room{};
    auto* handle = reinterpret_cast<file_handle*>(room.bytes.data());
    handle->handle_bytes = MAX_HANDLE_SZ;
    int mountId = 0;
    if (::name_to_handle_at(AT_FDCWD, path.constData(), handle, &mountId, AT_SYMLINK_FOLLOW) != 0) {
        return;
    }
    mark.handleType = handle->handle_type;
    mark.handle = QByteArray(
        reinterpret_cast<const char*>(handle->f_handle),
        static_cast<qsizetype>(handle->handle_bytes));
}

bool isSameMark(const FolderMark& mark, const FolderMark& other, bool isNetwork) {
    if (mark.inode != other.inode) return false;
    if (mark.creationTime != 0 && other.creationTime != 0 &&
        mark.creationTime != other.creationTime) {
        return false;
    }
    // A server may hand out new handles after a restart.
    if (isNetwork || mark.handle.isEmpty() || other.handle.isEmpty()) return true;
    return mark.handleType == other.handleType && mark.handle == other.handle;
}

} // namespace

std::optional<FolderMark> markOfFolder(const QString& path) {
    struct statx status {};
    const QByteArray bytes = QFile::encodeName(path);
    if (::statx(AT_FDCWD, bytes.constData(), 0, STATX_TYPE | STATX_INO | STATX_BTIME, &status) !=
        0) {
        return std::nullopt;
    }
    if (!S_ISDIR(status.stx_mode)) {
        errno = ENOTDIR;
        return std::nullopt;
    }
    FolderMark mark;
    mark.inode = status.stx_ino;
    if ((status.stx_mask & STATX_BTIME) != 0) {
        mark.creationTime = status.stx_btime.tv_sec * 1'000'000'000 + status.stx_btime.tv_nsec;
    }
    readHandle(bytes, mark);
    return mark;
}

std::optional<Bookmark> Bookmark::bookmarkOfFolder(const QString& path, const Volumes& volumes) {
    const auto mark = markOfFolder(path);
    if (!mark) return std::nullopt;
    Bookmark bookmark;
    bookmark.path = path;
    bookmark.folder = *mark;
    const MountTable table = volumes.mountTable();
    if (const Mount* mount = volumes.mountHolding(path, table)) {
        bookmark.fileSystem = volumes.identity(*mount, path);
        bookmark.pathInFileSystem = platform::pathInFileSystem(*mount, path);
    }
    return bookmark;
}

QByteArray Bookmark::data() const {
    QCborMap map;
    map[Version] = version;
    map[Path] = path;
    map[PathInFileSystem] = pathInFileSystem;
    map[Type] = fileSystem.type;
    map[Uuid] = fileSystem.uuid;
    map[Source] = fileSystem.source;
    map[Fsid] = static_cast<qint64>(fileSystem.fsid);
    map[Inode] = static_cast<qint64>(folder.inode);
    map[CreationTime] = static_cast<qint64>(folder.creationTime);
    map[HandleType] = folder.handleType;
    map[Handle] = folder.handle;
    return magic.toByteArray() + QCborValue(map).toCbor();
}

std::optional<Bookmark> Bookmark::fromData(const QByteArray& data) {
    if (data.size() > greatestSize || !data.startsWith(magic)) return std::nullopt;
    QCborParserError error;
    const QCborMap map = QCborValue::fromCbor(data.mid(magic.size()), &error).toMap();
    if (error.error != QCborError::NoError || map[Version].toInteger() != version) {
        return std::nullopt;
    }
    Bookmark bookmark;
    bookmark.path = map[Path].toString();
    if (!bookmark.path.startsWith(u'/') || bookmark.path.contains(QChar::Null)) return std::nullopt;
    bookmark.pathInFileSystem = map[PathInFileSystem].toString();
    bookmark.fileSystem.type = map[Type].toByteArray();
    bookmark.fileSystem.uuid = map[Uuid].toByteArray();
    bookmark.fileSystem.source = map[Source].toByteArray();
    // Former versions took all that a desktop mounts for one file system.
    if (isDesktopMount(bookmark.fileSystem.type)) {
        const QByteArray share = desktopShare(bookmark.fileSystem.type, bookmark.pathInFileSystem);
        if (!share.isEmpty()) bookmark.fileSystem.source = share;
    }
    bookmark.fileSystem.fsid = static_cast<std::uint64_t>(map[Fsid].toInteger());
    bookmark.folder.inode = static_cast<std::uint64_t>(map[Inode].toInteger());
    bookmark.folder.creationTime = map[CreationTime].toInteger();
    bookmark.folder.handleType = static_cast<int>(map[HandleType].toInteger());
    bookmark.folder.handle = map[Handle].toByteArray();
    return bookmark;
}

bool Bookmark::isSameFolder(const Bookmark& other, bool atSamePath) const {
    if (!fileSystem.agreesWith(other.fileSystem)) return false;
    const InodeStability stability = fileSystem.inodeStability();
    if (atSamePath && stability != InodeStability::Stable) return true;
    if (stability == InodeStability::None) return false;
    const bool isNetwork = isNetworkFileSystem(fileSystem.type, fileSystem.source);
    return isSameMark(folder, other.folder, isNetwork);
}

} // namespace platform
