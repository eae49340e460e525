#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"

PBValue PBCatalogue::relativePathValue(const QString& relativePath) {
    return relativePath.isEmpty() ? PBValue(PBNull()) : PBValue(relativePath);
}

bool PBCatalogue::updateColumn(
    QStringView table, QStringView column, const PBValue& value, qint64 id) {
    return _db.executeUpdate(
        QStringLiteral("update %1 set %2 = ? where Id = ?").arg(table, column), value, id);
}

bool PBCatalogue::updateFolderAliasWithIdState(qint64 aliasId, qint64 state) {
    return updateColumn(u"FolderAlias", u"State", state, aliasId);
}

bool PBCatalogue::updateFolderAliasWithIdData(qint64 aliasId, const QByteArray& data, int type) {
    return _db.executeUpdate(
        QStringLiteral("update FolderAlias set Data = ?,Type = ? where Id = ?"), data, type,
        aliasId);
}

bool PBCatalogue::updateFolderAliasWithIdReservePath(qint64 aliasId, const QString& reservePath) {
    return updateColumn(u"FolderAlias", u"ReservePath", reservePath, aliasId);
}

bool PBCatalogue::updateFolderWithId(
    qint64 folderId, qint64 aliasId, const QString& relativeFolderPath) {
    return _db.executeUpdate(
        QStringLiteral("update Folder set AliasId = ?,RelativePath = ? where Id = ?"), aliasId,
        relativePathValue(relativeFolderPath), folderId);
}

bool PBCatalogue::updateImageFileWithIdFileName(qint64 fileId, const QString& fileName) {
    return updateColumn(u"ImageFile", u"FileName", fileName, fileId);
}

bool PBCatalogue::updateGeoWithGeoId(
    qint64 geoId, const QByteArray& longitudeData, const QByteArray& latitudeData) {
    return _db.executeUpdate(
        QStringLiteral("update Geo set Longitude = ?,Latitude = ? where GeoId = ?"), longitudeData,
        latitudeData, geoId);
}
