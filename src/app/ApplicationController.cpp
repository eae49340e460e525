#include "app/ApplicationController.h"

#include "FMDB/FMDatabase.h"
#include "codec/process/DecoderPool.h"
#include "core/OpenFilesRequest.h"
#include "group/GroupPresets.h"
#include "group/GroupTypes.h"
#include "image/large/EarlyPhotograph.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "places/OfflineGeocoder.h"
#include "places/PBGeoManager.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/StandardError.h"
#include "platform/program/StandardFolders.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "scan/AttachedOperations.h"
#include "scan/MovedPhotographsOperation.h"
#include "shell/PBMainWindowController.h"
#include "shell/commands/OpenFilesCommands.h"
#include "shell/panes/NoticeBar.h"
#include "shell/session/WindowSession.h"
#include "shell/sidebar/FolderRootCommands.h"
#include "shell/sidebar/SourceSelection.h"
#include "shell/sidebar/SourceSidebar.h"

#include <QFile>
#include <QGuiApplication>
#include <QMainWindow>
#include <QScreen>

using namespace std::chrono_literals;
using platform::OperationQueue;

namespace {

/// The first photographs and their thumbnails come before the look through the catalogue.
constexpr std::chrono::milliseconds quietAfterStart{1500};
constexpr std::chrono::minutes longestScanToWaitFor{1};
constexpr std::chrono::milliseconds longestWaitForPlaces{500};
/// It is decoded by the one process that has come up for it.
constexpr std::chrono::milliseconds quietForPhotograph{250};

} // namespace

ApplicationController::ApplicationController(EarlyStart early)
    : _early(std::move(early)), _userDefaults(platform::StandardFolders::settingsFile()),
      _browsing(_userDefaults), _preferences(_userDefaults) {
    platform::assertMainThread();
}

ApplicationController::~ApplicationController() {
    applicationWillTerminate();
}

void ApplicationController::awakeFromNib() {
    platform::assertMainThread();
    createQueues();
    openCatalogue();
    _folderRoots.emplace(FolderRootServices::Environment{
        .mainFileDb = _connections->mainFileDb(),
        .scanFileDb = _connections->scanFileDb(),
        .scanOperationQueue = *_scanOperationQueue,
        .watchLimitReached = [this](const QString& limit) { _health->watchLimitReached(limit); }});
    _folderRoots->loadAlias();
    if (!_early.decoders()) _early.makeDecoders({});
    createGeoManager();
    createScans();
    _loadImageManager = std::make_unique<PBLoadImageManager>();
    _imageBufferManager = std::make_unique<PBImageBufferManager>(
        PBImageBufferManager::Environment{.loadImageManager = *_loadImageManager});
    makeFileServices();
    _thumbnailCache = makeThumbnailCache(
        {.buildThumbDb = _connections->buildThumbDb(),
         .buildQueue = *_buildThumbOperationQueue,
         .buildAnew = [this] { scan(); }});
    group::GroupPresets(_userDefaults).seedIfAbsent(_geoManager->canUseGeocoder());
    _mainWindowController = std::make_unique<PBMainWindowController>(shellServices());
    _mainWindowController->setWorkFigures([this] {
        const BuildThumbServices& thumbnails = _scanPipeline->buildThumb();
        return WorkFigures{
            .isScanning = isScanning(),
            .scanned = _scanPipeline->figures().items,
            .thumbnailsFinished = thumbnails.finished,
            .thumbnailsPending = _buildThumbOperationQueue->keyCount(),
            .editing = static_cast<quint64>(_marks->edits().pendingCount())};
    });
    connectFolderRoots();
    watchFolders();
    noteScreen();
}

void ApplicationController::openCatalogue() {
    // What is told is told when the loop runs: then there is a window.
    _health.emplace(CatalogueHealth::Environment{
        .folder = platform::StandardFolders::dataFolder(),
        .tell = [this](const Notice& notice) { _mainWindowController->noticeBar().tell(notice); },
        .withdraw =
            [this](const QString& key) { _mainWindowController->noticeBar().withdraw(key); },
        .tryAgain = [this] { scan(); },
        .restart =
            [this] {
                if (_restart) _restart();
            }});
    _connections.emplace([this](FMDatabase& connection) { _health->observe(connection); });
}

void ApplicationController::tellOfMarks(const QString& sentence) {
    platform::complain(sentence);
    // Shown when the loop runs: then there is a window.
    platform::MainLoop* loop = platform::MainLoop::instance();
    if (!loop) return;
    loop->post(
        platform::MainLoop::Mode::Common,
        [this, alive = std::weak_ptr(_alive), details = sentence + u'.'] {
            if (alive.expired() || !_mainWindowController) return;
            _mainWindowController->noticeBar().tell(
                {.key = QStringLiteral("marks"),
                 .text = platform::localizedString(u"NoticeLedger"),
                 .details = details.left(1).toUpper() + details.mid(1),
                 .action = {},
                 .perform = {}});
        });
}

void ApplicationController::createScans() {
    _marks.emplace(MarksServices::Environment{
        .filesPath = _connections->mainFileDb().databasePath(),
        .aliasManager = _folderRoots->aliasManager(),
        .tell = [this](const QString& sentence) { tellOfMarks(sentence); },
        .observe = [this](FMDatabase& connection) { _health->observeMarks(connection); }});
    _scanPipeline.emplace(ScanPipeline::Environment{
        .geoManager = *_geoManager,
        .scanFileDb = _connections->scanFileDb(),
        .buildThumbDb = _connections->buildThumbDb(),
        .scanQueue = *_scanOperationQueue,
        .buildQueue = *_buildThumbOperationQueue,
        .aliasManager = _folderRoots->aliasManager(),
        .insertFolderAliasLock = _insertFolderAliasLock,
        .marks = &_marks->restorer(),
        .isBeingWritten =
            [this](const QString& path) { return _folderRoots->scEvents().isBeingWritten(path); },
        .leftOutForItsName =
            [this](const QString& folder, const QString& name) {
                _health->fileLeftOut(folder, name);
            },
        .scanFinished = [this] { _scanControl->scanFinished(); },
    });
    _marks->setPipeline(*_scanPipeline, [this] { return scanBrowsing(); });
    _marks->setTagsDidChange([this] {
        const PBGroupTypeArray chain = _browsing.groupTypeArray();
        if (std::ranges::find(*chain, group::Tags) != chain->end()) scan();
    });
    _thumbnailCleaner.emplace(ThumbnailCleaner::Environment{
        .filesPath = _connections->mainFileDb().databasePath(),
        .buildThumbDb = _connections->buildThumbDb(),
        .buildQueue = *_buildThumbOperationQueue,
        .isIdle = [this] { return isIdle(); }});
    _scanControl.emplace(ScanControl::Environment{
        .preload = *_preloadThumbnailOperationQueue,
        .scan = *_scanOperationQueue,
        .build = *_buildThumbOperationQueue,
        .pipeline = *_scanPipeline,
        .selection = [this] { return selection(); },
        .browsing = [this] { return scanBrowsing(); },
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
        .browsing = [this] { return scanBrowsing(); },
        .rootsChanged =
            [this](bool isSelectionMoved) {
                // All paths are others, and what happened before they were watched went unseen.
                _folderRoots->updateWatchPathsInBackground(
                    isSelectionMoved
                        ? [this] { _mainWindowController->sourceSelection().showSelected(); }
                        : std::function<void()>());
            },
        .lookForRoots = [this](const QStringList& paths) { _folderRoots->lookForRootsAt(paths); },
    });
    const auto volumesChanged = [this] {
        if (_watchControl) _watchControl->volumesChanged();
    };
    QMainWindow* window = &_mainWindowController->window();
    QObject::connect(&*_folderRoots, &FolderRootServices::volumesDidMount, window, volumesChanged);
    QObject::connect(
        &*_folderRoots, &FolderRootServices::volumesDidUnmount, window, volumesChanged);
    _folderRoots->scEvents().setDelegate(&*_watchControl);
    // Only now: the delegate is set before the first start.
    _folderRoots->updateWatchPathsInBackground();
}

ShellServices ApplicationController::shellServices() {
    return {
        .delegate = *this,
        .browsing = _browsing,
        .preferences = _preferences,
        .userDefaults = _userDefaults,
        .mainFileDb = _connections->mainFileDb(),
        .mainThumbDb = _connections->mainThumbDb(),
        .preloadThumbDb = _connections->preloadThumbDb(),
        .scanOperationQueue = *_scanOperationQueue,
        .preloadThumbnailOperationQueue = *_preloadThumbnailOperationQueue,
        .buildThumbOperationQueue = *_buildThumbOperationQueue,
        .aliasManager = _folderRoots->aliasManager(),
        .aliasResolver = _folderRoots->aliasResolver(),
        .folderLister = _folderRoots->folderLister(),
        .pathHistory = _folderRoots->pathHistory(),
        .insertFolderAliasLock = _insertFolderAliasLock,
        .groupTreeDataSource = _scanPipeline->groupTreeDataSource(),
        .buildThumbNotifier = _scanPipeline->buildThumbNotifier(),
        .geoManager = *_geoManager,
        .imageImporterManager = _scanPipeline->imageImporterManager(),
        .loadImageManager = *_loadImageManager,
        .imageBufferManager = *_imageBufferManager,
        .files = _fileServices,
        .thumbnailCache = _thumbnailCache,
        .edits = _marks->edits(),
    };
}

void ApplicationController::attach(
    const std::function<std::shared_ptr<PBScanAttachOperation>(PBScanDictionaryRef)>& make) {
    const auto& work = _scanPipeline->groupTreeDataSource().groupItemArray_work();
    if (!work) return;
    const ScanFactory& factory = _scanPipeline->factory();
    factory.attach(make(factory.makeDictionary(nullptr, {}, work, scanBrowsing())));
}

void ApplicationController::makeFileServices() {
    const QString journal =
        platform::pathInFolder(platform::StandardFolders::dataFolder(), u"unfinished-files");
    _fileServices = {
        .connect = [this] { return _marks->connect(); },
        .mountedRoots = [this] { return _marks->roots(); },
        .rowsWillChange = [this] { _scanPipeline->factory().rowsWillChange(); },
        .rowsDidChange =
            [this](std::vector<qint64> fileIds) {
                _marks->ledgerDidChange();
                attach([fileIds = std::move(fileIds)](PBScanDictionaryRef dictionary) {
                    return std::make_shared<MovedPhotographsOperation>(dictionary, fileIds);
                });
            },
        .removeFromWorkTree =
            [this](std::vector<PBGroupItemChain> chains) {
                attach([chains = std::move(chains)](PBScanDictionaryRef dictionary) {
                    return std::make_shared<PBRemoveFileItemOperation>(dictionary, chains);
                });
            },
        .journalPath = QFile::encodeName(journal)};
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

ScanBrowsing ApplicationController::scanBrowsing() const {
    return {
        .groupTypeArray = _browsing.groupTypeArray(),
        .sortType = _browsing.sortType(),
        .descendingSort = _browsing.descendingSort(),
        .filter = _browsing.filter(),
        .searchString = _browsing.searchString(),
        // Of files, their own folders were asked for.
        .recurseSubFolder =
            _browsing.recurseSubFolder() && (!_openFiles || asksForWholeFolder(*_openFiles)),
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
    FolderRootCommands& commands = _mainWindowController->folderRootCommands();
    QObject::connect(
        &*_folderRoots, &FolderRootServices::rootsCameBack, window,
        [&commands](const PBAliasObject* askedFor) { commands.rootsCameBack(askedFor); });
    QObject::connect(&*_folderRoots, &FolderRootServices::rootsWereRemoved, window, [this] {
        _marks->restorer().rootsWereRemoved();
        _thumbnailCleaner->wake();
    });
    QObject::connect(
        &*_folderRoots, &FolderRootServices::rootIsGone, window, [this](const PBAliasObject& root) {
            _mainWindowController->noticeBar().tell(
                {.key = QStringLiteral("gone ") + root.reservePath(),
                 .text = platform::localizedFormat(u"NoticeRootGone", {root.displayName()}),
                 .details =
                     platform::localizedFormat(u"NoticeRootGoneDetails", {root.reservePath()}),
                 .action = {},
                 .perform = {}});
        });
}

void ApplicationController::createQueues() {
    _scanOperationQueue = std::make_unique<OperationQueue>(QStringLiteral("scan"));
    _preloadThumbnailOperationQueue = std::make_unique<OperationQueue>(QStringLiteral("preload"));
    _buildThumbOperationQueue = std::make_unique<OperationQueue>(QStringLiteral("build"));
}

void ApplicationController::createGeoManager() {
    _geoManager = std::make_unique<PBGeoManager>(
        places::OfflineGeocoder::installed(),
        PBGeoManager::Environment{
            .postToMainThread =
                [](std::function<void()> function) {
                    platform::MainLoop::instance()->post(
                        platform::MainLoop::Mode::Common, std::move(function));
                },
            .connect =
                [path = _connections->mainFileDb().databasePath()] {
                    auto connection = FMDatabase::databaseWithPath(path);
                    // The next try comes soon, and nothing on the way out may wait for long.
                    connection->setLongestWait(longestWaitForPlaces);
                    connection->setShouldCacheStatements(true);
                    connection->open();
                    return connection;
                }});
    _geoManager->loadAddressFromDb(_connections->mainFileDb());
}

void ApplicationController::noteScreen() {
    _backingScaleFactor = std::min(2.0, _mainWindowController->window().devicePixelRatioF());
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize size = screen ? screen->size() : QSize(0, 0);
    _maxScreenSize = std::max(size.width(), size.height());
    _loadImageManager->setScreen(
        {.maxScreenSize = _maxScreenSize,
         .backingScaleFactor = _mainWindowController->window().devicePixelRatioF(),
         .colorSpace = {}});
}

void ApplicationController::applicationDidFinishLaunching() {
    _mainWindowController->showWindow();
    _windowColours.emplace(_mainWindowController->window(), *_loadImageManager);
    if (!_ignoreSelectLastFolder) _mainWindowController->sourceSelection().doSelectLastFolder();
    _mainWindowController->updateImageBrowserTipView();
    _isAppDidFinishLaunch = true;
    // Behind the window, which is painted first, and a photograph that somebody waits for.
    platform::MainLoop::instance()->performAfterDelay(
        this, "startDecoders", _early.isOfPhotograph() ? quietForPhotograph : 0ms,
        [this] { _early.decoders()->start(); });
    _mainWindowController->session().expect();
    platform::MainLoop::instance()->performAfterDelay(
        this, "beginSession", std::chrono::milliseconds(0), [this] {
            const QString file =
                platform::pathInFolder(platform::StandardFolders::dataFolder(), u"session.json");
            _mainWindowController->session().begin(file, !_ignoreSelectLastFolder);
        });
    lookThroughCatalogueLater(longestScanToWaitFor / quietAfterStart);
}

void ApplicationController::lookThroughCatalogueLater(std::int64_t timesToPutOff) {
    platform::MainLoop::instance()->performAfterDelay(
        this, "lookThroughCatalogue", quietAfterStart, [this, timesToPutOff] {
            // A scan of many photographs needs all cores, and reads the same file.
            if (timesToPutOff > 0 && _scanOperationQueue->operationCount() > 0)
                return lookThroughCatalogueLater(timesToPutOff - 1);
            _health->startLooking();
            _thumbnailCleaner->wake();
        });
}

bool ApplicationController::addFolders(const QStringList& folders) {
    platform::assertMainThread();
    bool allAdded = true;
    for (const QString& folder : folders) {
        if (_mainWindowController->folderRootCommands().addOrSelectFolder(folder)) continue;
        platform::complain(QStringLiteral("%1 is no folder that can be added").arg(folder));
        allAdded = false;
    }
    return allAdded;
}

void ApplicationController::applicationOpenFiles(const QStringList& paths) {
    platform::assertMainThread();
    if (!paths.isEmpty()) _mainWindowController->session().drop();
    _mainWindowController->openFilesCommands().openFiles(paths);
}

void ApplicationController::tellUnopened(std::span<const UnopenedPath> unopened) {
    platform::assertMainThread();
    constexpr std::size_t mostTold = 3;
    const QString key = QStringLiteral("unopened");
    NoticeBar& bar = _mainWindowController->noticeBar();
    bar.withdraw(key); // of the former request
    if (unopened.empty()) return;
    QStringList told;
    for (const UnopenedPath& each : unopened.first(std::min(mostTold, unopened.size())))
        told += localizedSentenceOf(each);
    if (unopened.size() > mostTold) told += QStringLiteral("…");
    bar.tell(
        {.key = key,
         .text = platform::localizedString(u"NoticeUnopened"),
         .details = told.join(u' '),
         .action = {},
         .perform = {}});
}

void ApplicationController::applicationWillTerminate() {
    platform::assertMainThread();
    _thumbnailCleaner.reset();
    _thumbnailCache = {};
    if (_mainWindowController) {
        _mainWindowController->session().finish();
        _mainWindowController->stopFileCommands();
    }
    // The queues stop before any connection closes: that keeps a running operation from a closed
    // one.
    for (auto* queue :
         {&_preloadThumbnailOperationQueue, &_scanOperationQueue, &_buildThumbOperationQueue}) {
        if (!*queue) continue;
        (*queue)->setSuspended(false);
        (*queue)->cancelAllOperations();
        (*queue)->waitUntilAllOperationsAreFinished();
    }
    if (_loadImageManager) _loadImageManager->finish();
    if (_folderRoots) _folderRoots->stopWatching();
    if (_marks) _marks->finish();
    if (_folderRoots) _folderRoots->removeOpenedRoots();
    if (_geoManager) _geoManager->finish();
    if (_health) _health->stopLooking();
    if (_connections) _connections->close();
    if (_health) _health->endedWell();
    if (auto* loop = platform::MainLoop::instance()) {
        loop->cancelPreviousPerformRequestsWithTarget(this);
    }
    _watchControl.reset();
    _windowColours.reset();
    _mainWindowController.reset();
    _scanControl.reset();
    _imageBufferManager.reset();
    _loadImageManager.reset();
    _scanPipeline.reset();
    _marks.reset();
    _folderRoots.reset();
    _geoManager.reset();
    EarlyPhotograph::shared().finish();
    // Strangers' files are read in processes of their own or not at all.
    codec::setFrameReader(codec::noReader());
    _early.forgetDecoders();
    _connections.reset();
    _health.reset();
    _preloadThumbnailOperationQueue.reset();
    _scanOperationQueue.reset();
    _buildThumbOperationQueue.reset();
}

bool ApplicationController::isIdle() const {
    const auto isEmpty = [](const auto& queue) { return !queue || queue->operationCount() == 0; };
    const bool isWaitingForDisks = _folderRoots && _folderRoots->isBusy();
    const bool isLookingUpPlaces = _geoManager && _geoManager->hasPendingRequests();
    const bool isReadingMarked = _marks && !_marks->isIdle();
    const bool isShowing = _scanPipeline && _scanPipeline->isShowPending();
    const bool isLoadingImages = _loadImageManager && _loadImageManager->operationCount() != 0;
    const bool isCopying = _mainWindowController && _mainWindowController->isWorkingOnFiles();
    return !isCopying && !isScanning() && !isShowing && !isLoadingImages && !isReadingMarked &&
           !isWaitingForDisks && !isLookingUpPlaces && isEmpty(_preloadThumbnailOperationQueue) &&
           isEmpty(_scanOperationQueue) && isEmpty(_buildThumbOperationQueue);
}

bool ApplicationController::isLargeViewMode() const {
    return _mainWindowController && _mainWindowController->isLargeView();
}

int ApplicationController::thumbnailSize() const {
    const bool dense =
        _mainWindowController && _mainWindowController->window().devicePixelRatioF() > 1.0;
    return dense ? 512 : 256;
}
