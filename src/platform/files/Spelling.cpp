#include "platform/files/Spelling.h"

#include "platform/files/DirectoryHandle.h"
#include "platform/files/PathNames.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>

namespace platform {

namespace {

std::optional<NamesOnDisk::Identity> identityOf(const QString& path) {
    struct stat status {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) return std::nullopt;
    return NamesOnDisk::Identity(status.st_dev, status.st_ino);
}

std::optional<QSet<QString>> namesIn(const QString& folder) {
    const DirectoryHandle directory = openDirectory(QFile::encodeName(folder));
    if (!directory) return std::nullopt;
    QSet<QString> names;
    while (true) {
        errno = 0;
        const dirent* found = ::readdir(directory.get());
        if (!found) return errno == 0 ? std::optional(std::move(names)) : std::nullopt;
        names.insert(QFile::decodeName(found->d_name));
    }
}

/// The name with its first letter, rather an ASCII one, in the other case; empty without letters.
QString inOtherCase(const QString& name) {
    const auto isCased = [](QChar character) {
        return character.toUpper() != character || character.toLower() != character;
    };
    auto letter = std::ranges::find_if(
        name, [&](QChar character) { return character.unicode() < 0x80 && isCased(character); });
    if (letter == name.end()) letter = std::ranges::find_if(name, isCased);
    if (letter == name.end()) return {};
    QString other = name;
    QChar& changed = other[std::distance(name.begin(), letter)];
    changed = changed.toUpper() != changed ? changed.toUpper() : changed.toLower();
    return other;
}

/// Whether the folder finds the name in another spelling, too: as a disk does that takes no note
/// of case, but also one on which both are names of one file.
bool isFoundInOtherCase(const NamesOnDisk& disk, const QString& folder, const QString& name) {
    const QString other = inOtherCase(name);
    if (other.isEmpty()) return false;
    // First the one that most disks don't have.
    const auto identity = disk.identity(pathInFolder(folder, other));
    return identity && identity == disk.identity(pathInFolder(folder, name));
}

QString spelledName(const NamesOnDisk& disk, const QString& folder, const QString& name) {
    if (!isFoundInOtherCase(disk, folder, name)) return name;
    const auto names = disk.names(folder);
    if (!names || names->contains(name)) return name;
    const auto identity = disk.identity(pathInFolder(folder, name));
    for (const QString& listed : *names) {
        if (listed.compare(name, Qt::CaseInsensitive) == 0 &&
            disk.identity(pathInFolder(folder, listed)) == identity) {
            return listed;
        }
    }
    return name;
}

} // namespace

const NamesOnDisk& NamesOnDisk::real() {
    static const NamesOnDisk disk{identityOf, namesIn};
    return disk;
}

QString spelledAsOnDisk(const QString& path, const NamesOnDisk& disk) {
    const qsizetype separator = path.lastIndexOf(u'/');
    const QString name = path.mid(separator + 1);
    if (separator < 0 || name.isEmpty()) return path;
    const QString folder = path.left(std::max<qsizetype>(separator, 1));
    const auto identity = disk.identity(path);
    const auto above = disk.identity(folder);
    if (!above) return path;
    // What lies around the mount point is another disk, which nobody asked about: a name that is
    // not there may be one that it would try to mount.
    if (identity && identity->first != above->first) return path;
    const QString spelledFolder = spelledAsOnDisk(folder, disk);
    return pathInFolder(spelledFolder, spelledName(disk, spelledFolder, name));
}

bool SpellingCheck::isListed(Folder& folder, const QString& path, const QString& name) const {
    if (!folder.isAsked) {
        // A name without letters says nothing of the others.
        if (inOtherCase(name).isEmpty()) return true;
        folder.isAsked = true;
        if (isFoundInOtherCase(_disk, path, name)) folder.names = _disk.names(path);
    }
    return !folder.names || folder.names->contains(name);
}

bool SpellingCheck::isSpelledSo(const QString& folder, const QString& name) {
    return isListed(_folders[folder], folder, name);
}

bool SpellingCheck::isPathSpelledSo(const QString& folder, const QString& relativePath) {
    QString path = folder;
    for (const QString& name : relativePath.split(u'/', Qt::SkipEmptyParts)) {
        if (!isSpelledSo(path, name)) return false;
        path = pathInFolder(path, name);
    }
    return true;
}

} // namespace platform
