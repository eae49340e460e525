#include "shell/sidebar/SourceSelection.h"

#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "library/PBPathHistory.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/sidebar/FolderPrompts.h"
#include "shell/sidebar/SourceTreeController.h"

#include <QWidget>

#include <algorithm>

namespace {

const QString lastFolderKey = QStringLiteral("LastSelectFolder");

std::shared_ptr<PBFolderItem> topmost(std::shared_ptr<PBFolderItem> item) {
    while (item && item->parent())
        item = item->parent();
    return item;
}

} // namespace

SourceSelection::SourceSelection(const Parts& parts, QObject* parent)
    : QObject(parent), _parts(parts) {
    connect(&_parts.tree, &SourceTreeController::selectionDidChange, this, [this] {
        selectionDidChange(true);
    });
    connect(&_parts.tree, &SourceTreeController::unmountedRootClicked, this, [this] {
        selectionDidChange(true);
    });
    connect(&_parts.tree.dataSource(), &PBSourceTreeDataSource::childrenDidArrive, this, [this] {
        trySelectAwaited();
    });
}

void SourceSelection::selectionDidChange(bool resolves) {
    platform::assertMainThread();
    _awaitedFolder.clear();
    _leftFolder = {};
    const auto folder = _parts.tree.selectedFolder();
    const auto root = std::dynamic_pointer_cast<PBFolderAliasItem>(folder);
    if (root && resolves) resolveSelected(*root->aliasObject());
    if (folder) pushHistory(*folder);
    if (_parts.delegate.isAppDidFinishLaunch()) resetFilters();
    showSelected();
}

void SourceSelection::showSelected() {
    platform::assertMainThread();
    updateWindowTitle();
    const auto folder = _parts.tree.selectedFolder();
    const QString path = folder ? folder->folderPath() : QString();
    // The next run knows nothing of what was only opened.
    if (!path.isEmpty() && !OpenedRoots::isOpened(*folder))
        _parts.userDefaults.setString(path, lastFolderKey);
    _parts.delegate.scan();
}

void SourceSelection::updateWindowTitle() {
    const auto folder = _parts.tree.selectedFolder();
    _parts.window.setWindowTitle(
        folder ? platform::harmlessText(folder->displayName())
               : platform::localizedString(u"Velmora"));
    _parts.window.setWindowFilePath(folder ? folder->folderPath() : QString());
}

void SourceSelection::resolveSelected(PBAliasObject& aliasObject) {
    QString error;
    const bool changed = _parts.aliasManager.resolveAlias(
        aliasObject, {.mount = true, .updateReserve = true}, &error);
    if (!error.isEmpty()) _parts.prompts.alertCantMount(aliasObject.displayName(), error);
    if (!changed) return;
    _parts.delegate.updateWatchPathsInBackground();
    // What was opened of it has given way.
    _parts.tree.dataSource().reloadCategoryItem();
}

void SourceSelection::pushHistory(const PBFolderItem& folder) {
    PBPathHistory& history = _parts.pathHistory;
    if (!history.needPush()) return;
    QString relativePath;
    const auto root = folder.aliasObjectAndRelativePath(&relativePath);
    if (!root || !root->isMounted()) return;
    history.pushAliasObject(root, relativePath);
    Q_EMIT historyDidChange();
}

void SourceSelection::resetFilters() {
    if (_parts.browsing.clearFilterAndSearch()) Q_EMIT filtersDidReset();
}

void SourceSelection::doSelectLastFolder() {
    selectFolder(_parts.userDefaults.stringForKey(lastFolderKey).value_or(QString()));
}

void SourceSelection::selectFolder(const QString& path) {
    platform::assertMainThread();
    _leftFolder = {};
    _awaitedFolder = path;
    trySelectAwaited();
}

void SourceSelection::trySelectAwaited() {
    if (_leftFolder.root && _leftFolder.root->isMounted()) {
        const auto item = _parts.tree.dataSource().folderItemWithAliasObject(
            *_leftFolder.root, _leftFolder.relativePath, true);
        if (item) return _parts.tree.select(*item);
    }
    if (_awaitedFolder.isEmpty()) return;
    QString relativePath;
    const auto root = _parts.aliasManager.appropriateAliasObjectForPath(
        _parts.aliasManager.presentPath(_awaitedFolder), &relativePath, false);
    if (!root) return;
    const auto item = _parts.tree.dataSource().folderItemWithAliasObject(*root, relativePath, true);
    if (!item) return;
    _awaitedFolder.clear();
    _parts.tree.select(*item);
}

void SourceSelection::back() {
    step(&PBPathHistory::back);
}

void SourceSelection::forward() {
    step(&PBPathHistory::forward);
}

void SourceSelection::step(std::shared_ptr<PBAliasObject> (PBPathHistory::*move)(QString*)) {
    platform::assertMainThread();
    PBPathHistory& history = _parts.pathHistory;
    std::shared_ptr<PBFolderItem> item;
    QString relativePath;
    while (!item) {
        const auto root = (history.*move)(&relativePath);
        if (!root) break;
        // Folders that are gone are passed over.
        item = _parts.tree.dataSource().folderItemWithAliasObject(*root, relativePath, false);
    }
    if (item) {
        history.setNeedPush(false);
        _parts.tree.select(*item);
        history.setNeedPush(true);
    }
    Q_EMIT historyDidChange();
}

std::shared_ptr<PBAliasObject> SourceSelection::refresh(const PBAliasArray& changed) {
    platform::assertMainThread();
    _parts.delegate.updateWatchPathsInBackground();
    PBSourceTreeDataSource& dataSource = _parts.tree.dataSource();
    for (const auto& root : changed)
        dataSource.refreshAliasObject(*root);
    // Before its row goes: what is shown of it stays.
    const QString opened = droppedFolder();
    const bool isHandled = !opened.isEmpty() && selectInRoot(opened);
    const auto before = _parts.tree.selectedItem();
    // Roots may have been removed as well.
    dataSource.reloadCategoryItem();
    if (!opened.isEmpty() && !isHandled) _awaitedFolder = opened;
    const auto after = _parts.tree.selectedFolder();
    if (isHandled || !after || after != before) return nullptr;
    const auto root = std::dynamic_pointer_cast<PBFolderAliasItem>(topmost(after));
    if (!root || std::ranges::find(changed, root->aliasObject()) == changed.end()) return nullptr;
    return root->aliasObject();
}

QString SourceSelection::droppedFolder() const {
    const auto folder = _parts.tree.selectedFolder();
    const auto root = folder ? folder->aliasObjectAndRelativePath(nullptr) : nullptr;
    const bool isDropped = root && !_parts.aliasManager.findAliasObjectById(root->aliasId());
    return isDropped && OpenedRoots::isOpened(*root) ? folder->folderPath() : QString();
}

bool SourceSelection::selectInRoot(const QString& path) {
    PBSourceTreeDataSource& dataSource = _parts.tree.dataSource();
    QString below;
    const auto root = _parts.aliasManager.appropriateAliasObjectForPath(path, &below, true);
    const auto item = root ? dataSource.folderItemWithAliasObject(*root, below, true) : nullptr;
    if (!item) return false;
    // The folders of a root that was away have no rows yet.
    dataSource.reloadData();
    _parts.tree.select(*item);
    return _parts.tree.selectedFolder() == item;
}

void SourceSelection::lookForRootsOf(const QStringList& paths) {
    platform::assertMainThread();
    PBAliasArray changed;
    for (const auto& root : _parts.aliasManager.aliasArray()) {
        const QString place = root->reservePath();
        if (root->isMounted() || place.isEmpty()) continue;
        const bool isConcerned = std::ranges::any_of(paths, [&place](const QString& path) {
            return PBUtilities::comparePath(place, path) >= 0;
        });
        if (isConcerned && _parts.aliasManager.resolveAlias(*root, {.updateReserve = true}))
            changed.push_back(root);
    }
    volumesDidMount(changed);
}

void SourceSelection::volumesDidMount(const PBAliasArray& changed) {
    if (changed.empty()) return;
    if (refresh(changed)) selectionDidChange(false);
    trySelectAwaited();
}

void SourceSelection::volumesDidUnmount(const PBAliasArray& changed) {
    if (changed.empty()) return;
    LeftFolder left;
    if (const auto folder = _parts.tree.selectedFolder())
        left.root = folder->aliasObjectAndRelativePath(&left.relativePath);
    const auto root = refresh(changed);
    if (!root || root->isMounted()) return;
    _parts.tree.clearSelection();
    _leftFolder = std::move(left);
}

void SourceSelection::mountFailed(const PBAliasObject& aliasObject, const QString& error) {
    _parts.prompts.alertCantMount(aliasObject.displayName(), error);
}
