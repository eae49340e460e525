#include "fileactions/marks/MarksEdit.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/marks/MarksFile.h"

#include <QHash>

#include <algorithm>

namespace fileactions {

namespace {

using marks::LedgerRow;
using marks::MarksChange;
using marks::MarksLedger;

/// An edit on its way into both files; false of a function: it can't be stored.
class Storing {
public:
    Storing(FMDatabase& both, const marks::RootPaths& roots) : _ledger(both), _roots(roots) {}

    bool store(const MarksEdit& edit) {
        if (!std::ranges::all_of(
                edit.photographs, [this](const auto& part) { return storePhotographs(part); }))
            return false;
        return edit.paths.empty() || storePaths(edit.paths);
    }
    PerformedEdit& performed() { return _performed; }

private:
    bool storePhotographs(const MarksEdit::OfPhotographs& part) {
        const auto held = _ledger.held(part.fileIds);
        if (!held) return false;
        std::vector<qint64> changed;
        for (const MarksLedger::Held& one : *held) {
            if (part.change.appliedTo(one.marks) == one.marks) continue;
            changed.push_back(one.fileId);
            addInverse(one.fileId, part.change.inverse(one.marks));
        }
        _performed.fileIds.insert(_performed.fileIds.end(), changed.begin(), changed.end());
        return _ledger.changeCatalogue(changed, part.change) &&
               (changed.empty() || _ledger.takeFromCatalogue(changed, _roots));
    }

    /// Neighbours with the same marks go together, so that the way back is a few statements too.
    void addInverse(qint64 fileId, const MarksChange& change) {
        auto& parts = _performed.inverse.photographs;
        const auto same = std::ranges::find(parts, change, &MarksEdit::OfPhotographs::change);
        if (same == parts.end()) {
            parts.push_back({{fileId}, change});
        } else {
            same->fileIds.push_back(fileId);
        }
    }

    bool storePaths(const std::vector<MarksEdit::OfPath>& paths) {
        const auto rows = _ledger.rows(_roots);
        if (!rows) return false;
        QHash<QByteArray, const LedgerRow*> byPath;
        for (const LedgerRow& row : *rows)
            byPath.insert(row.trace.path(), &row);
        return std::ranges::all_of(
            paths, [&](const auto& one) { return storePath(one, byPath.value(one.path)); });
    }

    bool storePath(const MarksEdit::OfPath& one, const LedgerRow* row) {
        // In the catalogue all the same: on a root that is away, say.
        if (row && row->fileId != 0) return storePhotographs({{row->fileId}, one.change});
        const marks::Marks before = row ? row->marks : marks::Marks();
        const marks::Marks after = one.change.appliedTo(before);
        if (after == before) return true;
        _performed.inverse.paths.push_back({one.path, one.change.inverse(before)});
        if (row) return _ledger.setMarks(row->id, after);
        marks::Trace trace;
        trace.relativePath = one.path;
        return _ledger.insert(trace, after) > 0;
    }

    MarksLedger _ledger;
    const marks::RootPaths& _roots;
    PerformedEdit _performed;
};

} // namespace

MarksEdit MarksEdit::ofPhotographs(std::vector<qint64> fileIds, const marks::MarksChange& change) {
    return {.photographs = {{std::move(fileIds), change}}, .paths = {}};
}

std::variant<PerformedEdit, QString>
storeEdit(FMDatabase& both, const marks::RootPaths& mountedRoots, const MarksEdit& edit) {
    FMTransaction transaction(both);
    Storing storing(both, mountedRoots);
    const bool isStored = transaction.isOpen() && marks::bindLedger(both, mountedRoots) &&
                          storing.store(edit) && MarksLedger(both).countEdit() &&
                          transaction.commit();
    if (isStored) return std::move(storing.performed());
    const QString reason = transaction.errorMessage();
    return reason.isEmpty() ? both.lastErrorMessage() : reason;
}

} // namespace fileactions
