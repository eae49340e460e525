#include "fileactions/export/ExportPlan.h"

#include "platform/files/FileSystem.h"
#include "platform/files/TypeIdentifiers.h"

#include <QFile>
#include <QSet>

#include <cstdint>

namespace fileactions {

namespace {

constexpr qsizetype longestName = 255;

QByteArray baseName(const QByteArray& path) {
    const QByteArray name = platform::nameOfPath(path);
    const qsizetype dot = name.lastIndexOf('.');
    return dot > 0 ? name.first(dot) : name;
}

/// Cut before a character, never within one.
QByteArray cutTo(QByteArray text, qsizetype length) {
    if (text.size() <= length) return text;
    qsizetype end = length;
    while (end > 0 && (static_cast<std::uint8_t>(text[end]) & 0xC0) == 0x80)
        --end;
    text.truncate(end);
    return text;
}

QByteArray nameOf(const QByteArray& base, const QByteArray& ending) {
    return cutTo(base, longestName - ending.size()) + ending;
}

} // namespace

QByteArray exportName(const QByteArray& path, const QString& type) {
    return nameOf(
        baseName(path), '.' + platform::TypeIdentifiers::preferredExtension(type).toLatin1());
}

std::vector<QByteArray> exportNames(const std::vector<QByteArray>& paths, const QString& type) {
    const QByteArray extension =
        '.' + platform::TypeIdentifiers::preferredExtension(type).toLatin1();
    const auto key = [](const QByteArray& name) {
        return QString::fromUtf8(name).toCaseFolded().toUtf8() +
               (name.isValidUtf8() ? QByteArray() : '/' + name);
    };
    // A name that a photograph has of its own is not given to another.
    QSet<QByteArray> own;
    for (const QByteArray& path : paths)
        own.insert(key(exportName(path, type)));
    QSet<QByteArray> taken;
    std::vector<QByteArray> names;
    for (const QByteArray& path : paths) {
        QByteArray name = exportName(path, type);
        for (int n = 1; taken.contains(key(name)) || (n > 1 && own.contains(key(name))); ++n)
            name = nameOf(baseName(path), ' ' + QByteArray::number(n) + extension);
        taken.insert(key(name));
        names.push_back(name);
    }
    return names;
}

} // namespace fileactions
