#pragma once

#include "codec/PBImageImporterManager.h"
#include "group/PBGroupTreeDataSource.h"
#include "group/PlaceAddresses.h"
#include "image/BuildThumbNotifier.h"
#include "image/BuiltThumbnails.h"
#include "image/DecodeAhead.h"
#include "places/PBGeoManager.h"
#include "platform/tasks/Mutex.h"
#include "scan/PBScanFinishedManager.h"
#include "scan/ScanFactory.h"
#include "scan/ScanFigures.h"
#include "scan/ScanServices.h"

#include <atomic>
#include <functional>
#include <memory>

/// All that scans work with, put together: importers, thumbnails, the two trees. Made on
/// the main thread before the queues run, and destroyed there when they have ended.
class ScanPipeline {
public:
    struct Environment {
        PBGeoManager& geoManager;
        FMDatabase& scanFileDb;
        FMDatabase& buildThumbDb;
        platform::OperationQueue& scanQueue;
        platform::OperationQueue& buildQueue;
        const PBAliasManager& aliasManager;
        platform::Mutex& insertFolderAliasLock;
        /// nullptr: marks don't come back.
        MarksRestorer* marks = nullptr;
        /// Whether a new file is still being written. Called on the scan thread.
        std::function<bool(const QString& path)> isBeingWritten;
        /// A file was left out because its name is no text. Called on the scan thread.
        std::function<void(const QString& folder, const QString& name)> leftOutForItsName;
        /// The present scan has ended, and all of it is on show. Main thread.
        std::function<void()> scanFinished;
    };

    explicit ScanPipeline(Environment environment);
    ~ScanPipeline();
    ScanPipeline(const ScanPipeline&) = delete;
    ScanPipeline& operator=(const ScanPipeline&) = delete;

    [[nodiscard]] PBGroupTreeDataSource& groupTreeDataSource() { return _dataSource; }
    /// What was published last is not on show yet.
    [[nodiscard]] bool isShowPending() const { return _dataSource.isWaiting(); }
    [[nodiscard]] ScanFactory& factory() { return *_factory; }
    [[nodiscard]] BuildThumbNotifier& buildThumbNotifier() { return _notifier; }
    [[nodiscard]] PBImageImporterManager& imageImporterManager() { return _importerManager; }
    [[nodiscard]] const ScanFigures& figures() const { return _figures; }
    [[nodiscard]] const BuildThumbServices& buildThumb() const { return *_buildThumb; }

    /// Photographs whose address was found since go to the groups of their places, within the scan
    /// that is running if there is one.
    void regroupPlaces(const ScanBrowsing& browsing) const;

private:
    [[nodiscard]] std::shared_ptr<const ScanServices> makeServices();
    /// After each swap: notes when it can be seen.
    void noteShown();
    /// The end of a scan counts when its last tree is on show, while its work tree is the present
    /// one. Scan thread.
    void postScanFinished(std::shared_ptr<const PBGroupItemArray> workTree);

    const Environment _environment;
    PBImageImporterManager _importerManager;
    PBScanFinishedManager _finishedManager;
    ScanFigures _figures;
    group::GeoManagerAddresses _places;
    PBGroupTreeDataSource _dataSource;
    BuildThumbNotifier _notifier;
    BuiltThumbnails _unstored;
    DecodeAhead _decodeAhead;
    ReadAhead _readAhead;
    const std::shared_ptr<BuildThumbServices> _buildThumb;
    std::unique_ptr<ScanFactory> _factory;

    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
};
