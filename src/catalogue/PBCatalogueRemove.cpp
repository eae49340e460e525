#include "catalogue/PBCatalogue.h"

#include "FMDB/FMDatabase.h"

#include <algorithm>
#include <array>

namespace {

/// Each has rows under the ids of files.
constexpr std::array<QStringView, 5> metadataTables{u"Exif", u"ExifAux", u"Tiff", u"IPTC", u"GPS"};

} // namespace

bool PBCatalogue::removeRow(QStringView table, QStringView key, qint64 id) {
    return _db.executeUpdate(QStringLiteral("delete from %1 where %2 = ?").arg(table, key), id);
}

bool PBCatalogue::removeFolderAliasWithAliasId(qint64 aliasId) {
    return removeRow(u"FolderAlias", u"Id", aliasId);
}

bool PBCatalogue::removeFolderWithFolderId(qint64 folderId) {
    return _db.executeUpdate(
        QStringLiteral("delete from Folder where Id = ?1 and not exists "
                       "(select 1 from ImageFile where FolderId = ?1)"),
        folderId);
}

bool PBCatalogue::removeImageFileWithFileId(qint64 fileId) {
    return removeRow(u"ImageFile", u"Id", fileId);
}

bool PBCatalogue::removeExifWithFileId(qint64 fileId) {
    return removeRow(u"Exif", u"FileId", fileId);
}

bool PBCatalogue::removeExifAuxWithFileId(qint64 fileId) {
    return removeRow(u"ExifAux", u"FileId", fileId);
}

bool PBCatalogue::removeTiffWithFileId(qint64 fileId) {
    return removeRow(u"Tiff", u"FileId", fileId);
}

bool PBCatalogue::removeIPTCWithFileId(qint64 fileId) {
    return removeRow(u"IPTC", u"FileId", fileId);
}

bool PBCatalogue::removeGPSWithFileId(qint64 fileId) {
    return removeRow(u"GPS", u"FileId", fileId);
}

bool PBCatalogue::removeThumbnailWithFileId(qint64 fileId) {
    return removeRow(u"Thumbnail", u"FileId", fileId);
}

bool PBCatalogue::removeFolderAliasWithAllRows(qint64 aliasId) {
    const QString ofFolders =
        QStringLiteral("FolderId in (select Id from Folder where AliasId = ?)");
    const QString ofFiles = QStringLiteral("FileId in (select Id from ImageFile where %1)");
    const auto remove = [&](QStringView table, const QString& rows) {
        return _db.executeUpdate(
            QStringLiteral("delete from %1 where ").arg(table) + rows, aliasId);
    };
    return std::ranges::all_of(
               metadataTables,
               [&](QStringView table) { return remove(table, ofFiles.arg(ofFolders)); }) &&
           remove(u"ImageFile", ofFolders) && remove(u"Folder", QStringLiteral("AliasId = ?")) &&
           removeFolderAliasWithAliasId(aliasId);
}

bool PBCatalogue::removeImageFileAndMetadataWithFileId(qint64 fileId) {
    // Each is tried, whatever became of those before it.
    bool removed = removeImageFileWithFileId(fileId);
    removed = removeExifWithFileId(fileId) && removed;
    removed = removeExifAuxWithFileId(fileId) && removed;
    removed = removeTiffWithFileId(fileId) && removed;
    removed = removeIPTCWithFileId(fileId) && removed;
    return removeGPSWithFileId(fileId) && removed;
}
