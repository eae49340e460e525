#include "platform/desktop/Trash.h"

#include "platform/files/PathNames.h"

#include <QDateTime>
#include <QFile>
#include <QStandardPaths>

#include <array>
#include <climits>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::uint32_t ownFolder = 0700;
constexpr qsizetype longestName = 255; // bytes, of all usual disks
const QByteArray infoSuffix = QByteArrayLiteral(".trashinfo");
/// A trash holds that many files of one name before we give up.
constexpr int mostNumbers = 1'000'000;

/// What no rename leaves: a mount, or a volume within one, which has a device of its own.
struct Bounds {
    std::uint64_t mount = 0;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    bool operator==(const Bounds&) const = default;
};

Bounds boundsOf(const QByteArray& folder) {
    struct statx status {};
    if (::statx(AT_FDCWD, folder.constData(), AT_SYMLINK_NOFOLLOW, STATX_MNT_ID, &status) != 0)
        return {};
    return {status.stx_mnt_id, status.stx_dev_major, status.stx_dev_minor};
}

QByteArray topFolderOnDisk(const QByteArray& folder) {
    std::array<char, PATH_MAX> resolved{};
    if (!::realpath(folder.constData(), resolved.data())) return {};
    QByteArray top(resolved.data());
    const Bounds bounds = boundsOf(top);
    while (top != "/" && boundsOf(folderOfPath(top)) == bounds)
        top = folderOfPath(top);
    return top;
}

/// Cut where no character of UTF-8 is torn.
QByteArray cut(QByteArray name, qsizetype size) {
    if (name.size() <= size) return name;
    while (size > 0 && (static_cast<unsigned char>(name.at(size)) & 0xC0) == 0x80)
        --size;
    name.truncate(size);
    return name;
}

/// The name with a number before its extension, short enough for its information beside it.
QByteArray numbered(const QByteArray& name, int number) {
    const qsizetype dot = name.lastIndexOf('.');
    QByteArray extension = dot > 0 ? name.sliced(dot) : QByteArray();
    const QByteArray base = dot > 0 ? name.first(dot) : name;
    constexpr qsizetype longestExtension = 32;
    if (extension.size() > longestExtension) extension.clear();
    const QByteArray ending =
        (number > 1 ? '.' + QByteArray::number(number) : QByteArray()) + extension;
    return cut(base, longestName - infoSuffix.size() - ending.size()) + ending;
}

} // namespace

Trash::Environment Trash::Environment::ofUser() {
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return {
        .homeTrash = pathInFolder(QFile::encodeName(data), "Trash"),
        .userId = ::getuid(),
        .topFolder = topFolderOnDisk,
        .deletionDate = [] {
            return QDateTime::currentDateTime().toString(u"yyyy-MM-ddTHH:mm:ss").toLatin1();
        }};
}

bool Trash::makeOwnFolder(const QByteArray& path, bool mayBeLink) {
    FileSystem::Entry entry;
    if (_files.look(path, entry)) {
        if (_files.makeFolder(path, ownFolder)) return false;
        if (_files.look(path, entry)) return false;
    }
    if (mayBeLink && entry.kind == FileSystem::Kind::Link) return true;
    return entry.kind == FileSystem::Kind::Folder && entry.owner == _environment.userId;
}

void Trash::makeFolders(const QByteArray& path) {
    FileSystem::Entry entry;
    if (path.isEmpty() || path == "/" || !_files.look(path, entry)) return;
    makeFolders(folderOfPath(path));
    static_cast<void>(_files.makeFolder(path, ownFolder));
}

bool Trash::isUsable(const QByteArray& path) {
    return makeOwnFolder(pathInFolder(path, "files"), false) &&
           makeOwnFolder(pathInFolder(path, "info"), false);
}

std::optional<Trash::Folder> Trash::homeTrashFor(const QByteArray& folder) {
    // Folders above the home trash are there, or made with it.
    makeFolders(folderOfPath(_environment.homeTrash));
    if (!makeOwnFolder(_environment.homeTrash, true) || !isUsable(_environment.homeTrash))
        return {};
    FileSystem::Entry home;
    FileSystem::Entry holder;
    // Links to folders followed. A file itself may lie on a lower layer of its disk.
    const bool isOneDisk = !_files.look(pathInFolder(_environment.homeTrash, "files"), home) &&
                           !_files.look(folder + "/.", holder) && home.device == holder.device;
    if (!isOneDisk) return {};
    return Folder{.path = _environment.homeTrash, .top = {}};
}

std::optional<Trash::Folder> Trash::trashAtTopOf(const QByteArray& folder) {
    const QByteArray top = _environment.topFolder(folder);
    if (top.isEmpty()) return {};
    const QByteArray user = QByteArray::number(_environment.userId);
    const QByteArray shared = pathInFolder(top, ".Trash");
    FileSystem::Entry entry;
    // Only one where nobody can put something in another's way.
    const bool isShared = !_files.look(shared, entry) && entry.kind == FileSystem::Kind::Folder &&
                          (entry.mode & S_ISVTX) != 0;
    for (const QByteArray& own :
         {isShared ? pathInFolder(shared, user) : QByteArray(),
          pathInFolder(top, ".Trash-" + user)}) {
        if (!own.isEmpty() && makeOwnFolder(own, false) && isUsable(own))
            return Folder{.path = own, .top = top};
    }
    return {};
}

std::error_code
Trash::writeInfo(const Folder& folder, const QByteArray& path, const QByteArray& infoPath) {
    int file = -1;
    if (const auto error = _files.create(infoPath, file)) return error;
    QByteArray kept = path;
    if (!folder.top.isEmpty()) {
        // The top is spelled without links, as the path may not be.
        std::array<char, PATH_MAX> resolved{};
        const char* real = ::realpath(folderOfPath(path).constData(), resolved.data());
        kept = pathInFolder(real ? QByteArray(real) : folderOfPath(path), nameOfPath(path));
        const qsizetype topSize = folder.top == "/" ? 1 : folder.top.size() + 1;
        if (kept.startsWith(folder.top)) kept = kept.sliced(topSize);
    }
    std::error_code error = _files.write(
        file, "[Trash Info]\nPath=" + kept.toPercentEncoding("/") +
                  "\nDeletionDate=" + _environment.deletionDate() + '\n');
    if (const auto late = _files.close(file); !error) error = late;
    if (error) static_cast<void>(_files.remove(infoPath));
    return error;
}

std::error_code
Trash::moveInto(const Folder& folder, const QByteArray& path, TrashedFile& trashed) {
    const QByteArray name = nameOfPath(path);
    int& number = _lastNumbers[pathInFolder(folder.path, name)];
    for (++number; number < mostNumbers; ++number) {
        const QByteArray free = numbered(name, number);
        trashed = {
            .originalPath = path,
            .trashedPath = folder.path + "/files/" + free,
            .infoPath = folder.path + "/info/" + free + infoSuffix};
        std::error_code error = writeInfo(folder, path, trashed.infoPath);
        if (error == std::errc::file_exists) continue;
        if (error) return error;
        error = _files.renameToFree(path, trashed.trashedPath);
        if (!error) return {};
        static_cast<void>(_files.remove(trashed.infoPath));
        // A file there without its information.
        if (error != std::errc::file_exists) return error;
    }
    return std::make_error_code(std::errc::file_exists);
}

std::error_code Trash::trash(const QByteArray& path, TrashedFile& trashed) {
    FileSystem::Entry entry;
    if (const auto error = _files.look(path, entry)) return error;
    const QByteArray folder = folderOfPath(path);
    if (const auto known = _known.find(folder); known != _known.end()) {
        return known->second ? moveInto(*known->second, path, trashed)
                             : std::make_error_code(std::errc::not_supported);
    }
    for (const bool isHome : {true, false}) {
        const auto found = isHome ? homeTrashFor(folder) : trashAtTopOf(folder);
        if (!found) continue;
        const auto error = moveInto(*found, path, trashed);
        // One disk may be mounted at two places.
        if (error == std::errc::cross_device_link) continue;
        _known.emplace(folder, found);
        return error;
    }
    _known.emplace(folder, std::nullopt);
    return std::make_error_code(std::errc::not_supported);
}

std::error_code Trash::restore(const TrashedFile& trashed) {
    std::error_code error = _files.renameToFree(trashed.trashedPath, trashed.originalPath);
    FileSystem::Entry entry;
    const QByteArray folder = folderOfPath(trashed.originalPath);
    if (error == std::errc::no_such_file_or_directory && !_files.look(trashed.trashedPath, entry) &&
        !_files.makeFolder(folder, 0777)) {
        error = _files.renameToFree(trashed.trashedPath, trashed.originalPath);
    }
    if (error) return error;
    static_cast<void>(_files.remove(trashed.infoPath));
    return {};
}

} // namespace platform
