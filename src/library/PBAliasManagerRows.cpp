// The part of the alias manager that changes the catalogue's rows.
#include "library/PBAliasManager.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>

using PBUtilities::pathComponents;
using PBUtilities::pathWithComponents;

bool PBAliasManager::updateState(PBAliasObject& aliasObject, std::uint64_t state) {
    PBCatalogue catalogue(_environment.mainFileDb);
    if (!catalogue.updateFolderAliasWithIdState(
            aliasObject.aliasId(), static_cast<qint64>(state))) {
        return false;
    }
    aliasObject.setState(state);
    return true;
}

bool PBAliasManager::isInAnother(const PBAliasObject& root, const PBAliasArray& roots) {
    return std::ranges::any_of(roots, [&](const std::shared_ptr<PBAliasObject>& other) {
        return other->isMounted() && !OpenedRoots::isOpened(*other) &&
               PBUtilities::comparePath(root.path(), other->path()) == -1;
    });
}

void PBAliasManager::dropOpenedRootsIn(const PBAliasArray& found) {
    platform::assertMainThread();
    const auto isFound = [&](const PBAliasObject& opened) {
        return std::ranges::any_of(found, [&](const auto& root) {
            return root->isMounted() && !root->isZombie() && !OpenedRoots::isOpened(*root) &&
                   OpenedRoots::isShownIn(root->path(), opened.path());
        });
    };
    PBAliasArray roots = aliasArray().copy();
    PBAliasArray dropped;
    std::erase_if(roots, [&](const std::shared_ptr<PBAliasObject>& root) {
        const bool isDropped = OpenedRoots::isOpened(*root) && root->isMounted() && isFound(*root);
        if (isDropped) dropped.push_back(root);
        return isDropped;
    });
    if (dropped.empty()) return;
    setAliasArray(std::move(roots));
    if (_environment.removeRows) _environment.removeRows(std::move(dropped), nullptr);
}

bool PBAliasManager::removeZombieAlias() {
    return removeZombieAlias(aliasArray().copy(), {});
}

bool PBAliasManager::removeZombieAlias(
    PBAliasArray aliasArray, PBAliasArray removed, const std::shared_ptr<PBAliasObject>& askedFor) {
    const auto isFree = [&](const std::shared_ptr<PBAliasObject>& root) {
        return _couldReadAll && root->isZombie() && root->isMounted() &&
               !isInAnother(*root, aliasArray);
    };
    // One that goes may have been all that another one lay in.
    for (auto zombie = std::ranges::find_if(aliasArray, isFree); zombie != aliasArray.end();
         zombie = std::ranges::find_if(aliasArray, isFree)) {
        removed.push_back(*zombie);
        aliasArray.erase(zombie);
    }
    if (removed.empty()) return false;
    setAliasArray(std::move(aliasArray));
    if (_environment.removeRows) _environment.removeRows(std::move(removed), askedFor);
    return true;
}

bool PBAliasManager::removeAliasObject(const std::shared_ptr<PBAliasObject>& aliasObject) {
    platform::assertMainThread();
    const std::uint64_t state = aliasObject->state() | PBAliasObject::zombieState;
    PBAliasArray roots = aliasArray().copy();
    if (!_couldReadAll || !aliasObject->isMounted() || isInAnother(*aliasObject, roots))
        return updateState(*aliasObject, state);
    aliasObject->setState(state);
    return removeZombieAlias(std::move(roots), {}, aliasObject);
}

void PBAliasManager::rootsWereNotRemoved(const PBAliasArray& roots, PBAliasObject* askedFor) {
    platform::assertMainThread();
    if (askedFor) {
        if (!findAliasObjectByPath(askedFor->path())) {
            askedFor->setState(askedFor->state() & ~PBAliasObject::zombieState);
        } else {
            // The user has added the folder again meanwhile.
            static_cast<void>(updateState(*askedFor, askedFor->state()));
        }
    }
    PBAliasArray all = aliasArray().copy();
    for (const auto& root : roots) {
        if (OpenedRoots::isOpened(*root) && root.get() != askedFor) continue;
        const auto place = std::ranges::upper_bound(
            all, root->aliasId(), {}, [](const auto& other) { return other->aliasId(); });
        all.insert(place, root);
    }
    setAliasArray(std::move(all));
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
