#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"

qint64 PBCatalogue::idAfterInsert(bool inserted) const {
    return inserted ? _db.lastInsertRowId() : 0;
}

qint64 PBCatalogue::insertFolderAliasWithData(
    const QByteArray& data, int type, const QString& reservePath, qint64 state) {
    return idAfterInsert(_db.executeUpdate(
        QStringLiteral("insert into FolderAlias (Data,Type,ReservePath,State) values (?,?,?,?)"),
        data, type, reservePath, state));
}

qint64 PBCatalogue::insertFolderWithAliasId(qint64 aliasId, const QString& relativeFolderPath) {
    return idAfterInsert(_db.executeUpdate(
        QStringLiteral("insert into Folder (AliasId,RelativePath) values (?,?)"), aliasId,
        relativePathValue(relativeFolderPath)));
}

bool PBCatalogue::insertDictionary(
    QStringView table, std::optional<qint64> fileId, const PBDictionary& dictionary) {
    // Written in one pass and bound without copies: a scan inserts four of these for each file.
    constexpr qsizetype roomForColumn = 26;
    const std::size_t count = dictionary.size() + (fileId ? 1 : 0);
    const PBValue owner = fileId ? PBValue(*fileId) : PBValue();
    std::vector<const PBValue*> values;
    values.reserve(count);
    QString sql;
    sql.reserve(48 + static_cast<qsizetype>(count) * roomForColumn);
    sql += QStringView(u"insert into ");
    sql += table;
    QChar separator = u'(';
    const auto add = [&](QStringView column, const PBValue& value) {
        sql += separator;
        sql += column;
        separator = u',';
        values.push_back(&value);
    };
    if (fileId) add(u"FileId", owner);
    for (const auto& [key, value] : dictionary)
        add(key, value);
    sql += QStringView(u") values(");
    for (std::size_t place = 0; place < count; ++place)
        sql += place == 0 ? QStringView(u"?") : QStringView(u",?");
    sql += u')';
    return _db.executeUpdateWithArgumentPointers(sql, values);
}

qint64 PBCatalogue::insertImageFileWithDictionary(const PBDictionary& dictionary) {
    return idAfterInsert(insertDictionary(u"ImageFile", std::nullopt, dictionary));
}

bool PBCatalogue::insertExifWithImageFileId(qint64 fileId, const PBDictionary& exifProperties) {
    return insertDictionary(u"Exif", fileId, exifProperties);
}

bool PBCatalogue::insertExifAuxWithImageFileId(
    qint64 fileId, const PBDictionary& exifAuxProperties) {
    return insertDictionary(u"ExifAux", fileId, exifAuxProperties);
}

bool PBCatalogue::insertTiffWithImageFileId(qint64 fileId, const PBDictionary& tiffProperties) {
    return insertDictionary(u"Tiff", fileId, tiffProperties);
}

bool PBCatalogue::insertIPTCWithImageFileId(qint64 fileId, const PBDictionary& iptcProperties) {
    return insertDictionary(u"IPTC", fileId, iptcProperties);
}

bool PBCatalogue::insertGPSWithImageFileId(qint64 fileId, const PBDictionary& gpsProperties) {
    return insertDictionary(u"GPS", fileId, gpsProperties);
}

bool PBCatalogue::insertThumbnailWithFileId(qint64 fileId, const QByteArray& thumbnailData) {
    return _db.executeUpdate(
        QStringLiteral("insert into Thumbnail (FileId,Data) values (?,?)"), fileId, thumbnailData);
}

qint64 PBCatalogue::insertGeoWithLongitudeData(
    const QByteArray& longitudeData, const QByteArray& latitudeData,
    const QByteArray& addressDict) {
    return idAfterInsert(_db.executeUpdate(
        QStringLiteral("insert into Geo (Longitude, Latitude, AddressDict) values (?,?,?)"),
        longitudeData, latitudeData, addressDict));
}
