#pragma once

#include "codec/PBImageImporterManager.h"
#include "core/PBAppDelegate.h"
#include "group/ItemOrder.h"
#include "group/PBGroupTreeDataSource.h"
#include "image/BuildThumbNotifier.h"
#include "library/LibrarySupport.h"
#include "library/PBAliasResolver.h"
#include "library/PBPathHistory.h"
#include "places/PBGeoManager.h"
#include "platform/program/UserDefaults.h"
#include "platform/work/BoundedCalls.h"
#include "platform/work/MainLoop.h"
#include "platform/work/Mutex.h"
#include "platform/work/OperationQueue.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/services/ShellServices.h"

/// Notes what it is told, and answers what the test says.
struct NotedDelegate final : PBAppDelegate {
    void scan() override { ++scans; }
    void cancelScan() override { ++cancels; }
    bool isScanning() const override { return scanning; }
    void updateWatchPathsInBackground() override { ++watchUpdates; }
    void setOpenFiles(std::shared_ptr<PBOpenFiles> files) override { openFiles = std::move(files); }
    bool isAppDidFinishLaunch() const override { return launched; }
    bool isLargeViewMode() const override { return largeView; }

    int scans = 0;
    int cancels = 0;
    int watchUpdates = 0;
    bool scanning = false;
    bool launched = true;
    bool largeView = false;
    std::shared_ptr<PBOpenFiles> openFiles;
};

/// Finds roots where they were, unless the test says that their disks are away.
struct DisksOfTheTest final : PBAliasServices {
    platform::Resolution resolveAlias(const PBAliasObject& root, bool, QString* error) override {
        using Outcome = platform::Resolution::Outcome;
        if (!away.contains(root.reservePath())) return {Outcome::Found, root.reservePath()};
        if (error) *error = u"no disk"_s;
        return {Outcome::VolumeAbsent, {}};
    }
    bool storeReservePath(qint64, const QString&) override { return true; }

    QStringList away;
};

/// What the window stands on, without threads that scan or decode: catalogues in memory, queues
/// that do nothing, and a tree that the test publishes.
struct ShellFixture : testing::Test {
    ShellFixture() {
        EXPECT_TRUE(db.open());
        EXPECT_TRUE(PBCatalogue(db).checkTables_FilesDb());
        EXPECT_TRUE(thumbnails.open());
        EXPECT_TRUE(PBCatalogue(thumbnails).checkTables_Thumbnail());
        for (platform::OperationQueue* queue : {&scanQueue, &preloadQueue, &buildQueue})
            queue->setSuspended(true);
        platform::BoundedCalls::setPatience(50);
    }
    ShellServices shell() {
        return {
            .delegate = delegate,
            .browsing = browsing,
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
            .imageImporterManager = importers};
    }
    QString make(QStringView below) {
        QDir().mkpath(path(below));
        return path(below);
    }
    QString path(QStringView below) const { return folder.filePath(below.toString()); }
    /// A root in catalogue and manager, mounted.
    std::shared_ptr<PBAliasObject> addRoot(const QString& path) {
        const auto id = PBCatalogue(db).insertFolderAliasWithData(path.toUtf8(), 0, path, 0);
        const auto root = PBAliasObject::aliasObjectWithId(
            id, path.toUtf8(), QUrl::fromLocalFile(path), path, 0, PBAliasObject::Local);
        manager.addAliasObject(root);
        return root;
    }
    /// The root's disk is pulled out or plugged in; nobody is told.
    void setAway(PBAliasObject& root, bool isAway) {
        disks.away.removeAll(root.reservePath());
        if (isAway) disks.away.append(root.reservePath());
        root.resolveWithMount({.includeMounted = true}, disks);
        ASSERT_EQ(root.isMounted(), !isAway);
    }
    /// The catalogue takes no more of these for roots.
    void refuse(const QString& change) {
        const QString sql = u"create trigger no_%1 before %1 on FolderAlias begin "
                            "select raise(abort, 'no'); end"_s;
        EXPECT_TRUE(db.executeUpdate(sql.arg(change)));
    }
    /// Runs what was put off to the loop until now.
    static void runPosted() {
        bool isOver = false;
        platform::MainLoop::instance()->performAfterDelay(
            &isOver, "", std::chrono::milliseconds(0), [&isOver] { isOver = true; });
        EXPECT_TRUE(support::spinUntil([&] { return isOver; }));
    }
    /// Photographs of one folder, as a scan brings them.
    void publish(const PBImageFileList& items) {
        const auto work = std::make_shared<PBGroupItemArray>();
        source.setGroupItemArray_work(work);
        PBGroupItem& leaf =
            PBGroupItem::sortAddGroupItem(*work, nullptr, group::AllImages, PBValue(1));
        for (const auto& item : items)
            leaf.sortAddImageFileItem(item, group::SortFileName, false);
        source.groupItemArrayDidFinish(group::makeGroupPublication(work));
    }

    QTemporaryDir folder;
    FMDatabase db{QString()};
    DisksOfTheTest disks;
    PBAliasManager manager{{db, disks, {}}};
    platform::UserDefaults defaults{folder.filePath(u"Velmora.conf"_s)};
    BrowsingSettings browsing{defaults};
    NotedDelegate delegate;
    FMDatabase thumbnails{QString()};
    platform::BoundedCalls calls{[](std::function<void()> call) {
        platform::MainLoop::instance()->post(platform::MainLoop::Mode::Common, std::move(call));
    }};
    PBAliasResolver resolver{calls, nullptr};
    StoppableLister lister;
    PBPathHistory history;
    platform::Mutex lock;
    PBGroupTreeDataSource source;
    BuildThumbNotifier notifier;
    PBGeoManager places{nullptr, [](const std::function<void()>&) {}};
    PBImageImporterManager importers;
    platform::OperationQueue scanQueue{u"scan"_s};
    platform::OperationQueue preloadQueue{u"preload"_s};
    platform::OperationQueue buildQueue{u"build"_s};
};
