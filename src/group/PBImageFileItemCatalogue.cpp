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

PBValue PBImageFileItem::locationWithDatabase(FMDatabase& database) const {
    const PBArray columns =
        PBCatalogue(database).gpsDataWithFileIdAndFields(_fileId, group::positionColumns());
    return group::locationFromColumns(columns, true);
}
