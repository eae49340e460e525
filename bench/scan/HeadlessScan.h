#pragma once

#include "FMDB/FMDatabase.h"
#include "codec/PBImageImporterManager.h"
#include "image/BuiltThumbnails.h"
#include "image/DecodeAhead.h"
#include "library/PBAliasManager.h"
#include "platform/tasks/OperationQueue.h"
#include "scan/ScanFactory.h"
#include "scan/ScanServices.h"
#include "scan/marks/MarksRestorer.h"

#include <QString>

#include <memory>

namespace bench {

/// The program's scan of one root without its window: the same queues, importers and connections.
class HeadlessScan {
public:
    /// The catalogue's files are made in `profile` unless they are there; a ledger of marks is used
    /// if there is one. `pictures` is the root.
    HeadlessScan(const QString& profile, const QString& pictures);
    ~HeadlessScan();
    HeadlessScan(const HeadlessScan&) = delete;
    HeadlessScan& operator=(const HeadlessScan&) = delete;

    /// Scans; answers when the scan queue is done. Thumbnails are left out without
    /// `withThumbnails`.
    void scan(bool withThumbnails);
    void waitForThumbnails();

    [[nodiscard]] const ScanFigures& figures() const { return _figures; }
    [[nodiscard]] const BuildThumbServices& thumbnails() const { return *_buildThumb; }
    [[nodiscard]] FMDatabase& scanFiles() { return _scanFiles; }

private:
    class DiskRoots;

    FMDatabase _files;
    FMDatabase _scanFiles;
    FMDatabase _buildThumbnails;
    const std::unique_ptr<PBAliasServices> _aliasServices;
    PBAliasManager _aliasManager;
    PBImageImporterManager _importerManager;
    PBScanFinishedManager _finishedManager;
    ScanFigures _figures;
    platform::Mutex _insertFolderAliasLock;
    BuiltThumbnails _unstored;
    platform::OperationQueue _buildQueue{QStringLiteral("build")};
    platform::OperationQueue _scanQueue{QStringLiteral("scan")};
    DecodeAhead _decodeAhead;
    ReadAhead _readAhead;
    MarksRestorer _marks;
    std::shared_ptr<BuildThumbServices> _buildThumb;
    std::unique_ptr<ScanFactory> _factory;
    std::shared_ptr<PBAliasObject> _root;
    std::shared_ptr<PBGroupItemArray> _workTree;

    std::mutex _mutex; // guards the publication
    std::shared_ptr<group::GroupPublication> _shown;
};

} // namespace bench
