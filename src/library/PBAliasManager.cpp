#include "library/PBAliasManager.h"

#include "FMDB/FMDatabase.h"
#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "platform/files/PathNames.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <utility>

using OpenedRoots::isOpened;
using PBUtilities::pathComponents;
using PBUtilities::pathWithComponents;

bool PBAliasManager::startsWith(const QStringList& parts, const QStringList& start) {
    return parts.size() >= start.size() && std::equal(start.begin(), start.end(), parts.begin());
}

namespace {

void tellUnreadRoots(FMDatabase& db) {
    const QString reason = db.lastErrorMessage();
    // A file that can't be used at all was told of when it was opened.
    if (!PBCatalogue(db).isTableExist(QStringLiteral("FolderAlias"))) return;
    platform::complain(QStringLiteral("the folders in %1 can't all be read (%2); none is removed")
                           .arg(db.databasePath(), reason));
}

} // namespace

PBAliasManager::PBAliasManager(Environment environment) : _environment(std::move(environment)) {}

QString
PBAliasManager::pathWithAliasObject(const PBAliasObject& aliasObject, const QString& relativePath) {
    const QString path = aliasObject.path();
    if (path.isEmpty() || relativePath.isEmpty()) return path;
    return platform::pathInFolder(path, relativePath);
}

PBAliasArraySnapshot PBAliasManager::aliasArray() const {
    const platform::Lock lock(_mutex);
    return _aliasArray;
}

void PBAliasManager::setAliasArray(PBAliasArray aliasArray) {
    platform::assertMainThread();
    PBAliasArraySnapshot snapshot(std::move(aliasArray));
    const platform::Lock lock(_mutex);
    std::swap(_aliasArray, snapshot);
}

void PBAliasManager::loadAlias() {
    platform::assertMainThread();
    PBAliasArray roots;
    PBAliasArray leftOpened;
    FMResultSet rows =
        _environment.mainFileDb.executeQuery(QStringLiteral("select * from FolderAlias"));
    while (rows.next()) {
        auto root = PBAliasObject::aliasObjectWithId(
            rows.longLongIntForColumn(QStringLiteral("Id")),
            rows.dataForColumn(QStringLiteral("Data")), QUrl(),
            rows.stringForColumn(QStringLiteral("ReservePath")),
            rows.unsignedLongLongIntForColumn(QStringLiteral("State")),
            rows.unsignedLongLongIntForColumn(QStringLiteral("Type")));
        (isOpened(*root) ? leftOpened : roots).push_back(std::move(root));
    }
    _couldReadAll = !rows.hadError();
    if (!_couldReadAll) tellUnreadRoots(_environment.mainFileDb);
    setAliasArray(std::move(roots));
    // Before any scan: a photograph that is in the catalogue twice gets no marks back.
    if (_couldReadAll && !leftOpened.empty() && _environment.removeRows)
        _environment.removeRows(std::move(leftOpened), nullptr);
    resolveAllAliasWithMount({.updateReserve = true});
}

void PBAliasManager::addAliasObject(std::shared_ptr<PBAliasObject> aliasObject) {
    PBAliasArray roots = aliasArray().copy();
    roots.push_back(std::move(aliasObject));
    setAliasArray(std::move(roots));
}

bool PBAliasManager::resolveAlias(
    PBAliasObject& aliasObject, const PBAliasObject::Look& look, QString* error) {
    const bool isChanged = aliasObject.resolveWithMount(look, _environment.services, error);
    const auto known = isChanged ? findAliasObjectById(aliasObject.aliasId()) : nullptr;
    if (known) dropOpenedRootsIn({known});
    return isChanged;
}

PBAliasArray PBAliasManager::volumDidMount(const QString&) {
    PBAliasArray changed;
    for (const auto& root : aliasArray()) {
        if (root->isMounted()) continue;
        if (resolveAlias(*root, {.updateReserve = true})) changed.push_back(root);
    }
    return changed;
}

PBAliasArray PBAliasManager::volumDidUnmount(const QString&) {
    PBAliasArray changed;
    for (const auto& root : aliasArray()) {
        if (!root->isMounted()) continue;
        // The reserve path keeps the last good place: that of a root that was found elsewhere is
        // the new one, and nobody may ask again.
        if (!resolveAlias(*root, {.includeMounted = true})) continue;
        if (root->isMounted()) root->updateReservePath(_environment.services);
        changed.push_back(root);
    }
    return changed;
}

bool PBAliasManager::isToGo(const PBAliasObject& aliasObject) const {
    if (aliasObject.isMounted() || aliasObject.type() != PBAliasObject::Local) return false;
    return _couldReadAll && aliasObject.isGone();
}

bool PBAliasManager::resolveAllAliasWithMount(const PBAliasObject::Look& look) {
    PBAliasArray roots = aliasArray().copy();
    PBAliasArray removed;
    bool changed = false;
    _environment.services.willResolve(roots);
    std::erase_if(roots, [&](const std::shared_ptr<PBAliasObject>& root) {
        if (root->resolveWithMount(look, _environment.services)) changed = true;
        if (isToGo(*root)) removed.push_back(root);
        return isToGo(*root);
    });
    removeZombieAlias(std::move(roots), std::move(removed));
    dropOpenedRootsIn(aliasArray().copy());
    return changed;
}

PBAliasArray PBAliasManager::aliasPathChanged(const QString& path, const QString& movedTo) {
    PBAliasArray roots = aliasArray().copy();
    PBAliasArray changed;
    PBAliasArray removed;
    std::erase_if(roots, [&](const std::shared_ptr<PBAliasObject>& root) {
        if (!root->isMounted() || root->path() != path) return false;
        const PBAliasLook look{.includeMounted = true, .updateReserve = true, .movedTo = movedTo};
        if (!root->resolveWithMount(look, _environment.services)) return false;
        changed.push_back(root);
        if (isToGo(*root)) removed.push_back(root);
        return isToGo(*root);
    });
    removeZombieAlias(std::move(roots), std::move(removed));
    dropOpenedRootsIn(changed);
    return changed;
}

PBAliasArray PBAliasManager::aliasDidAnswer(
    const PBAliasObject& aliasObject, const PBAliasResolution& resolution) {
    PBAliasArray roots = aliasArray().copy();
    PBAliasArray changed;
    PBAliasArray removed;
    std::erase_if(roots, [&](const std::shared_ptr<PBAliasObject>& root) {
        if (root.get() != &aliasObject) return false;
        if (root->takeResolution(resolution, true, _environment.services)) changed.push_back(root);
        if (!isToGo(*root)) return false;
        if (changed.empty()) changed.push_back(root);
        removed.push_back(root);
        return true;
    });
    removeZombieAlias(std::move(roots), std::move(removed));
    dropOpenedRootsIn(changed);
    return changed;
}

std::shared_ptr<PBAliasObject> PBAliasManager::findAliasObjectByPath(const QString& path) const {
    const PBAliasArraySnapshot roots = aliasArray();
    const auto found = std::ranges::find_if(
        roots, [&](const auto& root) { return root->isMounted() && root->path() == path; });
    return found == roots.end() ? nullptr : *found;
}

std::shared_ptr<PBAliasObject> PBAliasManager::findAliasObjectById(qint64 aliasId) const {
    const PBAliasArraySnapshot roots = aliasArray();
    const auto found =
        std::ranges::find_if(roots, [&](const auto& root) { return root->aliasId() == aliasId; });
    return found == roots.end() ? nullptr : *found;
}

QString PBAliasManager::mountedPathOfAliasId(qint64 aliasId) const {
    const auto root = findAliasObjectById(aliasId);
    return root ? root->path() : QString();
}

std::shared_ptr<PBAliasObject> PBAliasManager::appropriateAliasObjectForPath(
    const QString& path, QString* relativePath, bool ignoreTrash) const {
    const QStringList parts = pathComponents(path);
    std::shared_ptr<PBAliasObject> best;
    qsizetype depth = 0;
    for (const auto& root : aliasArray()) {
        if (ignoreTrash && root->isZombie()) continue;
        const QStringList rootParts = pathComponents(root->path());
        if (rootParts.size() <= depth || !startsWith(parts, rootParts)) continue;
        if (isOpened(*root) && rootParts.size() != parts.size()) continue;
        best = root;
        depth = rootParts.size();
    }
    if (best && relativePath) *relativePath = pathWithComponents(parts.mid(depth));
    return best;
}

QString PBAliasManager::titleOfFolder(const QString& path) const {
    QString relativePath;
    const auto root = appropriateAliasObjectForPath(path, &relativePath, false);
    if (!root) return path;
    const QString name = root->displayName();
    return relativePath.isEmpty() ? name : name + u'/' + relativePath;
}

QString PBAliasManager::presentPath(const QString& formerPath) const {
    if (appropriateAliasObjectForPath(formerPath, nullptr, false)) return formerPath;
    const QStringList parts = pathComponents(formerPath);
    for (const auto& root : aliasArray()) {
        const QStringList rootParts = pathComponents(root->formerPath());
        if (!root->isMounted() || rootParts.isEmpty() || !startsWith(parts, rootParts)) continue;
        return pathWithComponents(pathComponents(root->path()) + parts.mid(rootParts.size()));
    }
    return formerPath;
}

PBAliasArray PBAliasManager::findSubAliasByAliasObject(
    const PBAliasObject& aliasObject, const QString& relativePath) const {
    PBAliasArray found;
    const QString folder = pathWithAliasObject(aliasObject, relativePath);
    if (folder.isEmpty()) return found;
    for (const auto& root : aliasArray()) {
        const QString path = root->path();
        if (path.isEmpty() || isOpened(*root)) continue;
        if (PBUtilities::isParentOfPath(folder, path)) found.push_back(root);
    }
    return found;
}

QStringList PBAliasManager::getMonitorPathArray() const {
    QStringList paths;
    for (const auto& root : aliasArray()) {
        const QString path = root->path();
        const bool isKnown = std::ranges::any_of(paths, [&](const QString& known) {
            return PBUtilities::comparePath(known, path) == 0;
        });
        if (!path.isEmpty() && !isKnown) paths.append(path);
    }
    return paths;
}

QStringList PBAliasManager::awaitedPaths() const {
    QStringList paths;
    for (const auto& root : aliasArray()) {
        const QString path = root->reservePath();
        if (root->isMounted() || root->type() != PBAliasObject::Local || path.isEmpty()) continue;
        if (!paths.contains(path)) paths.append(path);
    }
    return paths;
}
