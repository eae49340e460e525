#include "scan/HeadlessScan.h"

#include "catalogue/PBCatalogue.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUrl>

#include <cstdlib>
#include <thread>

namespace bench {

/// The root is where it says that it is.
class HeadlessScan::DiskRoots final : public PBAliasServices {
public:
    [[nodiscard]] PBAliasResolution
    resolveAlias(const PBAliasObject&, const PBAliasLook& /*look*/, QString* /*error*/) override {
        return {};
    }
    bool storeReservePath(qint64, const QString&) override { return true; }
    bool storeBookmark(qint64, const PBAliasBookmark&) override { return true; }
};

namespace {

void open(FMDatabase& db) {
    db.setShouldCacheStatements(true);
    if (!db.open()) std::abort();
}

std::shared_ptr<PBAliasObject> rootAt(FMDatabase& db, const QString& pictures) {
    qint64 aliasId = 0;
    {
        FMResultSet row = db.executeQuery(QStringLiteral("select Id from FolderAlias"));
        if (row.next()) aliasId = row.longLongIntForColumnIndex(0);
    }
    if (aliasId == 0) {
        aliasId =
            PBCatalogue(db).insertFolderAliasWithData(pictures.toUtf8(), 0, pictures, qint64(0));
    }
    return PBAliasObject::aliasObjectWithId(
        aliasId, pictures.toUtf8(), QUrl::fromLocalFile(pictures), pictures, 0, 0);
}

ScanBrowsing usualBrowsing() {
    ScanBrowsing browsing;
    browsing.groupTypeArray = std::make_shared<const std::vector<int>>(
        std::vector{int(group::CaptureYear), int(group::Folder)});
    return browsing;
}

} // namespace

HeadlessScan::HeadlessScan(const QString& profile, const QString& pictures)
    : _files(profile + QStringLiteral("/files.db")), _scanFiles(_files.databasePath()),
      _buildThumbnails(profile + QStringLiteral("/thumbnail.db")),
      _aliasServices(std::make_unique<DiskRoots>()), _aliasManager({_files, *_aliasServices, {}}),
      _decodeAhead(static_cast<int>(std::thread::hardware_concurrency())),
      _readAhead(static_cast<int>(std::thread::hardware_concurrency()), _importerManager),
      _marks(
          {.connect = [profile]() -> std::unique_ptr<FMDatabase> {
               const QString ledger = profile + QStringLiteral("/marks.db");
               if (!QFile::exists(ledger)) return nullptr;
               return marks::MarksLedger::connect(profile + QStringLiteral("/files.db"), ledger);
           },
           .mountedRoots = [] { return marks::RootPaths(); },
           .isRemovable = [](const QByteArray&) { return false; },
           .marksCameBack = [](const std::vector<qint64>&) {},
           .ledgerDidChange = [] {}}) {
    QDir().mkpath(profile);
    for (FMDatabase* db : {&_files, &_scanFiles, &_buildThumbnails})
        open(*db);
    PBCatalogue(_files).checkTables_FilesDb();
    PBCatalogue(_buildThumbnails).checkTables_Thumbnail();
    for (const char* pragma : {"pragma journal_mode = wal", "pragma synchronous = normal"}) {
        FMResultSet result = _buildThumbnails.executeQuery(QString::fromLatin1(pragma));
        while (result.next()) {
        }
    }
    _buildThumb = std::shared_ptr<BuildThumbServices>(new BuildThumbServices{
        .db = _buildThumbnails,
        .queue = _buildQueue,
        .unstored = _unstored,
        .ahead = &_decodeAhead,
        .didBuild = {}});
    const auto services = std::shared_ptr<const ScanServices>(new ScanServices{
        .aliasManager = _aliasManager,
        .scanFinishedManager = _finishedManager,
        .insertFolderAliasLock = _insertFolderAliasLock,
        .imageImporterManager = _importerManager,
        .buildThumb = _buildThumb,
        .publish =
            [this](std::shared_ptr<group::GroupPublication> publication) {
                const std::lock_guard lock(_mutex);
                _shown = std::move(publication);
            },
        .scanFinished = [](const auto& /*workTree*/) {},
        .marks = &_marks,
        .readAhead = &_readAhead,
        .isBeingWritten = {},
        .now = [] { return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) * 1e-3; },
        .figures = _figures,
    });
    _factory = std::make_unique<ScanFactory>(
        ScanFactory::Environment{_scanFiles, _scanQueue, services, [] {}});
    _root = rootAt(_files, pictures);
    _aliasManager.addAliasObject(_root);
}

HeadlessScan::~HeadlessScan() {
    for (platform::OperationQueue* queue : {&_scanQueue, &_buildQueue}) {
        queue->setSuspended(false);
        queue->cancelAllOperations();
        queue->waitUntilAllOperationsAreFinished();
    }
}

void HeadlessScan::scan(bool withThumbnails) {
    _buildQueue.setSuspended(!withThumbnails);
    _workTree = std::make_shared<PBGroupItemArray>();
    _factory->startScan(_root, {}, _workTree, usualBrowsing());
    _scanQueue.waitUntilAllOperationsAreFinished();
    if (withThumbnails) return;
    _buildQueue.cancelAllOperations();
    _buildQueue.setSuspended(false);
}

void HeadlessScan::waitForThumbnails() {
    _buildQueue.waitUntilAllOperationsAreFinished();
}

} // namespace bench
