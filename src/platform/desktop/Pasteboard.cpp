#include "platform/desktop/Pasteboard.h"

#include <QFile>
#include <QMimeData>
#include <QSet>
#include <QStringList>
#include <QSysInfo>

#include <algorithm>

namespace platform {

namespace {

const QString uriList = QStringLiteral("text/uri-list");
const QString copiedFiles = QStringLiteral("x-special/gnome-copied-files");
const QString cutSelection = QStringLiteral("application/x-kde-cutselection");

/// Of a file on this machine; empty for anything else.
QByteArray pathOfUri(QByteArray uri) {
    constexpr QByteArrayView scheme("file:");
    if (uri.first(std::min(uri.size(), scheme.size())).toLower() != scheme) return {};
    uri = uri.sliced(scheme.size());
    if (uri.startsWith("//")) {
        const qsizetype pathStart = uri.indexOf('/', 2);
        if (pathStart < 0) return {};
        const QByteArray host = uri.sliced(2, pathStart - 2).toLower();
        if (!host.isEmpty() && host != "localhost" &&
            host != QSysInfo::machineHostName().toUtf8().toLower())
            return {};
        uri = uri.sliced(pathStart);
    }
    // What follows "?" and "#" unescaped is not of the path.
    const auto end = std::ranges::find_if(uri, [](char c) { return c == '?' || c == '#'; });
    uri.truncate(end - uri.begin());
    const QByteArray path = QByteArray::fromPercentEncoding(uri);
    return path.startsWith('/') && !path.contains('\0') ? path : QByteArray();
}

/// Each path once.
std::vector<QByteArray> pathsOf(const QList<QByteArray>& lines) {
    std::vector<QByteArray> paths;
    QSet<QByteArray> known;
    for (const QByteArray& line : lines) {
        const QByteArray path = pathOfUri(line.trimmed());
        if (path.isEmpty() || known.contains(path)) continue;
        known.insert(path);
        paths.push_back(path);
    }
    return paths;
}

QByteArray uriOfPath(const QByteArray& path) {
    return "file://" + path.toPercentEncoding("/!$&'()*+,;=:@");
}

} // namespace

PasteboardFiles filesOfMimeData(const QMimeData& data) {
    PasteboardFiles files;
    if (data.hasFormat(copiedFiles)) {
        const QList<QByteArray> lines = data.data(copiedFiles).split('\n');
        files.isCut = lines.constFirst().trimmed() == "cut";
        files.paths = pathsOf(lines.sliced(1));
    }
    if (files.paths.empty()) {
        files.paths = pathsOf(data.data(uriList).split('\n'));
        files.isCut = false;
    }
    if (data.hasFormat(cutSelection)) files.isCut = data.data(cutSelection).startsWith('1');
    return files;
}

void setFilesOfMimeData(QMimeData& data, const PasteboardFiles& files) {
    QByteArray uris;
    QByteArray lines = files.isCut ? "cut" : "copy";
    QStringList texts;
    for (const QByteArray& path : files.paths) {
        const QByteArray uri = uriOfPath(path);
        uris += uri + "\r\n";
        lines += '\n' + uri;
        texts.append(QFile::decodeName(path));
    }
    data.setData(uriList, uris);
    data.setData(copiedFiles, lines);
    data.setData(cutSelection, files.isCut ? "1" : "0");
    data.setText(texts.join(u'\n'));
}

} // namespace platform
