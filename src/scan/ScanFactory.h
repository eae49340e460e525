#pragma once

#include "library/WatchedChanges.h"
#include "scan/PBScanDictionary.h"

#include <functional>
#include <memory>
#include <span>

/// How the user browses, at the moment when a scan is made.
struct ScanBrowsing {
    PBGroupTypeArray groupTypeArray;
    int sortType = 1;
    bool descendingSort = false;
    quint64 filter = 0;
    QString searchString;
    bool recurseSubFolder = true;
    /// Pixels of a thumbnail's longer side.
    int thumbnailSize = 256;
    /// May be empty.
    std::shared_ptr<PBOpenFiles> openFiles;
};

/// Makes scans and attached work out of what the program has at hand. Main thread.
class ScanFactory {
public:
    struct Environment {
        FMDatabase& scanFileDb;
        platform::OperationQueue& scanQueue;
        std::shared_ptr<const ScanServices> services;
        /// Drops publications that wait for the end of scrolling.
        std::function<void()> cancelDelayedPublications;
    };

    explicit ScanFactory(Environment environment);

    /// The dictionary of a scan of this folder; an empty relative path is the root itself.
    [[nodiscard]] std::shared_ptr<PBScanDictionary> makeDictionary(
        std::shared_ptr<PBAliasObject> root, const QString& relativePath,
        std::shared_ptr<PBGroupItemArray> workTree, const ScanBrowsing& browsing) const;

    /// Queues a scan of the folder into the work tree.
    void startScan(
        std::shared_ptr<PBAliasObject> root, const QString& relativePath,
        std::shared_ptr<PBGroupItemArray> workTree, const ScanBrowsing& browsing) const;

    /// Has the work done on the scan thread, within the scan that is running if there is one.
    void attach(std::shared_ptr<PBScanAttachOperation> operation) const;
    /// Rows are about to change behind the scans, within a transaction that is open. Any thread.
    void rowsWillChange() const { _attachOperationArray->rowsWillChange(); }
    /// Changes rows behind the scans, in a transaction that lets them read. Any thread.
    void whileRowsChange(const std::function<void()>& change) const {
        _attachOperationArray->whileRowsChange(change);
    }
    /// What changes on disk mean for the work tree: looks for images that are gone, then for new
    /// ones. Folders that lie in no mounted root are left out.
    void attachChanges(
        const WatchedChanges& changes, const std::shared_ptr<PBGroupItemArray>& workTree,
        const ScanBrowsing& browsing) const;

private:
    const Environment _environment;
    const std::shared_ptr<PBAttachOperationArray> _attachOperationArray =
        std::make_shared<PBAttachOperationArray>();
    /// What all dictionaries of one work tree share.
    struct TreeState {
        std::weak_ptr<PBGroupItemArray> workTree;
        std::shared_ptr<std::unordered_set<qint64>> shownAhead;
        std::shared_ptr<std::unordered_set<qint64>> editedMeanwhile;
        std::shared_ptr<const ScanScope> scope;
    };
    mutable TreeState _treeState;
};
