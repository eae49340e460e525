#include "scan/ScanSteps.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/IdsText.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PBRemoveThumbOperation.h"
#include "image/MissingThumbsOperation.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/OperationQueue.h"
#include "scan/ScanServices.h"
#include "scan/marks/MarksRestorer.h"

void publishWorkTree(const PBScanDictionary& dictionary, bool updateScrollCapture) {
    RewrittenFiles& rewritten = *dictionary.services->rewritten;
    if (rewritten.holdsBack(updateScrollCapture)) return;
    const bool capturesAnew = rewritten.takeUpdateScrollCapture() || updateScrollCapture;
    ScanFigures& figures = dictionary.services->figures;
    dictionary.services->publish(
        group::makeGroupPublication(dictionary.WorkGroupItemArray, capturesAnew));
    ++figures.publications;
    figures.mark(figures.firstPublication);
}

std::optional<group::ImageFileRow> rowAnew(const PBScanDictionary& dictionary, qint64 fileId) {
    FMResultSet cursor = dictionary.Database->executeQuery(
        group::ImageFileRow::queryForIds(), catalogue::idsText({&fileId, 1}));
    if (!cursor.next()) return std::nullopt;
    return group::ImageFileRow::fromResultSet(cursor);
}

namespace {

constexpr std::size_t thumbnailsQueuedTogether = 64;

} // namespace

ThumbnailsToBuild::ThumbnailsToBuild(const PBScanDictionary& dictionary)
    : _dictionary(dictionary) {}

ThumbnailsToBuild::~ThumbnailsToBuild() = default;

void ThumbnailsToBuild::add(
    const PBImageFileItem& item, std::unique_ptr<PBImageImporterProtocol> importer) {
    if (!importer) return;
    _operations.push_back(std::make_shared<PBBuildThumbOperation>(
        _dictionary.services->buildThumb, PBBuildThumbOperation::Request{
                                              .fileId = item.fileId(),
                                              .imageImporter = std::move(importer),
                                              .thumbSize = _dictionary.BuildThumbSize,
                                              .imageSize = item.imageSize(),
                                          }));
    if (_operations.size() >= thumbnailsQueuedTogether) queueAll();
}

void ThumbnailsToBuild::addKnown(
    const PBImageFileItem& item, const QString& folderPath, const QString& fileName) {
    if (!_known) {
        _known = std::make_shared<MissingThumbsOperation>(
            _dictionary.services->buildThumb, _dictionary.services->imageImporterManager,
            _dictionary.BuildThumbSize);
        _operations.push_back(_known);
    }
    _known->add(item.fileId(), {folderPath, fileName, item.imageSize()});
    if (_known->keys().size() >= thumbnailsQueuedTogether) queueAll();
}

void ThumbnailsToBuild::queueAll() {
    if (_operations.empty()) return;
    _dictionary.BuilidThumbOperationQueue->addOperations(_operations);
    _operations.clear();
    _known.reset();
}

namespace {

bool hasMoved(PBCatalogue& catalogue, const LookedForFile& file) {
    const PBArray row = catalogue.imageFileDataWithIdAndFields(
        file.fileId, {QStringLiteral("FolderId"), QStringLiteral("FileName")});
    return !row.empty() &&
           (row[0].toInteger() != file.folderId || row[1].toText() != file.fileName);
}

/// Removes rows until a cancellation; answers those of images, or nothing when none could be.
/// Folders come last: what a cancellation leaves undone has its folder still, and so have images
/// that a filter keeps out of the list, or that came since the folder was gone.
std::optional<std::vector<qint64>> removeRows(
    FMDatabase& db, const std::vector<qint64>& folderIds, const std::vector<LookedForFile>& files,
    const platform::Operation& operation) {
    FMTransaction transaction(db);
    if (!transaction.isOpen()) return std::nullopt;
    PBCatalogue catalogue(db);
    std::vector<qint64> removed;
    for (const LookedForFile& file : files) {
        if (operation.isCancelled()) break;
        if (hasMoved(catalogue, file)) continue;
        if (!catalogue.removeImageFileAndMetadataWithFileId(file.fileId)) return std::nullopt;
        removed.push_back(file.fileId);
    }
    for (const qint64 folderId : folderIds) {
        if (operation.isCancelled()) break;
        if (!catalogue.removeFolderWithFolderId(folderId)) return std::nullopt;
    }
    if (!transaction.commit()) return std::nullopt;
    return removed;
}

} // namespace

void removeFromCatalogue(
    const PBScanDictionary& dictionary, const std::vector<qint64>& folderIds,
    const std::vector<LookedForFile>& files, const platform::Operation& operation) {
    if (folderIds.empty() && files.empty()) return;
    const auto removed = removeRows(*dictionary.Database, folderIds, files, operation);
    // Rows that stay are found again by the next scan, and keep their thumbnails until then.
    if (!removed) return;
    dictionary.services->figures.rowsRemoved += removed->size();
    if (MarksRestorer* marks = dictionary.services->marks) marks->rowsWereRemoved(*removed);
    if (removed->empty() || operation.isCancelled()) return;
    dictionary.BuilidThumbOperationQueue->addOperation(
        std::make_shared<PBRemoveThumbOperation>(*removed, *dictionary.BuilidThumbDatabase));
}

void tellUnreadFile(const PBScanDictionary& dictionary, const QString& path) {
    if (dictionary.services->figures.toldUnreadFile.exchange(true)) return;
    platform::complain(
        QStringLiteral("%1 can't be read now; it is left for another scan").arg(path));
}

void tellUnreadCatalogue(const PBScanDictionary& dictionary) {
    // Read at once: the next statement writes over it.
    const QString reason = dictionary.Database->lastErrorMessage();
    if (dictionary.services->figures.toldUnreadCatalogue.exchange(true)) return;
    platform::complain(
        QStringLiteral("%1 can't be read in parts (%2); photographs may be missing from what is "
                       "shown, and nothing is removed for that")
            .arg(dictionary.Database->databasePath(), reason));
}
