#pragma once

#include "codec/PBImageImporterManager.h"
#include "core/PBAppDelegate.h"
#include "fileactions/marks/EditRunner.h"
#include "group/CatalogueFixture.h"
#include "group/PBGroupTreeDataSource.h"
#include "image/BuildThumbNotifier.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "library/LibrarySupport.h"
#include "library/PBAliasResolver.h"
#include "library/PBPathHistory.h"
#include "places/PBGeoManager.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainLoop.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/services/FileServices.h"
#include "shell/services/Preferences.h"
#include "shell/services/ShellServices.h"
#include "shell/services/ThumbnailCache.h"

/// Notes what it is told, and answers what the test says.
struct NotedDelegate final : PBAppDelegate {
    void scan() override { ++scans; }
    void cancelScan() override { ++cancels; }
    bool isScanning() const override { return scanning; }
    void regroupPlaces() override {}
    void updateWatchPathsInBackground() override { ++watchUpdates; }
    void setOpenFiles(std::shared_ptr<PBOpenFiles> files) override { requested = std::move(files); }
    std::shared_ptr<PBOpenFiles> openFiles() const override { return requested; }
    bool isAppDidFinishLaunch() const override { return launched; }
    bool isLargeViewMode() const override { return largeView(); }
    bool isSlideShowMode() const override { return false; }
    void setIsSlideShowMode(bool) override {}

    int scans = 0;
    int cancels = 0;
    int watchUpdates = 0;
    bool scanning = false;
    bool launched = true;
    std::function<bool()> largeView = [] { return false; };
    std::shared_ptr<PBOpenFiles> requested;
};

/// Keeps what it is asked to do; the test says what becomes of it.
struct NotedEdits final : fileactions::EditRunner {
    void run(fileactions::PhotographEdit edit, Done done) override {
        edits.push_back({std::move(edit), std::move(done)});
    }
    void didOther(const QString& text, fileactions::OtherWay back) override {
        undoName = text;
        other = std::move(back);
    }
    void countTags(Counted done) override { counted = std::move(done); }
    void undo() override { ++undone; }
    void redo() override { ++redone; }
    bool canUndo() const override { return !undoName.isEmpty(); }
    bool canRedo() const override { return !redoName.isEmpty(); }
    QString undoText() const override { return undoName; }
    QString redoText() const override { return redoName; }
    qint64 pendingCount() const override { return pending; }
    /// The last one, which has to be of this kind.
    template <typename Change>
    const Change& lastChange() const {
        return std::get<Change>(edits.back().first.change);
    }
    /// Ends the edit that was asked for last.
    void end(const fileactions::EditResult& result) {
        Q_EMIT result.isStored ? didEdit(result) : didFail(result);
        if (edits.back().second) edits.back().second(result);
    }

    std::vector<std::pair<fileactions::PhotographEdit, Done>> edits;
    Counted counted;
    int undone = 0;
    int redone = 0;
    QString undoName;
    fileactions::OtherWay other;
    QString redoName;
    qint64 pending = 0;
};

/// What the window stands on, without threads that scan or decode: catalogues in memory, queues
/// that do nothing, and a tree that the test publishes.
struct ShellFixture : LibraryTest {
    ShellFixture() {
        EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
        for (platform::OperationQueue* queue : {&scanQueue, &preloadQueue, &buildQueue})
            queue->setSuspended(true);
        platform::BoundedCalls::setPatience(50);
    }
    ShellServices shell() {
        return {
            .delegate = delegate,
            .browsing = browsing,
            .preferences = preferences,
            .userDefaults = defaults,
            .mainFileDb = db,
            .mainThumbDb = thumbnails,
            .preloadThumbDb = thumbnails,
            .scanOperationQueue = scanQueue,
            .preloadThumbnailOperationQueue = preloadQueue,
            .buildThumbOperationQueue = buildQueue,
            .aliasManager = manager,
            .aliasResolver = resolver,
            .folderLister = lister,
            .pathHistory = history,
            .insertFolderAliasLock = lock,
            .groupTreeDataSource = source,
            .buildThumbNotifier = notifier,
            .geoManager = places,
            .imageImporterManager = importers,
            .loadImageManager = loadImageManager,
            .imageBufferManager = imageBufferManager,
            .files = files,
            .thumbnailCache = thumbnailCache,
            .edits = edits};
    }
    /// The root's disk is pulled out or plugged in; nobody is told.
    void setAway(PBAliasObject& root, bool isAway) {
        using enum platform::Resolution::Outcome;
        answer(root, isAway ? VolumeAbsent : Found, root.reservePath());
        root.resolveWithMount({.includeMounted = true}, services);
        ASSERT_EQ(root.isMounted(), !isAway);
    }
    /// Runs what was put off to the loop until now.
    static void runPosted() {
        bool isOver = false;
        platform::MainLoop::instance()->performAfterDelay(
            &isOver, "", std::chrono::milliseconds(0), [&isOver] { isOver = true; });
        EXPECT_TRUE(support::spinUntil([&] { return isOver; }));
    }
    /// Photographs of one folder, as a scan brings them; in groups of another value, too.
    void publish(const PBImageFileList& items, int value = 1, int type = group::AllImages) {
        const auto work = std::make_shared<PBGroupItemArray>();
        source.setGroupItemArray_work(work);
        PBGroupItem& leaf = PBGroupItem::sortAddGroupItem(*work, nullptr, type, PBValue(value));
        for (const auto& item : items)
            leaf.sortAddImageFileItem(item, group::SortFileName, false);
        source.groupItemArrayDidFinish(group::makeGroupPublication(work));
    }

    platform::UserDefaults defaults{path(u"Velmora.conf")};
    BrowsingSettings browsing{defaults};
    Preferences preferences{defaults};
    std::function<void(bool isCleared)> clearing; ///< of the cache, asked for and not ended
    ThumbnailCache thumbnailCache{
        .byteCount = [this] { return thumbnailBytes; },
        .clear = [this](std::function<void(bool)> done) { clearing = std::move(done); }};
    qint64 thumbnailBytes = 3 << 20;
    NotedDelegate delegate;
    support::Database thumbnails;
    platform::BoundedCalls calls{[](std::function<void()> call) {
        platform::MainLoop::instance()->post(platform::MainLoop::Mode::Common, std::move(call));
    }};
    PBAliasResolver resolver{calls, nullptr};
    StoppableLister lister;
    PBPathHistory history;
    platform::Mutex lock;
    PBGroupTreeDataSource source;
    BuildThumbNotifier notifier;
    PBGeoManager places{nullptr, {.postToMainThread = [](const std::function<void()>&) {}}};
    PBImageImporterManager importers;
    PBLoadImageManager loadImageManager;
    PBImageBufferManager imageBufferManager{{.loadImageManager = loadImageManager}};
    std::vector<PBGroupItemChain> removedChains;
    FileServices files{
        .connect = [] { return nullptr; },
        .mountedRoots = [] { return marks::RootPaths(); },
        .rowsWillChange = [] {},
        .rowsDidChange = [](const std::vector<qint64>&) {},
        .removeFromWorkTree =
            [this](std::vector<PBGroupItemChain> chains) { removedChains = std::move(chains); },
        .journalPath = {}};
    NotedEdits edits;
    platform::OperationQueue scanQueue{u"scan"_s};
    platform::OperationQueue preloadQueue{u"preload"_s};
    platform::OperationQueue buildQueue{u"build"_s};
};
