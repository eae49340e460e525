#include "scan/ScanFactory.h"

#include "library/OpenedRoots.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"
#include "scan/AttachedOperations.h"
#include "scan/FilePropertyBatch.h"
#include "scan/PBScanDatabaseOperation.h"
#include "scan/ScanServices.h"

ScanFactory::ScanFactory(Environment environment) : _environment(std::move(environment)) {}

std::shared_ptr<PBScanDictionary> ScanFactory::makeDictionary(
    std::shared_ptr<PBAliasObject> root, const QString& relativePath,
    std::shared_ptr<PBGroupItemArray> workTree, const ScanBrowsing& browsing) const {
    platform::assertMainThread();
    const auto& services = _environment.services;
    auto dictionary = std::make_shared<PBScanDictionary>();
    dictionary->Database = &_environment.scanFileDb;
    dictionary->OperationQueue = &_environment.scanQueue;
    // Of what was opened from outside, nothing but its own folder was asked for.
    dictionary->RecurseSubFolder =
        browsing.recurseSubFolder && !(root && OpenedRoots::isOpened(*root));
    dictionary->AliasObject = std::move(root);
    if (!relativePath.isEmpty()) dictionary->RelativePath = relativePath;
    dictionary->GroupTypeArray = browsing.groupTypeArray;
    if (!_treeState.shownAhead || _treeState.workTree.lock() != workTree)
        _treeState = {
            workTree, std::make_shared<std::unordered_set<qint64>>(),
            std::make_shared<std::unordered_set<qint64>>(), nullptr};
    dictionary->ShownAhead = _treeState.shownAhead;
    dictionary->EditedMeanwhile = _treeState.editedMeanwhile;
    dictionary->Scope = _treeState.scope;
    dictionary->WorkGroupItemArray = std::move(workTree);
    dictionary->SortType = browsing.sortType;
    dictionary->DescendingSort = browsing.descendingSort;
    dictionary->Filter = browsing.filter;
    dictionary->SearchString = browsing.searchString;
    dictionary->PushImageFileItemTime = std::make_shared<PBMutableNumber>(services->now());
    dictionary->PushImageFileItemCount = std::make_shared<PBMutableNumber>(0);
    dictionary->ScanFinishedArray = std::make_shared<const std::vector<PBScanFinishedObject>>(
        services->scanFinishedManager.scanFinishedArray());
    dictionary->BuilidThumbDatabase = &services->buildThumb->db;
    dictionary->BuilidThumbOperationQueue = &services->buildThumb->queue;
    dictionary->BuildThumbSize = browsing.thumbnailSize;
    dictionary->AttachOperationArray = _attachOperationArray;
    dictionary->OpenFiles = browsing.openFiles;
    dictionary->services = services;
    return dictionary;
}

void ScanFactory::startScan(
    std::shared_ptr<PBAliasObject> root, const QString& relativePath,
    std::shared_ptr<PBGroupItemArray> workTree, const ScanBrowsing& browsing) const {
    _environment.services->figures.scanBegins();
    auto dictionary = makeDictionary(root, relativePath, std::move(workTree), browsing);
    _treeState.scope = std::make_shared<const ScanScope>(
        ScanScope{std::move(root), relativePath, dictionary->RecurseSubFolder});
    dictionary->Scope = _treeState.scope;
    _environment.scanQueue.addOperation(
        PBScanDatabaseOperation::scanDatabaseOperationWithDictionary(std::move(dictionary)));
}

void ScanFactory::attach(std::shared_ptr<PBScanAttachOperation> operation) const {
    platform::assertMainThread();
    attachScanOperation(
        _attachOperationArray, _environment.scanQueue, std::move(operation),
        _environment.cancelDelayedPublications);
}

void ScanFactory::attachChanges(
    const WatchedChanges& changes, const std::shared_ptr<PBGroupItemArray>& workTree,
    const ScanBrowsing& browsing) const {
    if (!workTree) return;
    if (changes.checkExist || !changes.rewrittenFiles.isEmpty()) {
        attach(std::make_shared<PBCheckFileItemExistAttachOperation>(
            makeDictionary(nullptr, {}, workTree, browsing), changes.rewrittenFiles,
            !changes.checkExist));
    }
    for (const FolderRescan& rescan : changes.rescans) {
        QString relativePath;
        const auto root = _environment.services->aliasManager.appropriateAliasObjectForPath(
            rescan.path, &relativePath, false);
        if (!root || !root->isMounted()) continue;
        ScanBrowsing inFolder = browsing;
        inFolder.recurseSubFolder = rescan.recursive && browsing.recurseSubFolder;
        inFolder.openFiles = nullptr;
        const auto dictionary = makeDictionary(root, relativePath, workTree, inFolder);
        dictionary->ImageFilePropertyArray = std::make_shared<std::vector<FileProperty>>();
        dictionary->IsAttached = true;
        attach(std::make_shared<PBScanFolderAttachOperation>(dictionary));
    }
    if (!changes.rewrittenFiles.isEmpty()) {
        attach(std::make_shared<PBEndRewritingOperation>(
            makeDictionary(nullptr, {}, workTree, browsing)));
    }
    if (_environment.services->marks && (changes.checkExist || !changes.rescans.empty())) {
        attach(std::make_shared<PBRestoreMarksOperation>(
            makeDictionary(nullptr, {}, workTree, browsing)));
    }
}
