#include "scan/CatalogueFolderScan.h"

#include "FMDB/FMDatabase.h"
#include "platform/files/PathNames.h"
#include "scan/ScanServices.h"
#include "scan/marks/MarksRestorer.h"

using platform::Presence;

namespace {

/// Rows between two checkpoints.
constexpr int rowsBetweenDrains = 10;

} // namespace

CatalogueFolderScan::CatalogueFolderScan(
    PBScanDictionaryRef dictionary, platform::Operation& operation)
    : _dictionary(std::move(dictionary)), _operation(operation),
      _step(
          _dictionary->groupingParameters(), *_dictionary->Database, _dictionary->services->places),
      _rhythm(_dictionary->PushImageFileItemTime, _dictionary->PushImageFileItemCount),
      _thumbnails(*_dictionary), _spelling(*_dictionary->services) {}

Presence CatalogueFolderScan::checkFolder(qint64 folderId, const QString& folderPath) {
    ++_dictionary->services->figures.folders;
    const Presence presence =
        _spelling.presenceOfFolder(folderPath, platform::FileManager::look(folderPath).presence);
    if (presence == Presence::Gone) _staleRows.addFolder(folderId);
    return presence;
}

std::vector<group::ImageFileRow> CatalogueFolderScan::fetchRows(
    qint64 folderId, const std::function<bool(const QString& fileName)>& isTaken,
    std::vector<group::ImageFileRow>* deferred) {
    std::vector<group::ImageFileRow> taken;
    const QString sql = group::ImageFileRow::queryForFolder(
        _dictionary->SortType, _dictionary->DescendingSort, _dictionary->Filter);
    FMResultSet cursor = _dictionary->Database->executeQuery(sql, folderId);
    while (!_operation.isCancelled() && cursor.next()) {
        auto row = group::ImageFileRow::fromResultSet(cursor);
        auto& list = !isTaken || isTaken(row.fileName) ? taken : *deferred;
        list.push_back(std::move(row));
    }
    if (cursor.hadError()) {
        tellUnreadCatalogue(*_dictionary);
        // Rows that were not read still need it.
        _staleRows.keepFolder(folderId);
    }
    return taken;
}

void CatalogueFolderScan::scanRows(
    const QString& folderPath, Presence folderPresence,
    const std::vector<group::ImageFileRow>& rows, bool publishAtOnce) {
    int sinceDrain = 0;
    _step.willInsert(rows);
    _lookAhead.begin(folderPath, rows);
    for (const group::ImageFileRow& fetched : rows) {
        if (_operation.isCancelled()) return;
        if (sinceDrain < rowsBetweenDrains) {
            ++sinceDrain;
        } else {
            drain();
            sinceDrain = 0;
        }
        if (_dictionary->ShownAhead->contains(fetched.id)) continue;
        std::optional<group::ImageFileRow> anew;
        if (_dictionary->EditedMeanwhile->contains(fetched.id)) {
            anew = rowAnew(*_dictionary, fetched.id);
            if (!anew) continue;
        }
        const group::ImageFileRow& row = anew ? *anew : fetched;
        Presence presence = folderPresence;
        if (presence == Presence::There) {
            const auto number = static_cast<std::size_t>(&fetched - rows.data());
            // The name of a row that was read again may be another one.
            const auto look =
                anew ? platform::FileManager::look(platform::pathInFolder(folderPath, row.fileName))
                     : _lookAhead.look(number, _dictionary->attachedCount());
            presence = presenceOf(look, row, folderPath);
        }
        if (presence == Presence::Gone) {
            _staleRows.addFile({row.id, row.folderId, row.fileName});
            continue;
        }
        take(row, folderPath, presence == Presence::Unknown);
        publishIfDue(publishAtOnce);
    }
    _thumbnails.queueAll();
}

Presence CatalogueFolderScan::presenceOf(
    const platform::EntryLook& look, const group::ImageFileRow& row, const QString& folderPath) {
    const auto& [looked, values] = look;
    const Presence presence = _spelling.presenceOfFile(folderPath, row.fileName, looked);
    if (presence != Presence::There) return presence;
    const bool isUnchanged = static_cast<quint64>(values.fileSize) == row.fileSize &&
                             values.modificationDate == row.modificationDate;
    MarksRestorer* marks = _dictionary->services->marks;
    if (!isUnchanged || isUnread(row) || (marks && marks->isExchanged(row.id, values.identity)))
        return Presence::Gone;
    if (marks) marks->sawPhotograph(row, folderPath, values);
    return Presence::There;
}

bool CatalogueFolderScan::isUnread(const group::ImageFileRow& row) const {
    // With a filter no disk pass follows that would read the file.
    return _dictionary->Filter == 0 && row.imageWidth == PBValue(0) &&
           row.imageHeight == PBValue(0);
}

void CatalogueFolderScan::take(
    const group::ImageFileRow& row, const QString& folderPath, bool isAway) {
    const auto item = _step.insert(row, folderPath);
    if (!item) return;
    _rhythm.itemWasAdded();
    ++_dictionary->services->figures.items;
    item->setIsAway(isAway);
    if (isAway) return;
    _thumbnails.addKnown(*item, folderPath, row.fileName);
}

void CatalogueFolderScan::publishIfDue(bool atOnce) {
    const ScanServices& services = *_dictionary->services;
    if (!_rhythm.isDue(group::catalogueScanLimits, atOnce, services.now())) return;
    // It stays due: the next row, or the end, brings what this one would have shown.
    if (atOnce || !services.waitsForDisplay || !services.waitsForDisplay()) publish();
}

void CatalogueFolderScan::publish() {
    if (_operation.isCancelled()) return;
    _thumbnails.queueAll();
    drain();
    publishWorkTree(*_dictionary);
    _rhythm.wasPushed(_dictionary->services->now());
}

void CatalogueFolderScan::publishRest() {
    if (_dictionary->PushImageFileItemCount->number().toInteger() != 0) publish();
}

void CatalogueFolderScan::removeStale() {
    if (_operation.isCancelled()) return;
    _staleRows.remove(*_dictionary, _operation);
}

void CatalogueFolderScan::drain() {
    checkAttachedOperation(_dictionary->AttachOperationArray.get(), _operation);
}
