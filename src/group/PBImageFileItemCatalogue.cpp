#include "catalogue/PBCatalogue.h"
#include "group/FolderPaths.h"
#include "group/GroupDataLoader.h"
#include "group/PBImageFileItem.h"
#include "platform/files/PathNames.h"

namespace {

QString appendComponent(const QString& folder, const QString& fileName) {
    if (folder.isEmpty()) return {};
    return platform::pathInFolder(folder, fileName);
}

} // namespace

QString PBImageFileItem::filePath(const group::FolderPaths& folders) const {
    return appendComponent(folders.pathOfFolderId(_folderId), fileName());
}

QString PBImageFileItem::filePath(
    const group::FolderPaths& folders, group::FolderPathCache& folderCache) const {
    return appendComponent(folderPath(folders, folderCache), fileName());
}

QString PBImageFileItem::folderPath(
    const group::FolderPaths& folders, group::FolderPathCache& folderCache) const {
    if (const auto known = folderCache.find(_folderId); known != folderCache.end())
        return known->second;
    const QString path = folders.pathOfFolderId(_folderId);
    if (!path.isEmpty()) folderCache.emplace(_folderId, path);
    return path;
}

PBValue PBImageFileItem::columnWithDatabase(FMDatabase& database, const QString& column) const {
    const PBArray columns = PBCatalogue(database).imageFileDataWithIdAndFields(_fileId, {column});
    if (columns.empty() || columns.front().isNull()) return {};
    return columns.front();
}

QString PBImageFileItem::utiTypeWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("UTIType")).toText();
}

double PBImageFileItem::creationDateWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("CreationDate")).toDouble();
}

PBValue PBImageFileItem::dpiWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("ImageDPI"));
}

QString PBImageFileItem::colorModelWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("ColorModel")).toText();
}

QString PBImageFileItem::colorSyncProfileWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("ColorSyncProfile")).toText();
}

bool PBImageFileItem::flaggedWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("FileFlag")).toInteger() != 0;
}

quint64 PBImageFileItem::starRatingWithDatabase(FMDatabase& database) const {
    const qint64 stars = columnWithDatabase(database, QStringLiteral("FileStars")).toInteger();
    return stars > 0 ? static_cast<quint64>(stars) : 0;
}

QString PBImageFileItem::tagsWithDatabase(FMDatabase& database) const {
    return columnWithDatabase(database, QStringLiteral("Tag")).toText();
}

PBValue PBImageFileItem::locationWithDatabase(FMDatabase& database) const {
    const PBArray columns =
        PBCatalogue(database).gpsDataWithFileIdAndFields(_fileId, group::positionColumns());
    return group::locationFromColumns(columns, true);
}
