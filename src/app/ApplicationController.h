#pragma once

#include "app/CatalogueConnections.h"
#include "app/CatalogueHealth.h"
#include "app/EarlyStart.h"
#include "app/FolderRootServices.h"
#include "app/MarksServices.h"
#include "app/OpenedPaths.h"
#include "app/ScanControl.h"
#include "app/ScanPipeline.h"
#include "app/ThumbnailCaching.h"
#include "app/ThumbnailCleaner.h"
#include "app/WatchControl.h"
#include "app/WindowColours.h"
#include "core/PBAppDelegate.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/services/FileServices.h"
#include "shell/services/Preferences.h"
#include "shell/services/ShellServices.h"
#include "shell/services/ThumbnailCache.h"

#include <memory>
#include <optional>
#include <span>

class PBGeoManager;
class PBImageBufferManager;
class PBLoadImageManager;
class PBMainWindowController;

namespace codec {
class DecoderPool;
}

/// The one root object of the process: builds everything at start, and ends it in a fixed order.
/// What it answers, its parts do. Main thread.
class ApplicationController final : public PBAppDelegate {
public:
    ApplicationController() : ApplicationController(EarlyStart{}) {}
    /// What has begun already; whatever is missing is made at the start.
    explicit ApplicationController(EarlyStart early);
    ~ApplicationController() override;

    /// Start-up up to the loaded window; called once, before the loop runs.
    void awakeFromNib();
    /// Shows the window and restores the last selection.
    void applicationDidFinishLaunching();
    /// Makes each a folder root, unless it is one, and selects it. What is no folder is told on
    /// standard error; false if there was such.
    bool addFolders(const QStringList& folders);
    /// The one entrance for files and folders from outside, by absolute paths that
    /// `openablePaths` let through: for the command line, for what `SingleInstance` was handed by
    /// later starts, and for whoever else of the desktop asks. Photographs are shown large, a
    /// folder in the browser. Before the window is shown, `setIgnoreSelectLastFolder` goes first;
    /// later, whoever calls brings the window to the front, and has `tellUnopened` say what of the
    /// request was left out.
    void applicationOpenFiles(const QStringList& paths);
    /// Tells in the window what of such a request can't be opened.
    void tellUnopened(std::span<const UnopenedPath> unopened);
    /// A request to open files is about to come: the folder of the last run is not selected.
    void setIgnoreSelectLastFolder() { _ignoreSelectLastFolder = true; }
    /// What ends the program and starts it again; before the start.
    void setRestart(std::function<void()> restart) { _restart = std::move(restart); }
    /// Stops the queues, closes the connections and lets everything go, in this order. Once.
    void applicationWillTerminate();

    [[nodiscard]] PBMainWindowController& mainWindowController() { return *_mainWindowController; }
    /// What the scans of this run did; until quitting.
    [[nodiscard]] const ScanPipeline& scanPipeline() const { return *_scanPipeline; }
    /// No operation waits or runs on any queue.
    [[nodiscard]] bool isIdle() const;

    /// What the main window is built on; until quitting.
    [[nodiscard]] ShellServices shellServices();

    /// The marks of photographs; until quitting.
    [[nodiscard]] MarksServices& marks() { return *_marks; }
    [[nodiscard]] BrowsingSettings& browsing() { return _browsing; }
    /// Also before the start.
    [[nodiscard]] Preferences& preferences() { return _preferences; }
    [[nodiscard]] PBAliasManager& aliasManager() { return _folderRoots->aliasManager(); }
    [[nodiscard]] SCEvents& scEvents() { return _folderRoots->scEvents(); }
    [[nodiscard]] std::shared_ptr<PBOpenFiles> openFiles() const override { return _openFiles; }

    void scan() override { _scanControl->scan(); }
    void cancelScan() override { _scanControl->cancelScan(); }
    [[nodiscard]] bool isScanning() const override {
        return _scanControl && _scanControl->isScanning();
    }
    void regroupPlaces() override { _scanPipeline->regroupPlaces(scanBrowsing()); }
    void updateWatchPathsInBackground() override { _folderRoots->updateWatchPathsInBackground(); }
    void setOpenFiles(std::shared_ptr<PBOpenFiles> openFiles) override {
        _openFiles = std::move(openFiles);
    }
    [[nodiscard]] bool isAppDidFinishLaunch() const override { return _isAppDidFinishLaunch; }
    [[nodiscard]] bool isLargeViewMode() const override;
    [[nodiscard]] bool isSlideShowMode() const override { return _isSlideShowMode; }
    void setIsSlideShowMode(bool isSlideShowMode) override { _isSlideShowMode = isSlideShowMode; }

    /// Pixels of the longer side of a stored thumbnail: 512 on a window of more than one device
    /// pixel a point, else 256.
    [[nodiscard]] int thumbnailSize() const;
    /// Device pixels a point of the main window at start, at most 2.
    [[nodiscard]] double backingScaleFactor() const { return _backingScaleFactor; }
    /// The longer side of the main screen at start, in points; 0 without one.
    [[nodiscard]] double maxScreenSize() const { return _maxScreenSize; }

private:
    void createQueues();
    void openCatalogue();
    void createGeoManager();
    void connectFolderRoots();
    void createScans();
    /// On standard error and in the window. Any thread.
    void tellOfMarks(const QString& sentence);
    void lookThroughCatalogueLater(std::int64_t timesToPutOff);
    void watchFolders();
    /// What commands on files need of the rest.
    void makeFileServices();
    /// Has work done on the present work tree.
    void
    attach(const std::function<std::shared_ptr<PBScanAttachOperation>(PBScanDictionaryRef)>& make);
    [[nodiscard]] ScanControl::Selection selection();
    [[nodiscard]] ScanBrowsing scanBrowsing() const;
    void noteScreen();

    EarlyStart _early;
    platform::UserDefaults _userDefaults;
    BrowsingSettings _browsing;
    Preferences _preferences;
    platform::Mutex _insertFolderAliasLock; ///< of rows of the catalogue that tell of roots
    std::unique_ptr<platform::OperationQueue> _scanOperationQueue;
    std::unique_ptr<platform::OperationQueue> _preloadThumbnailOperationQueue;
    std::unique_ptr<platform::OperationQueue> _buildThumbOperationQueue;
    std::optional<CatalogueHealth> _health;
    std::optional<CatalogueConnections> _connections;
    std::optional<FolderRootServices> _folderRoots;
    std::unique_ptr<PBLoadImageManager> _loadImageManager;
    std::unique_ptr<PBImageBufferManager> _imageBufferManager;
    std::unique_ptr<PBGeoManager> _geoManager;
    std::optional<MarksServices> _marks;
    std::optional<ThumbnailCleaner> _thumbnailCleaner;
    std::optional<ScanPipeline> _scanPipeline;
    std::optional<ScanControl> _scanControl;
    FileServices _fileServices;
    ThumbnailCache _thumbnailCache;
    std::unique_ptr<PBMainWindowController> _mainWindowController;
    std::optional<WindowColours> _windowColours;
    std::optional<WatchControl> _watchControl;
    std::shared_ptr<PBOpenFiles> _openFiles;
    double _maxScreenSize = 0.0;
    double _backingScaleFactor = 1.0;
    std::function<void()> _restart;
    bool _isAppDidFinishLaunch = false;
    bool _ignoreSelectLastFolder = false;
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    bool _isSlideShowMode = false;
};
