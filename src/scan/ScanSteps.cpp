#include "scan/ScanSteps.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveThumbOperation.h"
#include "image/PBBuildThumbOperation.h"
#include "platform/work/OperationQueue.h"
#include "scan/ScanServices.h"

void publishWorkTree(const PBScanDictionary& dictionary, bool updateScrollCapture) {
    ScanFigures& figures = dictionary.services->figures;
    dictionary.services->publish(
        group::makeGroupPublication(dictionary.WorkGroupItemArray, updateScrollCapture));
    ++figures.publications;
    figures.mark(figures.firstPublication);
}

namespace {

constexpr std::size_t thumbnailsQueuedTogether = 64;

} // namespace

void ThumbnailsToBuild::add(
    const PBImageFileItem& item, std::unique_ptr<PBImageImporterProtocol> importer,
    bool checkExist) {
    if (!importer) return;
    _operations.push_back(std::make_shared<PBBuildThumbOperation>(
        _dictionary.services->buildThumb, PBBuildThumbOperation::Request{
                                              .fileId = item.fileId(),
                                              .imageImporter = std::move(importer),
                                              .checkExist = checkExist,
                                              .thumbSize = _dictionary.BuildThumbSize,
                                              .imageSize = item.imageSize(),
                                          }));
    if (_operations.size() >= thumbnailsQueuedTogether) queueAll();
}

void ThumbnailsToBuild::queueAll() {
    if (_operations.empty()) return;
    _dictionary.BuilidThumbOperationQueue->addOperations(_operations);
    _operations.clear();
}

void removeFromCatalogue(
    const PBScanDictionary& dictionary, const std::vector<qint64>& folderIds,
    const std::vector<qint64>& fileIds, const platform::Operation& operation) {
    if (folderIds.empty() && fileIds.empty()) return;
    FMDatabase& db = *dictionary.Database;
    if (db.beginTransaction()) {
        PBCatalogue catalogue(db);
        quint64 removed = 0;
        // Folders last: what a cancellation leaves undone has its folder still.
        for (const qint64 fileId : fileIds) {
            if (operation.isCancelled()) break;
            if (catalogue.removeImageFileAndMetadataWithFileId(fileId)) ++removed;
        }
        for (const qint64 folderId : folderIds) {
            if (operation.isCancelled()) break;
            catalogue.removeFolderWithFolderId(folderId);
        }
        if (db.commit()) {
            dictionary.services->figures.rowsRemoved += removed;
        } else {
            db.rollback();
        }
    }
    if (fileIds.empty() || operation.isCancelled()) return;
    dictionary.BuilidThumbOperationQueue->addOperation(std::make_shared<PBRemoveThumbOperation>(
        std::vector<qint64>(fileIds.begin(), fileIds.end()), *dictionary.BuilidThumbDatabase));
}
