#include "scan/FilePropertyBatch.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "platform/files/FileManager.h"
#include "platform/files/PathNames.h"
#include "platform/program/StandardError.h"
#include "scan/ScanServices.h"
#include "scan/StaleRows.h"
#include "scan/marks/MarksRestorer.h"

#include <sqlite3.h>

#include <algorithm>

namespace {

/// Whether a statement failed for the values of its own row: those of others may be taken.
bool isRefusalOfValues(int errorCode) {
    const int primary = errorCode & 0xff;
    return primary == SQLITE_CONSTRAINT || primary == SQLITE_MISMATCH || primary == SQLITE_TOOBIG;
}

std::vector<group::ImageFileRow> rowsOf(const std::vector<FileProperty>& properties) {
    std::vector<group::ImageFileRow> rows;
    rows.reserve(properties.size());
    for (const FileProperty& property : properties) {
        rows.push_back(group::ImageFileRow::fromColumns(property.baseProperty));
        rows.back().id = property.fileId;
    }
    return rows;
}

bool isGone(const FileProperty& property) {
    const QString name = property.baseProperty.at(QStringLiteral("FileName")).toText();
    const QString path = platform::pathInFolder(property.parentFolderPath, name);
    return platform::FileManager::look(path).presence == platform::Presence::Gone;
}

} // namespace

FilePropertyBatch::FilePropertyBatch(PBScanDictionaryRef dictionary, platform::Operation& operation)
    : _dictionary(std::move(dictionary)), _operation(operation) {}

void FilePropertyBatch::add(FileProperty property) {
    _dictionary->ImageFilePropertyArray->push_back(std::move(property));
}

void FilePropertyBatch::flush(const std::function<void()>& drain) {
    const std::uint64_t storedAt = _dictionary->attachedCount();
    insertRows();
    // What runs in a drain may add to the array and flush it in turn.
    std::vector<FileProperty> properties = std::exchange(*_dictionary->ImageFilePropertyArray, {});
    group::GroupingStep step(
        _dictionary->groupingParameters(), *_dictionary->Database, _dictionary->services->places);
    const std::vector<group::ImageFileRow> rows = rowsOf(properties);
    step.willInsert(rows);
    ThumbnailsToBuild thumbnails(*_dictionary);
    StaleRows gone;
    std::size_t shown = 0;
    for (std::size_t index = 0; index < rows.size() && !_operation.isCancelled(); ++index) {
        drain();
        const group::ImageFileRow& row = rows[index];
        const qint64 id = row.id;
        if (_dictionary->ShownAhead->contains(id)) continue;
        std::optional<group::ImageFileRow> anew;
        if (_dictionary->EditedMeanwhile->contains(id)) {
            anew = rowAnew(*_dictionary, id);
        } else if (_dictionary->attachedCount() != storedAt && isGone(properties[index])) {
            gone.addFile({id, row.folderId, row.fileName});
            continue;
        }
        if (show(anew ? *anew : row, properties[index], step, thumbnails)) ++shown;
    }
    if (!_operation.isCancelled()) {
        thumbnails.queueAll();
        gone.remove(*_dictionary, _operation);
    }
    if (shown == 0 || _operation.isCancelled()) return;
    drain();
    publishWorkTree(*_dictionary);
}

void FilePropertyBatch::insertRows() {
    auto& properties = *_dictionary->ImageFilePropertyArray;
    FMTransaction transaction(*_dictionary->Database);
    if (!transaction.isOpen() || !insertAll() || !transaction.commit()) {
        tellFailure(transaction.errorMessage());
        properties.clear();
        return;
    }
    std::erase_if(properties, [](const FileProperty& property) { return property.fileId <= 0; });
    restoreMarks();
    _dictionary->services->figures.rowsInserted += properties.size();
}

void FilePropertyBatch::restoreMarks() {
    MarksRestorer* marks = _dictionary->services->marks;
    if (!marks) return;
    std::vector<InsertedPhotograph> photographs;
    for (FileProperty& property : *_dictionary->ImageFilePropertyArray) {
        photographs.push_back(
            {property.fileId, property.parentFolderPath, property.identity,
             &property.baseProperty});
    }
    marks->restoreInserted(photographs);
}

bool FilePropertyBatch::insertAll() {
    return std::ranges::all_of(
        *_dictionary->ImageFilePropertyArray, [this](FileProperty& property) {
            return _operation.isCancelled() || insert(property) != Insertion::Failed;
        });
}

std::optional<bool> FilePropertyBatch::isOutOfDate(const FileProperty& property) const {
    if (_dictionary->isUpToDate(property.unknownAt)) return false;
    const qint64 folderId = property.baseProperty.at(QStringLiteral("FolderId")).toInteger();
    PBCatalogue catalogue(*_dictionary->Database);
    const auto isThere = catalogue.isFolderThere(folderId);
    if (!isThere) return std::nullopt;
    if (!*isThere) return true;
    const auto known = catalogue.findImageFileIdByFolderId(
        folderId, property.baseProperty.at(QStringLiteral("FileName")).toText(), nullptr, nullptr);
    if (!known) return std::nullopt;
    return *known > 0 || isGone(property);
}

FilePropertyBatch::Insertion FilePropertyBatch::insert(FileProperty& property) {
    const auto isOut = isOutOfDate(property);
    if (!isOut) return Insertion::Failed;
    if (*isOut) return Insertion::LeftOut;
    if (insertRow(property)) return Insertion::Stored;
    FMDatabase& db = *_dictionary->Database;
    if (!isRefusalOfValues(db.lastErrorCode())) return Insertion::Failed;
    // A file whose values are not taken must not keep all others out for good.
    tellFailure(db.lastErrorMessage());
    const qint64 id = std::exchange(property.fileId, 0);
    const bool isRemoved = id <= 0 || PBCatalogue(db).removeImageFileAndMetadataWithFileId(id);
    return isRemoved ? Insertion::LeftOut : Insertion::Failed;
}

bool FilePropertyBatch::insertRow(FileProperty& property) {
    FMDatabase& db = *_dictionary->Database;
    PBCatalogue catalogue(db);
    const qint64 id = catalogue.insertImageFileWithDictionary(property.baseProperty);
    property.fileId = id;
    if (id <= 0) return false;
    using Insert = bool (PBCatalogue::*)(qint64 fileId, const PBDictionary& properties);
    const auto takes = [&](const std::optional<PBDictionary>& columns, Insert insertColumns) {
        if (!columns || (catalogue.*insertColumns)(id, *columns)) return true;
        // The table is missing, or another version made it: the picture does without.
        return (db.lastErrorCode() & 0xff) == SQLITE_ERROR;
    };
    return takes(property.exifProperty, &PBCatalogue::insertExifWithImageFileId) &&
           takes(property.exifAuxProperty, &PBCatalogue::insertExifAuxWithImageFileId) &&
           takes(property.tiffProperty, &PBCatalogue::insertTiffWithImageFileId) &&
           takes(property.iptcProperty, &PBCatalogue::insertIPTCWithImageFileId) &&
           takes(property.gpsProperty, &PBCatalogue::insertGPSWithImageFileId);
}

void FilePropertyBatch::tellFailure(const QString& reason) const {
    if (_dictionary->services->figures.toldFailure.exchange(true)) return;
    platform::complain(
        QStringLiteral("new pictures can't be stored in %1 (%2); all that is stored already stays")
            .arg(_dictionary->Database->databasePath(), reason));
}

bool FilePropertyBatch::show(
    const group::ImageFileRow& row, FileProperty& property, group::GroupingStep& step,
    ThumbnailsToBuild& thumbnails) {
    const auto item = step.insert(row, property.parentFolderPath);
    if (!item) return false;
    if (_dictionary->IsAttached || _dictionary->IsOpenFilesScanFolder)
        _dictionary->ShownAhead->insert(row.id);
    _dictionary->services->rewritten->restore(*item);
    ++_dictionary->services->figures.items;
    thumbnails.add(*item, std::move(property.imageImporter));
    return true;
}
