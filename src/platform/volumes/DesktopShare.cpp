#include "platform/volumes/DesktopShare.h"

#include <QHash>

#include <algorithm>
#include <string_view>

namespace platform {

namespace {

/// Kinds of mounts whose address begins otherwise.
QByteArray schemeOf(const QByteArray& kind, const QHash<QByteArray, QByteArray>& values) {
    if (kind == "smb-share" || kind == "smb-server") return "smb";
    if (kind == "afp-volume" || kind == "afp-server") return "afp";
    if (kind == "dav") return values.value("ssl") == "true" ? "davs" : "dav";
    const bool isScheme = !kind.isEmpty() && std::ranges::all_of(kind, [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
               character == '-';
    });
    return isScheme ? kind : QByteArray();
}

QByteArray
firstOf(const QHash<QByteArray, QByteArray>& values, std::initializer_list<const char*> keys) {
    for (const char* key : keys)
        if (values.contains(key)) return values.value(key);
    return {};
}

} // namespace

bool isDesktopMount(const QByteArray& type) {
    return type == "fuse.gvfsd-fuse" || type == "fuse.kio-fuse";
}

QByteArray desktopShare(const QByteArray& type, const QString& pathInFileSystem) {
    // One has a folder for each scheme, and the servers below.
    const int depth = type == "fuse.kio-fuse" ? 2 : 1;
    const QStringList names = pathInFileSystem.split(u'/', Qt::SkipEmptyParts);
    return names.size() < depth ? QByteArray() : names.first(depth).join(u'/').toUtf8();
}

QString addressOfDesktopShare(const QByteArray& share) {
    const qsizetype colon = share.indexOf(':');
    if (colon < 0) return {};
    QHash<QByteArray, QByteArray> values;
    for (const QByteArray& pair : share.mid(colon + 1).split(',')) {
        const qsizetype equals = pair.indexOf('=');
        if (equals > 0) values.insert(pair.first(equals), pair.mid(equals + 1));
    }
    const QByteArray scheme = schemeOf(share.first(colon), values);
    const QByteArray host = firstOf(values, {"server", "host"});
    if (scheme.isEmpty() || host.isEmpty()) return {};
    QByteArray address = scheme + "://";
    if (const QByteArray user = values.value("user"); !user.isEmpty()) address += user + '@';
    address += host;
    if (const QByteArray port = values.value("port"); !port.isEmpty()) address += ':' + port;
    QByteArray path =
        QByteArray::fromPercentEncoding(firstOf(values, {"share", "volume", "prefix"}));
    if (!path.startsWith('/')) path.prepend('/');
    return QString::fromLatin1(address + path.toPercentEncoding("/"));
}

} // namespace platform
