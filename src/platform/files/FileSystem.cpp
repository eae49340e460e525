#include "platform/files/FileSystem.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

namespace {

/// So much is copied between two looks at whether to go on: a slow stick writes that in a second.
constexpr std::size_t copyStep = std::size_t{8} << 20;
constexpr std::size_t bufferSize = std::size_t{1} << 18;
constexpr mode_t permissionBits = 07777;
constexpr mode_t ordinaryBits = 0777;

std::error_code errorOf(int number) {
    return {number, std::generic_category()};
}
std::error_code lastError() {
    return errorOf(errno);
}
std::error_code after(int result) {
    return result < 0 ? lastError() : std::error_code();
}

FileSystem::Entry entryOf(const struct stat& status) {
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    FileSystem::Entry entry;
    if (S_ISREG(status.st_mode)) entry.kind = FileSystem::Kind::File;
    if (S_ISDIR(status.st_mode)) entry.kind = FileSystem::Kind::Folder;
    if (S_ISLNK(status.st_mode)) entry.kind = FileSystem::Kind::Link;
    entry.size = status.st_size;
    entry.modified = status.st_mtim.tv_sec * nanoseconds + status.st_mtim.tv_nsec;
    entry.device = status.st_dev;
    entry.inode = status.st_ino;
    entry.owner = status.st_uid;
    entry.mode = status.st_mode & permissionBits;
    entry.names = status.st_nlink;
    return entry;
}

/// The kernel has no such call for these two files, which says nothing of the disk.
bool isUnsupported(int error) {
    constexpr std::array errors = {EXDEV, EINVAL,    ENOSYS, EOPNOTSUPP, ENOTTY,
                                   EBADF, EOVERFLOW, EPERM,  ETXTBSY};
    return std::ranges::find(errors, error) != errors.end();
}

std::error_code writeAll(int file, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(file, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return lastError();
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return {};
}

std::error_code copyByHand(int from, int to, std::int64_t& copied) {
    static thread_local std::vector<char> buffer(bufferSize);
    while (copied < static_cast<std::int64_t>(copyStep)) {
        const ssize_t size = ::read(from, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) return lastError();
        if (size == 0) return {};
        if (const auto error = writeAll(to, buffer.data(), static_cast<std::size_t>(size)))
            return error;
        copied += size;
    }
    return {};
}

std::error_code copyExtendedAttributes(int from, int to) {
    const ssize_t listSize = ::flistxattr(from, nullptr, 0);
    if (listSize <= 0) return {};
    std::vector<char> names(static_cast<std::size_t>(listSize));
    const ssize_t size = ::flistxattr(from, names.data(), names.size());
    if (size <= 0) return {};
    const std::string_view list(names.data(), static_cast<std::size_t>(size));
    for (std::size_t start = 0; start < list.size();) {
        const char* name = names.data() + start;
        start += std::string_view(name).size() + 1;
        const ssize_t valueSize = ::fgetxattr(from, name, nullptr, 0);
        if (valueSize < 0) continue;
        std::vector<char> value(static_cast<std::size_t>(valueSize) + 1);
        const ssize_t read = ::fgetxattr(from, name, value.data(), value.size());
        if (read < 0) continue;
        const int result = ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(read), 0);
        // What the other disk has no place for, and what only the administrator may set.
        if (result < 0 && (errno == EDQUOT || errno == EIO)) return lastError();
    }
    return {};
}

/// Those of all, but what the user's mask takes away. The kernel's call that tells the mask changes
/// it for other threads, too.
mode_t permissionsOfNewFiles() {
    static const mode_t permissions = [] {
        QFile file(QStringLiteral("/proc/self/status"));
        const QByteArray name("Umask:");
        mode_t mask = 022;
        if (file.open(QIODevice::ReadOnly)) {
            for (const QByteArray& line : file.readAll().split('\n'))
                if (line.startsWith(name))
                    mask = line.mid(name.size()).trimmed().toUInt(nullptr, 8);
        }
        return static_cast<mode_t>(0666) & ~mask;
    }();
    return permissions;
}

} // namespace

std::error_code DiskFileSystem::look(const QByteArray& path, Entry& entry) {
    struct stat status {};
    if (::lstat(path.constData(), &status) != 0) return lastError();
    entry = entryOf(status);
    return {};
}

std::error_code DiskFileSystem::openSource(const QByteArray& path, int& file, Entry& entry) {
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY;
    // A pipe of that name would wait for its writer.
    file = ::open(path.constData(), flags | O_NONBLOCK);
    // Somebody has a lease of the file, as a file server may, and is asked to give it back; the
    // kernel takes it after a while (fcntl(2), F_SETLEASE).
    if (file < 0 && errno == EWOULDBLOCK) file = ::open(path.constData(), flags);
    if (file < 0) return lastError();
    struct stat status {};
    const int error = ::fstat(file, &status) != 0 ? errno : S_ISREG(status.st_mode) ? 0 : EISDIR;
    entry = entryOf(status);
    if (error == 0) return {};
    ::close(file);
    file = -1;
    return errorOf(error);
}

std::error_code DiskFileSystem::create(const QByteArray& path, int& file) {
    file = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    return after(file);
}

void DiskFileSystem::permitAsOrdinary(int file) {
    static_cast<void>(::fchmod(file, permissionsOfNewFiles()));
}

std::error_code DiskFileSystem::copySome(int from, int to, std::int64_t& copied) {
    copied = 0;
    const off_t position = ::lseek(from, 0, SEEK_CUR);
    if (position == 0 && ::ioctl(to, FICLONE, from) == 0) {
        copied = ::lseek(from, 0, SEEK_END);
        return copied < 0 ? lastError() : std::error_code();
    }
    ssize_t size = 0;
    do {
        size = ::copy_file_range(from, nullptr, to, nullptr, copyStep, 0);
    } while (size < 0 && errno == EINTR);
    if (size > 0) {
        copied = size;
        return {};
    }
    // Some file systems answer 0 for files whose content they make up.
    if (size < 0 && !isUnsupported(errno)) return lastError();
    return copyByHand(from, to, copied);
}

std::error_code DiskFileSystem::copyAttributes(int from, int to) {
    struct stat status {};
    if (::fstat(from, &status) != 0) return lastError();
    if (const auto error = copyExtendedAttributes(from, to)) return error;
    // Before the permissions, which may be those to set nothing any more; a disk without
    // permissions refuses.
    const bool isSameOwner = ::fchown(to, status.st_uid, status.st_gid) == 0;
    static_cast<void>(::fchmod(to, status.st_mode & (isSameOwner ? permissionBits : ordinaryBits)));
    const std::array<timespec, 2> dates = {status.st_atim, status.st_mtim};
    if (::futimens(to, dates.data()) != 0 && errno != EPERM && errno != ENOSYS) return lastError();
    return {};
}

std::error_code DiskFileSystem::write(int file, const QByteArray& bytes) {
    return writeAll(file, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

std::error_code DiskFileSystem::sync(int file) {
    return ::fsync(file) != 0 && errno != EINVAL ? lastError() : std::error_code();
}

std::error_code DiskFileSystem::syncFolder(const QByteArray& folder) {
    const int file = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return {};
    const int error = ::fsync(file) != 0 ? errno : 0;
    ::close(file);
    return error == EIO || error == ENOSPC ? errorOf(error) : std::error_code();
}

std::error_code DiskFileSystem::close(int file) {
    return ::close(file) != 0 && errno != EINTR ? lastError() : std::error_code();
}

std::error_code DiskFileSystem::renameToFree(const QByteArray& path, const QByteArray& toPath) {
    const char* from = path.constData();
    const char* to = toPath.constData();
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return {};
    if (errno != EINVAL && errno != ENOSYS) return lastError();
    // A second name is given only where there is none.
    if (::linkat(AT_FDCWD, from, AT_FDCWD, to, 0) == 0) {
        // Gone by itself, or by a request to a server whose answer was lost: the second name is all
        // that there is now.
        if (::unlink(from) == 0 || errno == ENOENT) return {};
        const auto error = lastError();
        ::unlink(to);
        return error;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK)
        return lastError();
    // The name is taken by an empty file, which is then replaced.
    const int place = ::open(to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (place < 0) return lastError();
    ::close(place);
    if (::rename(from, to) == 0) return {};
    const auto error = lastError();
    ::unlink(to);
    return error;
}

std::error_code DiskFileSystem::renameOver(const QByteArray& path, const QByteArray& toPath) {
    return after(::rename(path.constData(), toPath.constData()));
}

std::error_code DiskFileSystem::makeLink(const QByteArray& target, const QByteArray& path) {
    return after(::symlink(target.constData(), path.constData()));
}

std::error_code DiskFileSystem::readLink(const QByteArray& path, QByteArray& target) {
    constexpr qsizetype longestTarget = 4096;
    QByteArray text(longestTarget, Qt::Uninitialized);
    const ssize_t size = ::readlink(path.constData(), text.data(), longestTarget);
    if (size < 0) return lastError();
    target = text.first(size);
    return {};
}

std::error_code DiskFileSystem::remove(const QByteArray& path) {
    return after(::unlink(path.constData()));
}

std::error_code DiskFileSystem::makeFolder(const QByteArray& path, std::uint32_t mode) {
    return after(::mkdir(path.constData(), mode));
}

std::error_code DiskFileSystem::removeFolder(const QByteArray& path) {
    return after(::rmdir(path.constData()));
}

QByteArray folderOfPath(const QByteArray& path) {
    const qsizetype separator = path.lastIndexOf('/');
    return separator <= 0 ? QByteArrayLiteral("/") : path.first(separator);
}

QByteArray nameOfPath(const QByteArray& path) {
    return path.sliced(path.lastIndexOf('/') + 1);
}

} // namespace platform
