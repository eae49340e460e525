#include "scan/RowsTakenIn.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"
#include "core/Paths.h"
#include "group/FolderPaths.h"
#include "library/PBAliasManager.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"
#include "scan/ScanServices.h"
#include "scan/ScanSteps.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

using platform::Presence;

namespace {

bool isInScope(const PBScanDictionary& dictionary, qint64 folderId) {
    const auto& scope = dictionary.Scope;
    if (!scope || !scope->root) return false;
    FMResultSet folder = dictionary.Database->executeQuery(
        QStringLiteral("select AliasId,ifnull(RelativePath,'') from Folder where Id = ?"),
        folderId);
    if (!folder.next()) return false;
    const qint64 aliasId = folder.longLongIntForColumnIndex(0);
    const QString path = folder.stringForColumnIndex(1);
    folder.close();
    if (aliasId != scope->root->aliasId()) {
        const auto nested = dictionary.services->aliasManager.findSubAliasByAliasObject(
            *scope->root, scope->relativePath);
        return scope->recurseSubFolder && std::ranges::any_of(nested, [&](const auto& root) {
                   return root->aliasId() == aliasId;
               });
    }
    if (!scope->recurseSubFolder) return path == scope->relativePath;
    return scope->relativePath.isEmpty() ||
           PBUtilities::comparePath(scope->relativePath, path) >= 0;
}

} // namespace

bool takeInRows(const PBScanDictionary& dictionary, const std::unordered_set<qint64>& fileIds) {
    const std::vector<qint64> ids(fileIds.begin(), fileIds.end());
    std::vector<group::ImageFileRow> rows;
    FMResultSet cursor = dictionary.Database->executeQuery(
        group::ImageFileRow::queryForIds(), catalogue::idsText(ids));
    while (cursor.next())
        rows.push_back(group::ImageFileRow::fromResultSet(cursor));
    cursor.close();

    group::GroupingStep step(
        dictionary.groupingParameters(), *dictionary.Database, dictionary.services->places);
    const group::CatalogueFolderPaths paths(
        *dictionary.Database, dictionary.services->aliasManager);
    std::unordered_map<qint64, QString> folders; // empty for one that is not on show, or not there
    const auto folderOf = [&](qint64 folderId) -> const QString& {
        const auto [folder, isNew] = folders.try_emplace(folderId);
        if (isNew && isInScope(dictionary, folderId))
            folder->second = paths.pathOfFolderId(folderId);
        return folder->second;
    };
    step.willInsert(rows);
    ThumbnailsToBuild thumbnails(dictionary);
    bool hasTakenIn = false;
    for (const group::ImageFileRow& row : rows) {
        const QString& folder = folderOf(row.folderId);
        if (folder.isEmpty()) continue;
        const QString path = platform::pathInFolder(folder, row.fileName);
        const auto [presence, values] = platform::FileManager::look(path);
        const bool isOther =
            presence == Presence::There && (static_cast<quint64>(values.fileSize) != row.fileSize ||
                                            values.modificationDate != row.modificationDate);
        // What is not the row's file any more is left to the passes.
        if (presence == Presence::Gone || isOther) continue;
        const auto item = step.insert(row, folder);
        if (!item) continue;
        item->setIsAway(presence == Presence::Unknown);
        dictionary.ShownAhead->insert(row.id);
        hasTakenIn = true;
        if (presence == Presence::There) thumbnails.addKnown(*item, folder, row.fileName);
    }
    thumbnails.queueAll();
    return hasTakenIn;
}
