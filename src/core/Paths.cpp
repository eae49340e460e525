#include "core/Paths.h"

#include <QFileInfo>

#include <algorithm>

namespace PBUtilities {

namespace {

/// Walks the parts of a path without making strings of them.
class Components {
public:
    explicit Components(QStringView path) : _path(path) {}

    /// The next part, or a null view at the end. A trailing separator is no part.
    QStringView next() {
        if (_position == 0 && _path.startsWith(u'/')) {
            skipSeparators();
            return u"/";
        }
        skipSeparators();
        const qsizetype start = _position;
        while (_position < _path.size() && _path[_position] != u'/')
            ++_position;
        return start < _position ? _path.mid(start, _position - start) : QStringView();
    }

private:
    void skipSeparators() {
        while (_position < _path.size() && _path[_position] == u'/')
            ++_position;
    }

    QStringView _path;
    qsizetype _position = 0;
};

} // namespace

QStringList pathComponents(QStringView path) {
    QStringList parts;
    Components components(path);
    for (QStringView part = components.next(); !part.isNull(); part = components.next()) {
        parts.append(part.toString());
    }
    return parts;
}

QString pathWithComponents(const QStringList& components) {
    QString path;
    for (const QString& part : components) {
        if (!path.isEmpty() && !path.endsWith(u'/')) path += u'/';
        path += part;
    }
    return path;
}

int comparePath(QStringView path, QStringView otherPath) {
    if (path.isEmpty() && otherPath.isEmpty()) return 0;
    if (path.isEmpty() || otherPath.isEmpty()) return -2;
    Components left(path);
    Components right(otherPath);
    while (true) {
        const QStringView part = left.next();
        const QStringView other = right.next();
        if (part.isNull() && other.isNull()) return 0;
        if (part.isNull()) return 1;
        if (other.isNull()) return -1;
        if (part != other) return -2;
    }
}

QString ancestorOfPath(QStringView path, QStringView otherPath) {
    QStringList common;
    Components left(path);
    Components right(otherPath);
    while (true) {
        const QStringView part = left.next();
        const QStringView other = right.next();
        if (part.isNull() || other.isNull() || part != other) break;
        common.append(part.toString());
    }
    return common.isEmpty() ? QStringLiteral("/") : pathWithComponents(common);
}

bool isEqualPathArray(const QStringList& pathArray, const QStringList& otherPathArray) {
    if (&pathArray == &otherPathArray) return true;
    if (pathArray.size() != otherPathArray.size()) return false;
    QStringList left = pathArray;
    QStringList right = otherPathArray;
    left.sort();
    right.sort();
    return left == right;
}

bool isEqualGroupTypeArray(
    std::span<const int> groupTypeArray, std::span<const int> otherGroupTypeArray) {
    return std::ranges::equal(groupTypeArray, otherGroupTypeArray);
}

bool isParentOfPath(QStringView path, QStringView otherPath) {
    Components left(path);
    Components right(otherPath);
    while (true) {
        const QStringView part = left.next();
        const QStringView other = right.next();
        if (part.isNull()) return !other.isNull();
        if (other.isNull() || part != other) return false;
    }
}

QString displayNameOfPath(QStringView path) {
    QStringView last;
    Components components(path);
    for (QStringView part = components.next(); !part.isNull(); part = components.next())
        last = part;
    QString name = last.toString();
    for (QChar& character : name) {
        if (character.category() == QChar::Other_Control) character = u' ';
    }
    return name;
}

bool isFolder(const QString& path) {
    return QFileInfo(path).isDir();
}

} // namespace PBUtilities
