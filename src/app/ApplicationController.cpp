#include "app/ApplicationController.h"

#include "image/codec/process/DecoderPool.h"
#include "info/geo/PBGeoManager.h"
#include "platform/MainLoop.h"
#include "platform/OfflineGeocoder.h"
#include "platform/Places.h"
#include "platform/StandardError.h"
#include "shell/FolderRootCommands.h"
#include "shell/OpenFilesCommands.h"
#include "shell/PBMainWindowController.h"
#include "shell/SourceSelection.h"
#include "shell/SourceSidebar.h"

#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>

using platform::OperationQueue;

ApplicationController::ApplicationController()
    : _userDefaults(platform::Places::settingsFile()), _browsing(_userDefaults) {
    setDefaultAppDelegate(this);
}

ApplicationController::~ApplicationController() {
    applicationWillTerminate();
    setDefaultAppDelegate(nullptr);
}

void ApplicationController::awakeFromNib() {
    createQueues();
    _connections.emplace();
    _folderRoots.emplace(
        FolderRootServices::Environment{mainFileDb(), buildThumbDb(), *_buildThumbOperationQueue});
    _folderRoots->loadAlias();
    _decoderPool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    codec::setFrameReader(_decoderPool);
    createGeoManager();
    createScans();
    _browsing.seedFavoriteChains(_geoManager->canUseGeocoder());
    _mainWindowController = std::make_unique<PBMainWindowController>(*this);
    _mainWindowController->setWorkFigures([this] {
        const BuildThumbServices& thumbnails = _scanPipeline->buildThumb();
        return WorkFigures{
            .isScanning = isScanning(),
            .scanned = _scanPipeline->figures().items,
            .thumbnailsFinished = thumbnails.finished,
            .thumbnailsPending = _buildThumbOperationQueue->operationCount()};
    });
    connectFolderRoots();
    watchFolders();
    noteScreen();
}

void ApplicationController::createScans() {
    _scanPipeline.emplace(ScanPipeline::Environment{
        .geoManager = *_geoManager,
        .scanFileDb = scanFileDb(),
        .buildThumbDb = buildThumbDb(),
        .scanQueue = *_scanOperationQueue,
        .buildQueue = *_buildThumbOperationQueue,
        .aliasManager = _folderRoots->aliasManager(),
        .insertFolderAliasLock = _insertFolderAliasLock,
        .isBeingWritten =
            [this](const QString& path) { return _folderRoots->scEvents().isBeingWritten(path); },
        .scanFinished = [this] { scanFinished(); },
    });
    _scanControl.emplace(ScanControl::Environment{
        .preload = *_preloadThumbnailOperationQueue,
        .scan = *_scanOperationQueue,
        .build = *_buildThumbOperationQueue,
        .pipeline = *_scanPipeline,
        .selection = [this] { return selection(); },
        .browsing = [this] { return browsing(); },
        .clearDisplay = [this] { _mainWindowController->clearBrowser(); },
        .stateChanged = [this] { _mainWindowController->scanStateDidChange(); },
    });
}

void ApplicationController::watchFolders() {
    SourceTreeController& tree = _mainWindowController->sourceSidebar().tree();
    _watchControl.emplace(WatchControl::Environment{
        .aliasManager = _folderRoots->aliasManager(),
        .sourceTree = tree.dataSource(),
        .pipeline = *_scanPipeline,
        .selectedPath =
            [&tree] {
                const auto folder = tree.selectedFolder();
                return folder ? folder->folderPath() : QString();
            },
        .browsing = [this] { return browsing(); },
        .rootsChanged =
            [this] {
                updateStartAccessURLs();
                updateWatchPathsInBackground();
            },
    });
    _folderRoots->scEvents().setDelegate(&*_watchControl);
    // Only now: the delegate is set before the first start.
    _folderRoots->updateWatchPathsInBackground();
}

ScanControl::Selection ApplicationController::selection() {
    const auto folder = _mainWindowController->sourceSidebar().tree().selectedFolder();
    if (!folder) return {};
    ScanControl::Selection selected;
    if (const auto* alias = dynamic_cast<const PBFolderAliasItem*>(folder.get())) {
        selected.root = alias->aliasObject();
    } else {
        selected.root = _folderRoots->aliasManager().appropriateAliasObjectForPath(
            folder->folderPath(), &selected.relativePath, false);
    }
    return selected;
}

ScanBrowsing ApplicationController::browsing() const {
    return {
        .groupTypeArray = groupTypeArray(),
        .sortType = sortType(),
        .descendingSort = descendingSort(),
        .filter = filter(),
        .searchString = searchString(),
        .recurseSubFolder = recurseSubFolder(),
        .thumbnailSize = thumbnailSize(),
        .openFiles = _openFiles,
    };
}

void ApplicationController::connectFolderRoots() {
    QMainWindow* window = &_mainWindowController->window();
    SourceSelection& selection = _mainWindowController->sourceSelection();
    QObject::connect(
        &*_folderRoots, &FolderRootServices::volumesDidMount, window,
        [&selection](const PBAliasArray& changed) { selection.volumesDidMount(changed); });
    QObject::connect(
        &*_folderRoots, &FolderRootServices::volumesDidUnmount, window,
        [&selection](const PBAliasArray& changed) { selection.volumesDidUnmount(changed); });
    QObject::connect(
        &*_folderRoots, &FolderRootServices::mountFailed, window,
        [&selection](const PBAliasObject& root, const QString& error) {
            selection.mountFailed(root, error);
        });
}

void ApplicationController::createQueues() {
    _scanOperationQueue = std::make_unique<OperationQueue>(QStringLiteral("scan"));
    _preloadThumbnailOperationQueue = std::make_unique<OperationQueue>(QStringLiteral("preload"));
    _buildThumbOperationQueue = std::make_unique<OperationQueue>(QStringLiteral("build"));
}

void ApplicationController::createGeoManager() {
    _geoManager = std::make_unique<PBGeoManager>(
        platform::OfflineGeocoder::installed(), [](std::function<void()> function) {
            platform::MainLoop::instance()->post(
                platform::MainLoop::Mode::Common, std::move(function));
        });
    _geoManager->loadAddressFromDb(mainFileDb());
}

void ApplicationController::noteScreen() {
    _backingScaleFactor = std::min(2.0, _mainWindowController->window().devicePixelRatioF());
    const QScreen* screen = QGuiApplication::primaryScreen();
    _screenRect = screen ? QRectF(screen->geometry()) : QRectF();
}

void ApplicationController::applicationDidFinishLaunching() {
    _mainWindowController->showWindow();
    if (!_ignoreSelectLastFolder) _mainWindowController->sourceSelection().doSelectLastFolder();
    _mainWindowController->updateImageBrowserTipView();
    _isAppDidFinishLaunch = true;
    // Behind the window, which is painted first.
    platform::MainLoop::instance()->performAfterDelay(
        this, "startDecoders", std::chrono::milliseconds(0), [this] { _decoderPool->start(); });
}

bool ApplicationController::addFolders(const QStringList& folders) {
    bool allAdded = true;
    for (const QString& folder : folders) {
        if (_mainWindowController->folderRootCommands().addOrSelectFolder(folder)) continue;
        platform::complain(QStringLiteral("%1 is no folder that can be added").arg(folder));
        allAdded = false;
    }
    return allAdded;
}

void ApplicationController::applicationOpenFiles(const QStringList& paths) {
    _mainWindowController->openFilesCommands().openFiles(paths);
}

void ApplicationController::applicationWillTerminate() {
    // The queues stop before any connection closes: that keeps a running operation from a closed
    // one.
    for (auto* queue :
         {&_preloadThumbnailOperationQueue, &_scanOperationQueue, &_buildThumbOperationQueue}) {
        if (!*queue) continue;
        (*queue)->setSuspended(false);
        (*queue)->cancelAllOperations();
        (*queue)->waitUntilAllOperationsAreFinished();
    }
    if (_folderRoots) _folderRoots->stopWatching();
    if (_geoManager) _geoManager->cancelReverseGeocoding();
    if (_connections) _connections->close();
    if (auto* loop = platform::MainLoop::instance()) {
        loop->cancelPreviousPerformRequestsWithTarget(this);
    }
    _watchControl.reset();
    _mainWindowController.reset();
    _scanControl.reset();
    _scanPipeline.reset();
    _folderRoots.reset();
    _geoManager.reset();
    codec::setFrameReader(nullptr);
    _decoderPool.reset();
    _connections.reset();
    _preloadThumbnailOperationQueue.reset();
    _scanOperationQueue.reset();
    _buildThumbOperationQueue.reset();
}

bool ApplicationController::isIdle() const {
    const auto isEmpty = [](const auto& queue) { return !queue || queue->operationCount() == 0; };
    const bool isWaitingForDisks = _folderRoots && _folderRoots->isBusy();
    const bool isLookingUpPlaces = _geoManager && _geoManager->hasPendingRequests();
    return !isScanning() && !isWaitingForDisks && !isLookingUpPlaces &&
           isEmpty(_preloadThumbnailOperationQueue) && isEmpty(_scanOperationQueue) &&
           isEmpty(_buildThumbOperationQueue);
}

int ApplicationController::thumbnailSize() const {
    const bool dense =
        _mainWindowController && _mainWindowController->window().devicePixelRatioF() > 1.0;
    return dense ? 512 : 256;
}

double ApplicationController::maxScreenSize() const {
    return std::max(_screenRect.width(), _screenRect.height());
}
