// The part of the alias manager that changes the catalogue's rows.
#include "library/PBAliasManager.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "core/Paths.h"
#include "platform/work/MainThread.h"

#include <algorithm>

using PBUtilities::pathComponents;
using PBUtilities::pathWithComponents;

namespace {

/// Nothing where they can't all be read.
std::optional<std::vector<qint64>> ids(FMDatabase& db, const QString& sql, qint64 aliasId) {
    std::vector<qint64> found;
    FMResultSet rows = db.executeQuery(sql, aliasId);
    while (rows.next())
        found.push_back(rows.longLongIntForColumnIndex(0));
    if (rows.hadError()) return std::nullopt;
    return found;
}

} // namespace

bool PBAliasManager::updateState(PBAliasObject& aliasObject, std::uint64_t state) {
    PBCatalogue catalogue(_environment.mainFileDb);
    if (!catalogue.updateFolderAliasWithIdState(
            aliasObject.aliasId(), static_cast<qint64>(state))) {
        return false;
    }
    aliasObject.setState(state);
    return true;
}

bool PBAliasManager::removeZombieAlias() {
    PBAliasArray roots = aliasArray().copy();
    if (!removeZombieAlias(roots)) return false;
    setAliasArray(std::move(roots));
    return true;
}

bool PBAliasManager::removeZombieAlias(PBAliasArray& aliasArray) {
    const auto isNeeded = [&](const PBAliasObject& zombie) {
        return std::ranges::any_of(aliasArray, [&](const std::shared_ptr<PBAliasObject>& root) {
            return root->isMounted() && PBUtilities::comparePath(zombie.path(), root->path()) == -1;
        });
    };
    bool removedAny = false;
    std::vector<std::shared_ptr<PBAliasObject>> kept;
    // One that goes may have been all that another one lay in.
    while (true) {
        const auto zombie =
            std::ranges::find_if(aliasArray, [&](const std::shared_ptr<PBAliasObject>& root) {
                return root->isZombie() && root->isMounted() && !isNeeded(*root) &&
                       std::ranges::find(kept, root) == kept.end();
            });
        if (zombie == aliasArray.end()) return removedAny;
        if (removeAlias((*zombie)->aliasId(), _environment.mainFileDb)) {
            aliasArray.erase(zombie);
            removedAny = true;
        } else {
            kept.push_back(*zombie);
        }
    }
}

bool PBAliasManager::removeAlias(qint64 aliasId, FMDatabase& db) {
    platform::assertMainThread();
    if (!_couldReadAll) return false;
    FMTransaction transaction(db);
    if (!transaction.isOpen()) return false;
    const auto fileIds =
        ids(db,
            QStringLiteral("select a.Id from ImageFile as a,Folder as b where b.AliasId = ? and "
                           "a.FolderId = b.Id"),
            aliasId);
    const auto folderIds =
        ids(db, QStringLiteral("select Id from Folder where AliasId = ?"), aliasId);
    if (!fileIds || !folderIds) return false;
    PBCatalogue catalogue(db);
    const bool removed =
        std::ranges::all_of(
            *fileIds,
            [&](qint64 fileId) {
                return catalogue.removeImageFileAndMetadataWithFileId(fileId);
            }) &&
        std::ranges::all_of(
            *folderIds,
            [&](qint64 folderId) { return catalogue.removeFolderWithFolderId(folderId); }) &&
        catalogue.removeFolderAliasWithAliasId(aliasId);
    if (!removed || !transaction.commit()) return false;
    if (!fileIds->empty() && _environment.removeThumbnails) _environment.removeThumbnails(*fileIds);
    return true;
}

bool PBAliasManager::updateFolderByAliasObject(const PBAliasObject& aliasObject) {
    platform::assertMainThread();
    if (!aliasObject.isMounted()) return true;
    FMTransaction transaction(_environment.mainFileDb);
    for (const auto& root : aliasArray()) {
        if (!root->isMounted() || !PBUtilities::isParentOfPath(root->path(), aliasObject.path()))
            continue;
        if (!transaction.isOpen() || !takeOverRows(*root, aliasObject)) return false;
    }
    return transaction.commit();
}

bool PBAliasManager::takeOverRows(const PBAliasObject& from, const PBAliasObject& to) {
    const QStringList way = pathComponents(to.path()).mid(pathComponents(from.path()).size());
    PBCatalogue catalogue(_environment.mainFileDb);
    std::vector<std::pair<qint64, QString>> rows;
    FMResultSet cursor = _environment.mainFileDb.executeQuery(
        QStringLiteral("select Id,RelativePath from Folder where AliasId = ?"), from.aliasId());
    while (cursor.next())
        rows.emplace_back(cursor.longLongIntForColumnIndex(0), cursor.stringForColumnIndex(1));
    if (cursor.hadError()) return false;
    return std::ranges::all_of(rows, [&](const auto& row) {
        const auto& [folderId, relativePath] = row;
        const QStringList parts = pathComponents(relativePath);
        return !startsWith(parts, way) ||
               catalogue.updateFolderWithId(
                   folderId, to.aliasId(), pathWithComponents(parts.mid(way.size())));
    });
}
