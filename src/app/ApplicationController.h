#pragma once

#include "app/BrowsingSettings.h"
#include "app/CatalogueConnections.h"
#include "app/FolderRootServices.h"
#include "app/ScanControl.h"
#include "app/ScanPipeline.h"
#include "app/WatchControl.h"
#include "core/PBAppDelegate.h"
#include "platform/OperationQueue.h"
#include "platform/UserDefaults.h"

#include <memory>
#include <optional>

class PBGeoManager;
class PBMainWindowController;

namespace codec {
class DecoderPool;
}

/// The one root object of the process: builds everything at start, and ends it in a fixed order.
/// What it answers, its parts do.
class ApplicationController final : public PBAppDelegate {
public:
    ApplicationController();
    ~ApplicationController() override;

    /// Start-up up to the loaded window; called once, before the loop runs.
    void awakeFromNib();
    /// Shows the window and restores the last selection.
    void applicationDidFinishLaunching();
    /// Makes each a folder root, unless it is one, and selects it. What is no folder is told on
    /// standard error; false if there was such.
    bool addFolders(const QStringList& folders);
    /// Opens files and folders from outside, by absolute paths: selects their folder, which becomes
    /// a root if it lies in none, and the files in it.
    void applicationOpenFiles(const QStringList& paths);
    /// A request to open files is about to come: the folder of the last run is not selected.
    void setIgnoreSelectLastFolder() { _ignoreSelectLastFolder = true; }
    /// Stops the queues, closes the connections and lets everything go, in this order. Once.
    void applicationWillTerminate();

    [[nodiscard]] PBMainWindowController& mainWindowController() { return *_mainWindowController; }
    /// What the scans of this run did; until quitting.
    [[nodiscard]] const ScanPipeline& scanPipeline() const { return *_scanPipeline; }
    /// No operation waits or runs on any queue.
    [[nodiscard]] bool isIdle() const;

    FMDatabase& mainFileDb() override { return _connections->mainFileDb(); }
    FMDatabase& mainThumbDb() override { return _connections->mainThumbDb(); }
    FMDatabase& scanFileDb() override { return _connections->scanFileDb(); }
    FMDatabase& preloadThumbDb() override { return _connections->preloadThumbDb(); }
    FMDatabase& buildThumbDb() override { return _connections->buildThumbDb(); }

    platform::OperationQueue& scanOperationQueue() override { return *_scanOperationQueue; }
    platform::OperationQueue& preloadThumbnailOperationQueue() override {
        return *_preloadThumbnailOperationQueue;
    }
    platform::OperationQueue& buildThumbOperationQueue() override {
        return *_buildThumbOperationQueue;
    }

    PBAliasManager& aliasManager() override { return _folderRoots->aliasManager(); }
    PBAliasResolver& aliasResolver() override { return _folderRoots->aliasResolver(); }
    PBFolderLister& folderLister() override { return _folderRoots->folderLister(); }
    PBPathHistory& pathHistory() override { return _folderRoots->pathHistory(); }
    void updateStartAccessURLs() override { _folderRoots->updateStartAccessURLs(); }
    void updateWatchPathsInBackground() override { _folderRoots->updateWatchPathsInBackground(); }

    PBGroupTreeDataSource& groupTreeDataSource() override {
        return _scanPipeline->groupTreeDataSource();
    }
    ScanFactory& scanFactory() override { return _scanPipeline->factory(); }
    BuildThumbNotifier& buildThumbNotifier() override {
        return _scanPipeline->buildThumbNotifier();
    }
    PBGeoManager& geoManager() override { return *_geoManager; }
    PBImageImporterManager& imageImporterManager() override {
        return _scanPipeline->imageImporterManager();
    }
    std::shared_ptr<PBOpenFiles> openFiles() const override { return _openFiles; }
    void setOpenFiles(std::shared_ptr<PBOpenFiles> openFiles) override {
        _openFiles = std::move(openFiles);
    }

    platform::UserDefaults& userDefaults() override { return _userDefaults; }
    std::mutex& insertFolderAliasLock() override { return _insertFolderAliasLock; }

    bool recurseSubFolder() const override { return _browsing.recurseSubFolder(); }
    void setRecurseSubFolder(bool recurse) override { _browsing.setRecurseSubFolder(recurse); }
    PBGroupTypeArray groupTypeArray() const override { return _browsing.groupTypeArray(); }
    void setGroupTypeArray(PBGroupTypeArray chain) override {
        _browsing.setGroupTypeArray(std::move(chain));
    }
    int sortType() const override { return _browsing.sortType(); }
    void setSortType(int sortType) override { _browsing.setSortType(sortType); }
    bool descendingSort() const override { return _browsing.descendingSort(); }
    void setDescendingSort(bool descending) override { _browsing.setDescendingSort(descending); }
    std::uint64_t filter() const override { return _browsing.filter(); }
    void setFilter(std::uint64_t filter) override { _browsing.setFilter(filter); }
    QString searchString() const override { return _browsing.searchString(); }
    void setSearchString(const QString& searchString) override {
        _browsing.setSearchString(searchString);
    }

    void scan() override { _scanControl->scan(); }
    void cancelScan() override { _scanControl->cancelScan(); }
    void scanFinished() override { _scanControl->scanFinished(); }
    bool isScanning() const override { return _scanControl && _scanControl->isScanning(); }

    bool isAppDidFinishLaunch() const override { return _isAppDidFinishLaunch; }
    bool isSlideShowMode() const override { return _isSlideShowMode; }
    void setIsSlideShowMode(bool isSlideShowMode) override { _isSlideShowMode = isSlideShowMode; }
    bool isLargeViewMode() const override { return false; }

    int thumbnailSize() const override;
    double backingScaleFactor() const override { return _backingScaleFactor; }
    QRectF screenRect() const override { return _screenRect; }
    double maxScreenSize() const override;

private:
    void createQueues();
    void createGeoManager();
    void connectFolderRoots();
    void createScans();
    void watchFolders();
    [[nodiscard]] ScanControl::Selection selection();
    [[nodiscard]] ScanBrowsing browsing() const;
    void noteScreen();

    platform::UserDefaults _userDefaults;
    BrowsingSettings _browsing;
    std::mutex _insertFolderAliasLock;
    std::unique_ptr<platform::OperationQueue> _scanOperationQueue;
    std::unique_ptr<platform::OperationQueue> _preloadThumbnailOperationQueue;
    std::unique_ptr<platform::OperationQueue> _buildThumbOperationQueue;
    std::optional<CatalogueConnections> _connections;
    std::optional<FolderRootServices> _folderRoots;
    std::shared_ptr<codec::DecoderPool> _decoderPool;
    std::unique_ptr<PBGeoManager> _geoManager;
    std::optional<ScanPipeline> _scanPipeline;
    std::optional<ScanControl> _scanControl;
    std::unique_ptr<PBMainWindowController> _mainWindowController;
    std::optional<WatchControl> _watchControl;
    std::shared_ptr<PBOpenFiles> _openFiles;
    QRectF _screenRect;
    double _backingScaleFactor = 1.0;
    bool _isAppDidFinishLaunch = false;
    bool _ignoreSelectLastFolder = false;
    bool _isSlideShowMode = false;
};
