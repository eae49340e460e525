#include "scan/EditedPhotographsOperation.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/marks/IdsText.h"
#include "codec/PBImageImporterManager.h"
#include "core/Paths.h"
#include "group/FolderPaths.h"
#include "group/ItemLookup.h"
#include "library/PBAliasManager.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"
#include "scan/Reinsertion.h"
#include "scan/ScanServices.h"
#include "scan/ScanSteps.h"

#include <algorithm>

using platform::Presence;

void EditedPhotographsOperation::runWithOwnerNSOperation(
    platform::Operation& /*owner*/, bool isLast) {
    PBGroupItemArray& tree = *_dictionary->WorkGroupItemArray;
    std::unordered_set<qint64> wanted(_edited.fileIds.begin(), _edited.fileIds.end());
    const PBImageFileList inTree = _edited.moves ? group::removeItemsWithIds(tree, wanted)
                                                 : group::takeItemsWithIds(tree, wanted);
    // All of them, also after a cancellation: the tree may stay on show.
    if (_edited.moves) reinsertItems(*_dictionary, inTree, {});
    tellOthers(inTree);
    _dictionary->EditedMeanwhile->insert(wanted.begin(), wanted.end());
    const bool hasTakenIn = takeIn(wanted);
    if (isLast && (_edited.moves || hasTakenIn)) publishWorkTree(*_dictionary, true);
}

void EditedPhotographsOperation::tellOthers(const PBImageFileList& inTree) const {
    const std::unordered_set<std::shared_ptr<PBImageFileItem>> known(
        _edited.items.begin(), _edited.items.end());
    std::vector<qint64> others;
    for (const auto& item : inTree)
        if (!known.contains(item)) others.push_back(item->fileId());
    if (!others.empty()) _edited.readAgain(std::move(others));
}

bool EditedPhotographsOperation::isInScope(qint64 folderId) const {
    const auto& scope = _dictionary->Scope;
    if (!scope || !scope->root) return false;
    FMResultSet folder = _dictionary->Database->executeQuery(
        QStringLiteral("select AliasId,ifnull(RelativePath,'') from Folder where Id = ?"),
        folderId);
    if (!folder.next()) return false;
    const qint64 aliasId = folder.longLongIntForColumnIndex(0);
    const QString path = folder.stringForColumnIndex(1);
    folder.close();
    if (aliasId != scope->root->aliasId()) {
        const auto nested = _dictionary->services->aliasManager.findSubAliasByAliasObject(
            *scope->root, scope->relativePath);
        return scope->recurseSubFolder && std::ranges::any_of(nested, [&](const auto& root) {
                   return root->aliasId() == aliasId;
               });
    }
    if (!scope->recurseSubFolder) return path == scope->relativePath;
    return scope->relativePath.isEmpty() ||
           PBUtilities::comparePath(scope->relativePath, path) >= 0;
}

bool EditedPhotographsOperation::takeIn(const std::unordered_set<qint64>& fileIds) const {
    // Without a filter and a search whatever is not in the tree is yet to come, or does not belong.
    if (fileIds.empty() || (_dictionary->Filter == 0 && _dictionary->SearchString.isEmpty()))
        return false;
    const std::vector<qint64> ids(fileIds.begin(), fileIds.end());
    std::vector<group::ImageFileRow> rows;
    FMResultSet cursor = _dictionary->Database->executeQuery(
        group::ImageFileRow::queryForIds(), marks::idsText(ids));
    while (cursor.next())
        rows.push_back(group::ImageFileRow::fromResultSet(cursor));
    cursor.close();

    group::GroupingStep step(
        _dictionary->groupingParameters(), *_dictionary->Database, _dictionary->services->places);
    const group::CatalogueFolderPaths paths(
        *_dictionary->Database, _dictionary->services->aliasManager);
    step.willInsert(rows);
    ThumbnailsToBuild thumbnails(*_dictionary);
    bool hasTakenIn = false;
    for (const group::ImageFileRow& row : rows) {
        const QString folder = paths.pathOfFolderId(row.folderId);
        if (folder.isEmpty() || !isInScope(row.folderId)) continue;
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
        _dictionary->ShownAhead->insert(row.id);
        hasTakenIn = true;
        if (presence == Presence::There) {
            thumbnails.add(
                *item, _dictionary->services->imageImporterManager.imageImporterForImageURL(path),
                true);
        }
    }
    thumbnails.queueAll();
    return hasTakenIn;
}
