#include "platform/files/FileManager.h"

#include "platform/files/DirectoryHandle.h"
#include "platform/files/FileSystem.h"
#include "platform/files/Spelling.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::FileManager {

namespace {

/// Libraries and bundles that other systems and photo programs keep as folders.
constexpr QStringView packageExtensions[] = {
    u"app",          u"appex",         u"bundle",       u"framework",   u"plugin",
    u"kext",         u"photoslibrary", u"photolibrary", u"aplibrary",   u"migratedphotolibrary",
    u"lrlibrary",    u"lrdata",        u"lrcat-data",   u"cosessiondb", u"tvlibrary",
    u"musiclibrary", u"imovielibrary", u"fcpbundle",    u"rtfd",        u"xcodeproj",
    u"playground",   u"pkg",           u"mpkg",         u"sparsebundle"};

/// Names for a moment, when a file's name changes in case only. More than one is taken only where
/// an earlier such change was cut short.
constexpr int namesToTry = 20;

double secondsOf(const struct statx_timestamp& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

FileIdentity identityOf(const struct statx& status) {
    constexpr qint64 nanoseconds = 1'000'000'000;
    FileIdentity identity{.inode = status.stx_ino};
    if ((status.stx_mask & STATX_BTIME) != 0)
        identity.creationTime = status.stx_btime.tv_sec * nanoseconds + status.stx_btime.tv_nsec;
    return identity;
}

bool isDirectoryAt(int folder, const dirent& entry) {
    if (entry.d_type == DT_DIR) return true;
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
    struct stat status {};
    return ::fstatat(folder, entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

bool isLinkAt(int folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_LNK;
    struct stat status {};
    return ::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISLNK(status.st_mode);
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Renames to a name that is free.
std::error_code moveToFreeName(const QString& path, const QString& toPath) {
    return DiskFileSystem().renameToFree(QFile::encodeName(path), QFile::encodeName(toPath));
}

/// Whether the second path is free but for the file itself, which the disk finds under it, too.
bool isOtherSpelling(const QString& path, const QString& toPath) {
    // Two hard links of one file are two files here: only the case of a name may differ.
    return toPath != path && toPath.compare(path, Qt::CaseInsensitive) == 0 &&
           spelledAsOnDisk(toPath) == spelledAsOnDisk(path);
}

/// By way of a third name: on most disks that take no note of case the kernel leaves a file alone
/// that has the new name already, and says that it was renamed.
std::error_code respell(const QString& path, const QString& toPath) {
    const qsizetype nameStart = toPath.lastIndexOf(u'/') + 1;
    QString between = toPath;
    std::error_code error = std::make_error_code(std::errc::file_exists);
    for (int attempt = 0; attempt < namesToTry && error == std::errc::file_exists; ++attempt) {
        between.insert(nameStart, u'~');
        error = moveToFreeName(path, between);
    }
    if (error) return error;
    error = moveToFreeName(between, toPath);
    if (error) static_cast<void>(moveToFreeName(between, path));
    return error;
}

EntryLook lookAt(int folder, const QString& path) {
    struct statx status {};
    const QByteArray bytes = QFile::encodeName(path);
    if (::statx(folder, bytes.constData(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0)
        return {presenceAfter(errno), {}};
    EntryLook look{Presence::There, {}};
    ResourceValues& values = look.values;
    values.isDirectory = S_ISDIR(status.stx_mode);
    values.isRegularFile = S_ISREG(status.stx_mode);
    values.fileSize = static_cast<qint64>(status.stx_size);
    values.modificationDate = secondsOf(status.stx_mtime);
    values.creationDate = (status.stx_mask & STATX_BTIME) != 0 ? secondsOf(status.stx_btime)
                                                               : values.modificationDate;
    values.identity = identityOf(status);
    return look;
}

} // namespace

EntryLook look(const QString& path) {
    return lookAt(AT_FDCWD, path);
}

std::optional<ResourceValues> resourceValues(const QString& path) {
    const EntryLook found = look(path);
    return found.presence == Presence::There ? std::optional(found.values) : std::nullopt;
}

bool isReadable(const QString& path) {
    return ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK, AT_EACCESS) == 0;
}

OpenFolder::OpenFolder(const QString& path)
    : _descriptor(::open(QFile::encodeName(path).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      _presence(presenceAfter(_descriptor >= 0 ? 0 : errno)) {}

OpenFolder::~OpenFolder() {
    if (_descriptor >= 0) ::close(_descriptor);
}

EntryLook OpenFolder::look(const QString& name) const {
    if (_presence != Presence::There) return {_presence, {}};
    return lookAt(_descriptor, name);
}

std::error_code enumerate(
    const QString& folder, const std::function<bool(const DirectoryEntry&)>& visitor,
    const std::function<void(const DirectoryEntry&)>& undecodable) {
    const QByteArray bytes = QFile::encodeName(folder);
    const DirectoryHandle directory = openDirectory(bytes);
    if (!directory) return lastError();
    while (true) {
        errno = 0;
        const dirent* found = ::readdir(directory.get());
        if (!found) return errno == 0 ? std::error_code() : lastError();
        if (found->d_name[0] == '.') continue;
        DirectoryEntry entry;
        entry.name = QFile::decodeName(found->d_name);
        const bool isDecodable = QFile::encodeName(entry.name) == found->d_name;
        if (!isDecodable && !undecodable) continue;
        entry.isDirectory = isDirectoryAt(::dirfd(directory.get()), *found);
        entry.isPackage = entry.isDirectory && isPackageName(entry.name);
        entry.isLink = isLinkAt(::dirfd(directory.get()), *found);
        entry.inode = found->d_ino;
        if (!isDecodable) {
            undecodable(entry);
        } else if (!visitor(entry)) {
            return {};
        }
    }
}

std::error_code moveItem(const QString& path, const QString& toPath) {
    const std::error_code error = moveToFreeName(path, toPath);
    if (error != std::errc::file_exists || !isOtherSpelling(path, toPath)) return error;
    return respell(path, toPath);
}

bool isPackageName(QStringView name) {
    while (name.size() > 1 && name.endsWith(u'/'))
        name.chop(1);
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot <= name.lastIndexOf(u'/') + 1) return false;
    const QStringView extension = name.mid(dot + 1);
    return std::ranges::any_of(packageExtensions, [&](QStringView known) {
        return extension.compare(known, Qt::CaseInsensitive) == 0;
    });
}

} // namespace platform::FileManager
