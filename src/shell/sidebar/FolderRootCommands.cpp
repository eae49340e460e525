#include "shell/sidebar/FolderRootCommands.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "library/PBAliasResolver.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/sidebar/FolderPrompts.h"
#include "shell/sidebar/RootRelocation.h"
#include "shell/sidebar/SourceTreeController.h"
#include "ui/RevealFiles.h"

#include <utility>

using platform::MainLoop;
using namespace std::chrono_literals;

FolderRootCommands::FolderRootCommands(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)) {
    connect(&_parts.tree, &SourceTreeController::revealRequested, this, [this](const auto& item) {
        revealInFinder(*item);
    });
    connect(
        &_parts.tree, &SourceTreeController::removeRequested, this,
        &FolderRootCommands::doRemoveFolderAlias);
    connect(
        &_parts.tree, &SourceTreeController::keepRequested, this, &FolderRootCommands::keepFolder);
    connect(&_parts.tree, &SourceTreeController::locateRequested, this, [this](const auto& item) {
        _parts.relocation.locateFolder(item->aliasObject());
    });
}

QString FolderRootCommands::cleaned(const QString& path) const {
    return _parts.aliasResolver.spelledAsOnDisk(
        PBUtilities::pathWithComponents(PBUtilities::pathComponents(path)));
}

FolderRootCommands::~FolderRootCommands() {
    if (auto* loop = MainLoop::instance()) loop->cancelPreviousPerformRequestsWithTarget(this);
}

void FolderRootCommands::addFolderAlias() {
    doAddFolder({}, [this](bool) { _parts.updateImageBrowserTipView(); });
}

void FolderRootCommands::doAddFolder(
    const QString& startPath, const std::function<void(bool isChosen)>& completion) {
    _parts.prompts.chooseFolder(startPath, [this, completion](const QString& path) {
        if (!path.isEmpty()) {
            MainLoop::instance()->performAfterDelay(
                this, "doAddFolder", 0ms, [this, path] { doAddFolder(path); });
        }
        if (completion) completion(!path.isEmpty());
    });
}

void FolderRootCommands::doAddFolder(const QString& path) {
    const QString folder = cleaned(path);
    const auto known = _parts.aliasManager.findAliasObjectByPath(folder);
    if (known && !known->isZombie() && !OpenedRoots::isOpened(*known)) {
        MainLoop::instance()->performAfterDelay(
            this, "alertFolderAliasIsAlreadyExist", 0ms, [this, name = known->displayName()] {
                _parts.prompts.alertFolderAliasIsAlreadyExist(name);
            });
        return;
    }
    if (!makeRoot(folder)) _parts.prompts.alertCantAddFolder(folder);
}

bool FolderRootCommands::addOrSelectFolder(const QString& path) {
    platform::assertMainThread();
    const QString folder = cleaned(path);
    const auto known = _parts.aliasManager.findAliasObjectByPath(folder);
    if (!known || known->isZombie() || OpenedRoots::isOpened(*known)) return makeRoot(folder);
    const auto item = _parts.tree.dataSource().folderAliasItemWithAliasObject(*known);
    if (item) _parts.tree.select(*item);
    return item != nullptr;
}

bool FolderRootCommands::openFolder(const QString& path) {
    platform::assertMainThread();
    PBAliasManager& manager = _parts.aliasManager;
    const QString folder = cleaned(path);
    auto root = manager.findAliasObjectByPath(folder);
    if (root && !root->isZombie()) return true;
    if (root) {
        // Its rows were kept for the sake of a root around it, which does not show the folder.
        if (!manager.updateState(*root, OpenedRoots::openedState)) return false;
    } else {
        root = insertRoot(folder, OpenedRoots::openedState);
    }
    if (!root) return false;
    updateWatchPathsLater();
    _parts.tree.dataSource().reloadCategoryItem();
    _parts.tree.expandCategoryItem();
    return true;
}

void FolderRootCommands::keepFolder(const std::shared_ptr<PBFolderAliasItem>& item) {
    platform::assertMainThread();
    const bool wasSelected = _parts.tree.selectedItem() == item;
    const auto root = item->aliasObject();
    if (!keepRoot(*root)) return _parts.prompts.alertCantAddFolder(root->path());
    const auto kept = _parts.tree.dataSource().folderAliasItemWithAliasObject(*root);
    if (wasSelected && kept) _parts.tree.select(*kept);
}

bool FolderRootCommands::keepRoot(PBAliasObject& root) {
    if (!_parts.aliasManager.updateState(root, root.state() & ~OpenedRoots::openedState))
        return false;
    takeOpenedRootsInto(root);
    updateWatchPathsLater();
    _parts.tree.dataSource().reloadCategoryItem();
    return true;
}

void FolderRootCommands::takeOpenedRootsInto(const PBAliasObject& root) {
    if (OpenedRoots::takeInto(root, _parts.aliasManager))
        _parts.tree.dataSource().reloadCategoryItem();
}

void FolderRootCommands::updateWatchPathsLater() {
    MainLoop::instance()->performAfterDelay(
        this, "updateWatchPaths", 0ms, [this] { _parts.delegate.updateWatchPathsInBackground(); });
}

bool FolderRootCommands::makeRoot(const QString& path) {
    platform::assertMainThread();
    PBAliasManager& manager = _parts.aliasManager;
    auto root = manager.findAliasObjectByPath(path);
    if (root && OpenedRoots::isOpened(*root) && !root->isZombie()) {
        if (!keepRoot(*root)) return false;
        const auto item = _parts.tree.dataSource().folderAliasItemWithAliasObject(*root);
        if (item) _parts.tree.select(*item);
        return item != nullptr;
    }
    if (root) {
        // Removed earlier, but kept for the sake of the root around it.
        constexpr std::uint64_t hidden = PBAliasObject::zombieState | OpenedRoots::openedState;
        if (!manager.updateState(*root, root->state() & ~hidden)) return false;
    } else if (_parts.relocation.takeIfAway(path)) {
        return true;
    } else {
        root = insertRoot(path, 0);
    }
    if (!root) return false;
    takeOpenedRootsInto(*root);
    updateWatchPathsLater();
    _parts.tree.insertFolderAlias(_parts.tree.dataSource().makeFolderAliasItem(root));
    return true;
}

std::shared_ptr<PBAliasObject>
FolderRootCommands::insertRoot(const QString& path, std::uint64_t state) {
    PBAliasManager& manager = _parts.aliasManager;
    const auto made = _parts.aliasResolver.newAlias(path);
    if (!made) return nullptr;
    // The lock first: whoever holds it waits for the catalogue.
    const platform::Lock lock(_parts.insertFolderAliasLock);
    _parts.scanOperationQueue.cancelAllOperations();
    // The root and what is catalogued of its folders are stored as one.
    FMTransaction transaction(_parts.mainFileDb);
    if (!transaction.isOpen()) return nullptr;
    const qint64 aliasId =
        PBCatalogue(_parts.mainFileDb)
            .insertFolderAliasWithData(
                made->data, static_cast<int>(made->type), path, static_cast<qint64>(state));
    if (aliasId < 1) return nullptr;
    const auto root =
        PBAliasObject::aliasObjectWithId(aliasId, made->data, {}, path, state, made->type);
    manager.resolveAlias(*root, {});
    if (!manager.updateFolderByAliasObject(*root) || !transaction.commit()) return nullptr;
    manager.addAliasObject(root);
    return root;
}

void FolderRootCommands::removeFolderAlias() {
    const auto item = std::dynamic_pointer_cast<PBFolderAliasItem>(_parts.tree.selectedItem());
    if (item) doRemoveFolderAlias(item);
}

void FolderRootCommands::doRemoveFolderAlias(const std::shared_ptr<PBFolderAliasItem>& item) {
    platform::assertMainThread();
    PBAliasManager& manager = _parts.aliasManager;
    const bool isSelected = _parts.tree.selectedItem() == item;
    if (isSelected) _parts.delegate.cancelScan();
    const auto root = item->aliasObject();
    if (!manager.removeAliasObject(root)) {
        // It would be back at the next start.
        if (isSelected) _parts.delegate.scan();
        _parts.prompts.alertCantRemoveFolder(root->displayName());
        return;
    }
    _parts.tree.removeFolderAlias(*item);
    _parts.delegate.updateWatchPathsInBackground();
    _parts.updateImageBrowserTipView();
}

void FolderRootCommands::rootsCameBack(const PBAliasObject* askedFor) {
    platform::assertMainThread();
    _parts.tree.dataSource().reloadCategoryItem();
    _parts.delegate.updateWatchPathsInBackground();
    _parts.updateImageBrowserTipView();
    if (askedFor && !askedFor->isZombie())
        _parts.prompts.alertCantRemoveFolder(askedFor->displayName());
}

void FolderRootCommands::revealInFinder(const PBFolderItem& item) {
    const QString path = item.folderPath();
    if (!path.isEmpty()) revealFiles(_parts.tree.window(), {path});
}
