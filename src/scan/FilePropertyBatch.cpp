#include "scan/FilePropertyBatch.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "platform/program/StandardError.h"
#include "scan/ScanServices.h"

namespace {

std::vector<group::ImageFileRow> rowsOf(const std::vector<FileProperty>& properties) {
    std::vector<group::ImageFileRow> rows;
    rows.reserve(properties.size());
    for (const FileProperty& property : properties) {
        rows.push_back(group::ImageFileRow::fromColumns(property.baseProperty));
        rows.back().id = property.fileId;
    }
    return rows;
}

} // namespace

FilePropertyBatch::FilePropertyBatch(PBScanDictionaryRef dictionary, platform::Operation& operation)
    : _dictionary(std::move(dictionary)), _operation(operation) {}

void FilePropertyBatch::add(FileProperty property) {
    _dictionary->ImageFilePropertyArray->push_back(std::move(property));
}

bool FilePropertyBatch::flush(const std::function<void()>& drain) {
    insertRows();
    // What runs in a drain may add to the array and flush it in turn.
    std::vector<FileProperty> properties = std::exchange(*_dictionary->ImageFilePropertyArray, {});
    group::GroupingStep step(
        _dictionary->groupingParameters(), *_dictionary->Database, _dictionary->services->places);
    const std::vector<group::ImageFileRow> rows = rowsOf(properties);
    step.willInsert(rows);
    ThumbnailsToBuild thumbnails(*_dictionary);
    std::size_t shown = 0;
    for (std::size_t index = 0; index < rows.size() && !_operation.isCancelled(); ++index) {
        drain();
        if (show(rows[index], properties[index], step, thumbnails)) ++shown;
    }
    if (!_operation.isCancelled()) thumbnails.queueAll();
    if (shown == 0 || _operation.isCancelled()) return false;
    drain();
    publishWorkTree(*_dictionary);
    return true;
}

void FilePropertyBatch::insertRows() {
    auto& properties = *_dictionary->ImageFilePropertyArray;
    FMDatabase& db = *_dictionary->Database;
    if (!db.beginTransaction()) {
        tellFailure();
        return;
    }
    std::erase_if(
        properties, [this](const FileProperty& property) { return isKnownByNow(property); });
    quint64 inserted = 0;
    for (FileProperty& property : properties) {
        if (_operation.isCancelled()) break;
        insertRow(property);
        if (property.fileId > 0) {
            ++inserted;
        } else {
            tellFailure();
        }
    }
    if (db.commit()) {
        _dictionary->services->figures.rowsInserted += inserted;
        return;
    }
    tellFailure();
    db.rollback();
    properties.clear();
}

bool FilePropertyBatch::isKnownByNow(const FileProperty& property) const {
    if (property.unknownAt == _dictionary->attachedCount()) return false;
    const auto column = [&](const QString& name) { return property.baseProperty.at(name); };
    return PBCatalogue(*_dictionary->Database)
               .findImageFileIdByFolderId(
                   column(QStringLiteral("FolderId")).toInteger(),
                   column(QStringLiteral("FileName")).toText(), nullptr, nullptr) > 0;
}

void FilePropertyBatch::insertRow(FileProperty& property) {
    PBCatalogue catalogue(*_dictionary->Database);
    const qint64 id = catalogue.insertImageFileWithDictionary(property.baseProperty);
    if (id <= 0) return;
    if (property.exifProperty) catalogue.insertExifWithImageFileId(id, *property.exifProperty);
    if (property.exifAuxProperty)
        catalogue.insertExifAuxWithImageFileId(id, *property.exifAuxProperty);
    if (property.tiffProperty) catalogue.insertTiffWithImageFileId(id, *property.tiffProperty);
    if (property.iptcProperty) catalogue.insertIPTCWithImageFileId(id, *property.iptcProperty);
    if (property.gpsProperty) catalogue.insertGPSWithImageFileId(id, *property.gpsProperty);
    property.fileId = id;
}

void FilePropertyBatch::tellFailure() const {
    // Read at once: the next statement writes over it.
    const QString reason = _dictionary->Database->lastErrorMessage();
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
    ++_dictionary->services->figures.items;
    thumbnails.add(*item, std::move(property.imageImporter), false);
    return true;
}
