#include "platform/volumes/MountTable.h"

#include "platform/files/PathNames.h"

#include <QFile>

#include <algorithm>

namespace platform {

namespace {

/// The kernel writes blank, tab, newline and backslash in names as three octal digits.
QByteArray unescaped(const QByteArray& field) {
    QByteArray bytes;
    bytes.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const auto digit = [&](qsizetype place) {
            const char character = i + place < field.size() ? field[i + place] : '\0';
            return character >= '0' && character <= '7' ? character - '0' : -1;
        };
        if (field[i] == '\\' && digit(1) >= 0 && digit(2) >= 0 && digit(3) >= 0) {
            bytes.append(static_cast<char>(digit(1) * 64 + digit(2) * 8 + digit(3)));
            i += 3;
        } else {
            bytes.append(field[i]);
        }
    }
    return bytes;
}

QString unescapedPath(const QByteArray& field) {
    return QFile::decodeName(unescaped(field));
}

bool parseLine(const QByteArray& line, Mount& mount) {
    // id parent major:minor root mount-point options [optional fields…] - type source super-options
    const QList<QByteArray> fields = line.split(' ');
    const qsizetype separator = fields.indexOf("-", 6);
    if (separator < 0 || fields.size() < separator + 3) return false;
    const QList<QByteArray> device = fields[2].split(':');
    if (device.size() != 2) return false;
    bool ok[3] = {};
    mount.id = fields[0].toULongLong(&ok[0]);
    mount.major = device[0].toUInt(&ok[1]);
    mount.minor = device[1].toUInt(&ok[2]);
    mount.root = unescapedPath(fields[3]);
    mount.mountPoint = unescapedPath(fields[4]);
    mount.fileSystemType = unescaped(fields[separator + 1]);
    mount.source = unescaped(fields[separator + 2]);
    return ok[0] && ok[1] && ok[2] && mount.mountPoint.startsWith(u'/');
}

/// The part of `path` below `folder` without its leading separator; null if it isn't below or at
/// it.
QString pathBelow(const QString& path, const QString& folder) {
    if (path == folder) return QStringLiteral("");
    const QString prefix = folder.endsWith(u'/') ? folder : folder + u'/';
    return path.startsWith(prefix) ? path.mid(prefix.size()) : QString();
}

QString joined(const QString& folder, const QString& rest) {
    return rest.isEmpty() ? folder : pathInFolder(folder, rest);
}

} // namespace

MountTable MountTable::parse(const QByteArray& mountInfo) {
    MountTable table;
    for (const QByteArray& line : mountInfo.split('\n')) {
        Mount mount;
        if (parseLine(line, mount)) table._mounts.push_back(std::move(mount));
    }
    return table;
}

MountTable MountTable::load(const QString& file) {
    QFile table(file);
    return table.open(QIODevice::ReadOnly) ? parse(table.readAll()) : MountTable();
}

const Mount* MountTable::mountOfPath(const QString& path) const {
    const Mount* best = nullptr;
    for (const Mount& mount : _mounts) {
        if (pathBelow(path, mount.mountPoint).isNull()) continue;
        if (!best || mount.mountPoint.size() >= best->mountPoint.size()) best = &mount;
    }
    return best;
}

const Mount* MountTable::mountWithId(std::uint64_t id) const {
    const auto found = std::ranges::find(_mounts, id, &Mount::id);
    return found == _mounts.end() ? nullptr : &*found;
}

QString pathBelowMount(const Mount& mount, const QString& pathInFileSystem) {
    const QString rest = pathBelow(pathInFileSystem, mount.root);
    return rest.isNull() ? QString() : joined(mount.mountPoint, rest);
}

QString pathInFileSystem(const Mount& mount, const QString& path) {
    const QString rest = pathBelow(path, mount.mountPoint);
    return rest.isNull() ? QString() : joined(mount.root, rest);
}

} // namespace platform
