#include "fileactions/marks/MarksExchange.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/marks/MarksFile.h"
#include "catalogue/marks/Stars.h"
#include "core/Angles.h"
#include "platform/files/PathNames.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

#include <algorithm>
#include <cmath>
#include <map>

namespace fileactions {

namespace {

constexpr int quarterTurn = 90;
constexpr int fullTurn = 360;

struct Line {
    QByteArray path;
    marks::MarksChange change;
};

/// A whole number; nothing for anything else.
std::optional<int> wholeNumber(const QJsonValue& value) {
    const double number = value.toDouble(0.5);
    if (number != std::trunc(number) || std::abs(number) > 1e6) return std::nullopt;
    return static_cast<int>(number);
}

std::optional<QStringList> texts(const QJsonValue& value) {
    if (!value.isArray()) return std::nullopt;
    QStringList found;
    for (const QJsonValue& one : value.toArray()) {
        const QString text = one.toString().trimmed();
        if (text.isEmpty()) return std::nullopt;
        if (!found.contains(text, Qt::CaseInsensitive)) found.append(text);
    }
    return found;
}

bool readPath(const QString& key, const QJsonValue& value, Line& line) {
    if (!line.path.isEmpty() || !value.isString()) return false;
    if (key == u"path") {
        line.path = QFile::encodeName(QDir::cleanPath(value.toString()));
    } else {
        const auto decoded = QByteArray::fromBase64Encoding(
            value.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded) return false;
        line.path = *decoded;
    }
    return line.path.startsWith('/') && !line.path.contains('\0');
}

bool readMark(const QString& key, const QJsonValue& value, marks::MarksChange& change) {
    if (key == u"stars") {
        change.stars = wholeNumber(value);
        return change.stars && *change.stars >= 0 && *change.stars <= marks::mostStars;
    }
    if (key == u"flag") {
        change.flag = value.toBool();
        return value.isBool();
    }
    if (key == u"tags") {
        change.tags = texts(value);
        return change.tags.has_value();
    }
    if (key != u"rotation") return false;
    const auto angle = wholeNumber(value);
    if (!angle || *angle % quarterTurn != 0) return false;
    change.rotation.emplace();
    if (*angle != 0) *change.rotation = static_cast<int>(PBUtilities::positiveAngle(*angle));
    return true;
}

std::optional<Line> readLine(const QByteArray& text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject()) return std::nullopt;
    const QJsonObject object = document.object();
    Line line;
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const bool isPath = entry.key() == u"path" || entry.key() == u"pathBytes";
        const bool isRead = isPath ? readPath(entry.key(), entry.value(), line)
                                   : readMark(entry.key(), entry.value(), line.change);
        if (!isRead) return std::nullopt;
    }
    return line.path.isEmpty() ? std::nullopt : std::optional(std::move(line));
}

void add(marks::MarksChange& before, const marks::MarksChange& later) {
    if (later.stars) before.stars = later.stars;
    if (later.flag) before.flag = later.flag;
    if (later.tags) before.tags = later.tags;
    if (later.rotation) before.rotation = later.rotation;
}

/// For one line of a message.
QString shown(const QByteArray& path) {
    return QFile::decodeName(path);
}

} // namespace

QByteArray exportedLine(const QByteArray& path, const marks::Marks& marks) {
    if (marks.isEmpty()) return {};
    QJsonObject object;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(path);
    if (decoder.hasError() || text.toUtf8() != path) {
        object.insert(QStringLiteral("pathBytes"), QString::fromLatin1(path.toBase64()));
    } else {
        object.insert(QStringLiteral("path"), text);
    }
    if (marks.stars != 0) object.insert(QStringLiteral("stars"), marks.stars);
    if (marks.flag) object.insert(QStringLiteral("flag"), true);
    if (!marks.tags.isEmpty())
        object.insert(QStringLiteral("tags"), QJsonArray::fromStringList(marks.tags));
    if (marks.rotation)
        object.insert(
            QStringLiteral("rotation"), *marks.rotation == 0 ? fullTurn : *marks.rotation);
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<QByteArray> exportMarks(FMDatabase& both, const marks::RootPaths& mountedRoots) {
    if (!marks::ensureLedgerIsBound(both, mountedRoots)) return std::nullopt;
    const auto rows = marks::MarksLedger(both).rows(mountedRoots);
    if (!rows) return std::nullopt;
    // Of two photographs that were at one path, the one that is there.
    std::map<QByteArray, const marks::LedgerRow*> byPath;
    for (const marks::LedgerRow& row : *rows) {
        const marks::LedgerRow*& known = byPath[row.trace.path()];
        if (!known || row.fileId != 0 || known->fileId == 0) known = &row;
    }
    QByteArray lines;
    for (const auto& [path, row] : byPath)
        lines += exportedLine(path, row->marks);
    return lines;
}

ImportPlan
planImport(const QByteArray& lines, const std::function<qint64(const QByteArray& path)>& fileIdOf) {
    ImportPlan plan;
    std::map<QByteArray, marks::MarksChange> changes;
    int number = 0;
    for (const QByteArray& text : lines.split('\n')) {
        ++number;
        if (text.trimmed().isEmpty()) continue;
        if (const auto line = readLine(text)) {
            add(changes[line->path], line->change);
        } else {
            plan.hasBadLines = true;
            plan.told.append(
                QStringLiteral("line %1 is no photograph with marks; it is left out").arg(number));
        }
    }
    auto& parts = plan.edit.photographs;
    QHash<QString, std::size_t> partOfChange;
    for (const auto& [path, change] : changes) {
        if (const qint64 fileId = fileIdOf(path); fileId != 0) {
            const QString key = keyOf(change);
            if (!partOfChange.contains(key)) {
                partOfChange.insert(key, parts.size());
                parts.push_back({.fileIds = {}, .change = change});
            }
            parts[partOfChange.value(key)].fileIds.push_back(fileId);
        } else {
            plan.told.append(QStringLiteral("%1 is not in the catalogue; its marks wait for it")
                                 .arg(shown(path)));
            plan.edit.paths.push_back({path, change});
        }
    }
    return plan;
}

qint64 fileIdOfPath(FMDatabase& db, const marks::RootPaths& roots, const QByteArray& path) {
    const QString text = QFile::decodeName(path);
    if (QFile::encodeName(text) != path) return 0;
    const qsizetype slash = text.lastIndexOf(u'/');
    const QString folder = text.left(slash + 1);
    for (auto root = roots.begin(); root != roots.end(); ++root) {
        const QString above = platform::pathInFolder(root.value(), {});
        if (!folder.startsWith(above)) continue;
        const QString relative = folder.mid(above.size()).chopped(folder == above ? 0 : 1);
        FMResultSet row = db.executeQuery(
            QStringLiteral("select f.Id from ImageFile f join Folder d on d.Id = f.FolderId "
                           "where d.AliasId = ? and ifnull(d.RelativePath,'') = ? and "
                           "f.FileName = ?"),
            root.key(), relative, text.mid(slash + 1));
        if (row.next()) return row.longLongIntForColumnIndex(0);
    }
    return 0;
}

} // namespace fileactions
