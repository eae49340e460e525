#include "platform/program/RuntimeFolder.h"

#include <sys/stat.h>
#include <unistd.h>

namespace platform::RuntimeFolder {

namespace {

/// A stranger can take any name in a folder that all share, but hardly will take all of these.
constexpr int names = 100;

/// A folder of this user's into which nobody else writes.
bool isOurs(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool takeOwnFolder(const QByteArray& path) {
    if (::mkdir(path.constData(), S_IRWXU) == 0) return true;
    struct stat status {};
    // A link could lead anywhere.
    return ::lstat(path.constData(), &status) == 0 && isOurs(status) &&
           ::chmod(path.constData(), S_IRWXU) == 0;
}

} // namespace

QByteArray path() {
    QByteArray given = qgetenv("XDG_RUNTIME_DIR");
    struct stat status {};
    if (!given.isEmpty() && ::stat(given.constData(), &status) == 0 && isOurs(status) &&
        ::access(given.constData(), W_OK | X_OK) == 0) {
        return given;
    }
    return ownFolderIn("/tmp");
}

QByteArray ownFolderIn(const QByteArray& temporaryFolder) {
    const QByteArray first = temporaryFolder + "/runtime-" + QByteArray::number(::geteuid());
    for (int number = 1; number <= names; ++number) {
        const QByteArray folder = number == 1 ? first : first + '-' + QByteArray::number(number);
        if (takeOwnFolder(folder)) return folder;
    }
    return {};
}

} // namespace platform::RuntimeFolder
