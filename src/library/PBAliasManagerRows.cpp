// The part of the alias manager that changes the catalogue's rows.
#include "library/PBAliasManager.h"

#include "FMDB/FMDatabase.h"
#include "core/Paths.h"
#include "platform/work/MainThread.h"

#include <algorithm>

using PBUtilities::pathComponents;
using PBUtilities::pathWithComponents;

namespace {

std::vector<qint64> ids(FMDatabase& db, const QString& sql, qint64 aliasId) {
    std::vector<qint64> found;
    FMResultSet rows = db.executeQuery(sql, aliasId);
    while (rows.next())
        found.push_back(rows.longLongIntForColumnIndex(0));
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
    // One that goes may have been all that another one lay in.
    while (true) {
        const auto zombie =
            std::ranges::find_if(aliasArray, [&](const std::shared_ptr<PBAliasObject>& root) {
                return root->isZombie() && root->isMounted() && !isNeeded(*root);
            });
        if (zombie == aliasArray.end()) return removedAny;
        removeAlias((*zombie)->aliasId(), _environment.mainFileDb);
        aliasArray.erase(zombie);
        removedAny = true;
    }
}

void PBAliasManager::removeAlias(qint64 aliasId, FMDatabase& db) {
    platform::assertMainThread();
    const std::vector<qint64> fileIds =
        ids(db,
            QStringLiteral("select a.Id from ImageFile as a,Folder as b where b.AliasId = ? and "
                           "a.FolderId = b.Id"),
            aliasId);
    const std::vector<qint64> folderIds =
        ids(db, QStringLiteral("select Id from Folder where AliasId = ?"), aliasId);
    if (!fileIds.empty() && _environment.removeThumbnails) _environment.removeThumbnails(fileIds);

    if (!db.beginTransaction()) return;
    PBCatalogue catalogue(db);
    for (const qint64 fileId : fileIds)
        catalogue.removeImageFileAndMetadataWithFileId(fileId);
    for (const qint64 folderId : folderIds)
        catalogue.removeFolderWithFolderId(folderId);
    catalogue.removeFolderAliasWithAliasId(aliasId);
    if (!db.commit()) db.rollback();
}

void PBAliasManager::updateFolderByAliasObject(const PBAliasObject& aliasObject) {
    platform::assertMainThread();
    if (!aliasObject.isMounted()) return;
    for (const auto& root : aliasArray()) {
        if (root->isMounted() && PBUtilities::isParentOfPath(root->path(), aliasObject.path())) {
            takeOverRows(*root, aliasObject);
        }
    }
}

void PBAliasManager::takeOverRows(const PBAliasObject& from, const PBAliasObject& to) {
    const QStringList way = pathComponents(to.path()).mid(pathComponents(from.path()).size());
    PBCatalogue catalogue(_environment.mainFileDb);
    std::vector<std::pair<qint64, QString>> rows;
    FMResultSet cursor = _environment.mainFileDb.executeQuery(
        QStringLiteral("select Id,RelativePath from Folder where AliasId = ?"), from.aliasId());
    while (cursor.next())
        rows.emplace_back(cursor.longLongIntForColumnIndex(0), cursor.stringForColumnIndex(1));
    // One change for all rows; where that can't be had, row by row is as good.
    const bool isTransaction = _environment.mainFileDb.beginTransaction();
    for (const auto& [folderId, relativePath] : rows) {
        const QStringList parts = pathComponents(relativePath);
        if (!startsWith(parts, way)) continue;
        catalogue.updateFolderWithId(
            folderId, to.aliasId(), pathWithComponents(parts.mid(way.size())));
    }
    if (isTransaction && !_environment.mainFileDb.commit()) _environment.mainFileDb.rollback();
}
