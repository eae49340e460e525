#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"
#include "platform/files/PathNames.h"

#include <array>

namespace {

/// What a find answers whose cursor came to no row.
std::optional<qint64> missOrFailure(const FMResultSet& row) {
    if (row.hadError()) return std::nullopt;
    return 0;
}

} // namespace

std::optional<qint64> PBCatalogue::findId(const QString& sql, std::span<const PBValue> arguments) {
    FMResultSet row = _db.executeQueryWithArgumentsInArray(sql, arguments);
    if (!row.next()) return missOrFailure(row);
    return row.longLongIntForColumnIndex(0);
}

std::optional<qint64>
PBCatalogue::findFolderIdByAliasId(qint64 aliasId, const std::optional<QString>& relativePath) {
    if (!relativePath) {
        return findId(
            QStringLiteral("select Id from Folder where AliasId = ? and RelativePath is null"),
            std::array{PBValue(aliasId)});
    }
    return findId(
        QStringLiteral("select Id from Folder where AliasId = ? and RelativePath = ?"),
        std::array{PBValue(aliasId), PBValue(*relativePath)});
}

std::optional<bool> PBCatalogue::isFolderThere(qint64 folderId) {
    const auto found =
        findId(QStringLiteral("select Id from Folder where Id = ?"), std::array{PBValue(folderId)});
    if (!found) return std::nullopt;
    return *found > 0;
}

std::optional<qint64> PBCatalogue::findImageFileIdByFolderId(
    qint64 folderId, const QString& fileName, qint64* outFileSize, double* outModificationDate) {
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select Id,FileSize,ModificationDate from ImageFile where FolderId = ? and "
                       "FileName = ?"),
        folderId, fileName);
    if (!row.next()) return missOrFailure(row);
    if (outFileSize) *outFileSize = row.longLongIntForColumnIndex(1);
    if (outModificationDate) *outModificationDate = row.doubleForColumnIndex(2);
    return row.longLongIntForColumnIndex(0);
}

std::optional<qint64> PBCatalogue::findImageFileIdByFolderId(
    qint64 folderId, const QString& fileName, qint64 fileSize, double modificationDate) {
    return findId(
        QStringLiteral("select Id from ImageFile where FolderId = ? and FileName = ? and "
                       "FileSize = ? and ModificationDate = ?"),
        std::array{
            PBValue(folderId), PBValue(fileName), PBValue(fileSize), PBValue(modificationDate)});
}

std::unordered_set<qint64> PBCatalogue::storedThumbnails(std::span<const qint64> fileIds) {
    std::unordered_set<qint64> stored;
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select FileId from Thumbnail where FileId in "
                       "(select value from json_each(?))"),
        catalogue::idsText(fileIds));
    while (row.next())
        stored.insert(row.longLongIntForColumnIndex(0));
    return stored;
}

QString PBCatalogue::tagWithTagId(qint64 tagId) {
    FMResultSet row = _db.executeQuery(QStringLiteral("select Tag from Tags where Id = ?"), tagId);
    return row.next() ? row.stringForColumnIndex(0) : QString();
}

QStringList PBCatalogue::completionArrayByTag(const QString& tag, int maxCount) {
    // Of other letters than ASCII's SQLite doesn't know the case: any stands for them there.
    QString pattern;
    for (const QChar letter : tag.toLower()) {
        if (letter.isLowSurrogate()) continue;
        pattern += letter.unicode() < 128 ? letter : QChar(u'_');
    }
    const bool isLookedAt = pattern != tag.toLower();
    FMResultSet rows = _db.executeQuery(
        QStringLiteral("select Tag from Tags where LOWER(Tag) like '%") + pattern +
        QStringLiteral("%' order by UseCount DESC"));
    QStringList tags;
    while ((maxCount <= 0 || tags.size() < maxCount) && rows.next()) {
        const QString found = rows.stringForColumnIndex(0);
        if (!isLookedAt || found.contains(tag, Qt::CaseInsensitive)) tags.append(found);
    }
    return tags;
}

PBArray
PBCatalogue::dataOfRow(QStringView table, QStringView key, qint64 id, const QStringList& fields) {
    const QString columns = fields.isEmpty() ? QStringLiteral("*") : fields.join(u',');
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select %1 from %2 where %3 = ?").arg(columns, table, key), id);
    PBArray data;
    if (!row.next()) return data;
    const int count = row.columnCount();
    data.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index)
        data.push_back(row.objectForColumnIndex(index));
    return data;
}

PBArray PBCatalogue::folderDataWithIdAndFields(qint64 folderId, const QStringList& fields) {
    return dataOfRow(u"Folder", u"Id", folderId, fields);
}

PBArray PBCatalogue::imageFileDataWithIdAndFields(qint64 fileId, const QStringList& fields) {
    return dataOfRow(u"ImageFile", u"Id", fileId, fields);
}

PBArray PBCatalogue::thumbnailDataWithFileIdAndFields(qint64 fileId, const QStringList& fields) {
    return dataOfRow(u"Thumbnail", u"FileId", fileId, fields);
}

PBArray PBCatalogue::gpsDataWithFileIdAndFields(qint64 fileId, const QStringList& fields) {
    return dataOfRow(u"GPS", u"FileId", fileId, fields);
}

QString PBCatalogue::pathOfFolderId(qint64 folderId, const FolderRootPaths& roots) {
    const PBArray row = folderDataWithIdAndFields(
        folderId, {QStringLiteral("AliasId"), QStringLiteral("RelativePath")});
    if (row.size() != 2) return {};
    const QString root = roots.mountedPathOfAliasId(row[0].toInteger());
    return root.isEmpty() || row[1].isNull() ? root : platform::pathInFolder(root, row[1].toText());
}
