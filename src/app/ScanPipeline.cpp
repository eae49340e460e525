#include "app/ScanPipeline.h"

#include "platform/tasks/Cores.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/OperationQueue.h"
#include "scan/AttachedOperations.h"

#include <QDateTime>
#include <QTimer>

using platform::MainLoop;

ScanPipeline::ScanPipeline(Environment environment)
    : _environment(std::move(environment)), _places(_environment.geoManager),
      _decodeAhead(platform::usableCores()), _readAhead(platform::usableCores(), _importerManager),
      _buildThumb(new BuildThumbServices{
          .db = _environment.buildThumbDb,
          .queue = _environment.buildQueue,
          .unstored = _unstored,
          .ahead = &_decodeAhead,
          .didBuild = _notifier.poster()}) {
    _dataSource.setDidSwap([this] { noteShown(); });
    _environment.buildQueue.setIdleHandler(
        [this] { _figures.thumbnailsDone = _figures.sinceBegin(); });
    _factory = std::make_unique<ScanFactory>(ScanFactory::Environment{
        _environment.scanFileDb, _environment.scanQueue, makeServices(),
        [this] { _dataSource.cancelDelayedPublications(); }});
}

ScanPipeline::~ScanPipeline() = default;

std::shared_ptr<const ScanServices> ScanPipeline::makeServices() {
    return std::shared_ptr<const ScanServices>(new ScanServices{
        .aliasManager = _environment.aliasManager,
        .scanFinishedManager = _finishedManager,
        .insertFolderAliasLock = _environment.insertFolderAliasLock,
        .imageImporterManager = _importerManager,
        .buildThumb = _buildThumb,
        .places = &_places,
        .publish = _dataSource.publisher(),
        .waitsForDisplay = _dataSource.waitsForDisplay(),
        .scanFinished = [this](auto workTree) { postScanFinished(std::move(workTree)); },
        .marks = _environment.marks,
        .readAhead = &_readAhead,
        .isBeingWritten = _environment.isBeingWritten,
        .leftOutForItsName = _environment.leftOutForItsName,
        .now = [] { return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) * 1e-3; },
        .figures = _figures,
    });
}

void ScanPipeline::regroupPlaces(const ScanBrowsing& browsing) const {
    const auto& work = _dataSource.groupItemArray_work();
    if (!work) return;
    _factory->attach(std::make_shared<PBRegroupPlacesOperation>(
        _factory->makeDictionary(nullptr, {}, work, browsing)));
}

void ScanPipeline::noteShown() {
    // Behind the painting that the swap asks for.
    QTimer::singleShot(0, &_notifier, [this] {
        _figures.mark(_figures.firstShown);
        _figures.lastShown = _figures.sinceBegin();
    });
}

void ScanPipeline::postScanFinished(std::shared_ptr<const PBGroupItemArray> workTree) {
    MainLoop* loop = MainLoop::instance();
    if (!loop) return;
    loop->post(
        MainLoop::Mode::Default,
        [this, alive = std::weak_ptr(_alive), workTree = std::move(workTree)]() mutable {
            if (alive.expired()) return;
            // Not before its last tree: what waits for photographs would give them up.
            _dataSource.whenShown(std::move(workTree), [this] { _environment.scanFinished(); });
        });
}
