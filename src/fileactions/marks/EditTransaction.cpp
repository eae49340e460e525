#include "fileactions/marks/EditTransaction.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/marks/MarksFile.h"
#include "catalogue/marks/TagRows.h"

#include <QHash>

#include <algorithm>
#include <unordered_map>

namespace fileactions {

using marks::LedgerRow;
using marks::MarksChange;
using marks::MarksLedger;

EditTransaction::EditTransaction(FMDatabase& both, const marks::RootPaths& mountedRoots)
    : _both(both), _roots(mountedRoots), _transaction(both, FMDatabase::Others::Read),
      _ledger(both), _isBound(_transaction.isOpen() && marks::bindLedger(both, mountedRoots)) {}

QString EditTransaction::reason() const {
    const QString reason = _transaction.errorMessage();
    return reason.isEmpty() ? _both.lastErrorMessage() : reason;
}

bool EditTransaction::finish() {
    return _isBound && noteShown() && _ledger.countEdit() && _transaction.commit();
}

bool EditTransaction::noteShown() {
    // One that was changed twice is there twice.
    std::vector<qint64> sorted = _performed.fileIds;
    std::ranges::sort(sorted);
    if (!_isShownKnown || std::ranges::adjacent_find(sorted) != sorted.end()) {
        auto shown = marks::shownRows(_both, _performed.fileIds);
        if (!shown) return false;
        _performed.shown = std::move(*shown);
    }
    std::unordered_map<qint64, qint64> ledgerIds;
    for (const marks::ShownRow& row : _performed.shown)
        ledgerIds.emplace(row.fileId, row.ledgerId);
    for (MarksEdit::OfPhotographs& part : _performed.inverse.photographs) {
        part.ledgerIds.clear();
        for (const qint64 fileId : part.fileIds)
            part.ledgerIds.push_back(ledgerIds[fileId]);
    }
    return true;
}

bool EditTransaction::store(const MarksEdit& edit) {
    if (!_isBound) return false;
    marks::TagRows tags(_both);
    return std::ranges::all_of(
               edit.photographs, [this](const auto& part) { return store(part); }) &&
           (edit.paths.empty() || storePaths(edit.paths)) && storeLedgerRows(edit.ledgerRows) &&
           std::ranges::all_of(
               edit.tagsInList, [&](const QString& tag) { return tags.ensure(tag); });
}

std::optional<std::vector<qint64>> EditTransaction::present(const MarksEdit::OfPhotographs& part) {
    if (part.ledgerIds.empty()) return part.fileIds;
    const auto rows = marks::shownRows(_both, part.fileIds);
    if (!rows) return std::nullopt;
    if (rows->size() == part.fileIds.size()) return part.fileIds;
    std::vector<qint64> found;
    std::vector<qint64> lost; // of the ledger
    auto row = rows->begin();
    for (std::size_t index = 0; index < part.fileIds.size(); ++index) {
        if (row != rows->end() && row->fileId == part.fileIds[index]) {
            found.push_back(row->fileId);
            ++row;
        } else {
            lost.push_back(part.ledgerIds[index]);
        }
    }
    const auto anew = marks::presentFileIds(_both, lost);
    if (!anew) return std::nullopt;
    for (const qint64 fileId : *anew) {
        if (fileId != 0) found.push_back(fileId);
    }
    _performed.missingCount += std::ssize(part.fileIds) - std::ssize(found);
    return found;
}

std::optional<std::vector<MarksLedger::Held>>
EditTransaction::held(const std::vector<qint64>& fileIds) {
    if (!_isBound) return std::nullopt;
    auto held = _ledger.held(fileIds);
    if (held) _performed.missingCount += std::ssize(fileIds) - std::ssize(*held);
    return held;
}

bool EditTransaction::store(const MarksEdit::OfPhotographs& part) {
    const auto fileIds = present(part);
    if (!fileIds) return false;
    if (!part.change.tags && !part.change.rotation) return storeStarsAndFlag(*fileIds, part.change);
    const auto before = held(*fileIds);
    return before && storeHeld(*before, part.change);
}

bool EditTransaction::storeStarsAndFlag(
    const std::vector<qint64>& fileIds, const MarksChange& change) {
    auto rows = _isBound ? marks::shownRows(_both, fileIds) : std::nullopt;
    if (!rows) return false;
    _performed.missingCount += std::ssize(fileIds) - std::ssize(*rows);
    std::vector<qint64> changed;
    std::vector<qint64> first; // time that they are marked
    for (marks::ShownRow& row : *rows) {
        const marks::Marks before{.stars = row.stars, .flag = row.flag, .tags = {}, .rotation = {}};
        const marks::Marks after = change.appliedTo(before);
        if (after == before) continue;
        changed.push_back(row.fileId);
        if (row.ledgerId == 0) first.push_back(row.fileId);
        addInverse(row.fileId, change.inverse(before));
        row.stars = after.stars;
        row.flag = after.flag;
        _performed.shown.push_back(std::move(row));
    }
    _performed.fileIds.insert(_performed.fileIds.end(), changed.begin(), changed.end());
    _isShownKnown = _isShownKnown && first.empty();
    return _ledger.changeCatalogue(changed, change) &&
           (first.empty() || _ledger.takeFromCatalogue(first, _roots)) &&
           (changed.empty() || _ledger.takeChange(changed, change));
}

/// What is shown of them is read at the end.
void EditTransaction::noteChanged(const std::vector<qint64>& fileIds) {
    _performed.fileIds.insert(_performed.fileIds.end(), fileIds.begin(), fileIds.end());
    _isShownKnown = _isShownKnown && fileIds.empty();
}

bool EditTransaction::storeHeld(
    const std::vector<MarksLedger::Held>& held, const MarksChange& change) {
    std::vector<qint64> changed;
    for (const MarksLedger::Held& one : held) {
        if (change.appliedTo(one.marks) == one.marks) continue;
        changed.push_back(one.fileId);
        addInverse(one.fileId, change.inverse(one.marks));
    }
    noteChanged(changed);
    return _ledger.changeCatalogue(changed, change) &&
           (changed.empty() || _ledger.takeFromCatalogue(changed, _roots));
}

bool EditTransaction::turn(const std::vector<qint64>& fileIds, int degrees) {
    const auto before = held(fileIds);
    if (!before) return false;
    const MarksChange rotation{
        .stars = {}, .flag = {}, .tags = {}, .rotation = std::optional<std::optional<int>>(0)};
    std::vector<qint64> turned;
    for (const MarksLedger::Held& one : *before) {
        turned.push_back(one.fileId);
        addInverse(one.fileId, rotation.inverse(one.marks));
    }
    noteChanged(turned);
    return turned.empty() ||
           (_ledger.turnInCatalogue(turned, degrees) && _ledger.takeFromCatalogue(turned, _roots));
}

/// Those with the same marks go together, so that the way back is a few statements too.
void EditTransaction::addInverse(qint64 fileId, const MarksChange& change) {
    auto& parts = _performed.inverse.photographs;
    if (!parts.empty() && parts.back().change == change) {
        parts.back().fileIds.push_back(fileId);
        return;
    }
    const auto known = _inverseParts.constFind(keyOf(change));
    if (known != _inverseParts.constEnd()) {
        parts[*known].fileIds.push_back(fileId);
    } else {
        _inverseParts.insert(keyOf(change), parts.size());
        parts.push_back({.fileIds = {fileId}, .change = change});
    }
}

bool EditTransaction::storePaths(const std::vector<MarksEdit::OfPath>& paths) {
    const auto rows = _ledger.rows(_roots);
    if (!rows) return false;
    QHash<QByteArray, const LedgerRow*> byPath;
    for (const LedgerRow& row : *rows)
        byPath.insert(row.trace.path(), &row);
    return std::ranges::all_of(
        paths, [&](const auto& one) { return storePath(one, byPath.value(one.path)); });
}

bool EditTransaction::storePath(const MarksEdit::OfPath& one, const LedgerRow* row) {
    // In the catalogue all the same: on a root that is away, say.
    if (row && row->fileId != 0)
        return store({.fileIds = {row->fileId}, .change = one.change, .ledgerIds = {}});
    const marks::Marks before = row ? row->marks : marks::Marks();
    const marks::Marks after = one.change.appliedTo(before);
    if (after == before) return true;
    _performed.inverse.paths.push_back({one.path, one.change.inverse(before)});
    if (row) return _ledger.setMarks(row->id, after);
    marks::Trace trace;
    trace.relativePath = one.path;
    return _ledger.insert(trace, after) > 0;
}

bool EditTransaction::storeLedgerRows(const std::vector<MarksEdit::OfLedgerRow>& rows) {
    if (rows.empty()) return true;
    std::vector<qint64> ids;
    for (const auto& row : rows)
        ids.push_back(row.ledgerId);
    // A photograph that has come back meanwhile has them in the catalogue, too.
    const auto fileIds = marks::presentFileIds(_both, ids);
    if (!fileIds) return false;
    const auto all = _ledger.rows(_roots);
    if (!all) return false;
    std::unordered_map<qint64, QStringList> before;
    for (const LedgerRow& row : *all)
        before.emplace(row.id, row.marks.tags);
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const auto& [ledgerId, tags] = rows[index];
        const auto known = before.find(ledgerId);
        if (known == before.end()) continue;
        const qint64 fileId = (*fileIds)[index];
        const bool isStored =
            fileId != 0 ? store(
                              {.fileIds = {fileId},
                               .change = {.stars = {}, .flag = {}, .tags = tags, .rotation = {}},
                               .ledgerIds = {}})
                        : setTagsOfLedgerRow(ledgerId, tags, known->second);
        if (!isStored) return false;
    }
    return true;
}

bool EditTransaction::setTagsOfLedgerRow(
    qint64 ledgerId, const QStringList& tags, const QStringList& before) {
    _performed.inverse.ledgerRows.push_back({ledgerId, before});
    return marks::TagRows(_both).setTagsOfLedgerRow(ledgerId, tags);
}

bool EditTransaction::takeTexts(const std::vector<qint64>& fileIds) {
    noteChanged(fileIds);
    return fileIds.empty() || _ledger.takeFromCatalogue(fileIds, _roots);
}

} // namespace fileactions
