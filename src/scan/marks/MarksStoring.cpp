#include "scan/marks/MarksStoring.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/marks/MarksFile.h"

#include <array>
#include <utility>

using marks::LedgerRow;
using marks::Marks;
using marks::Sighting;
using marks::Trace;
using marks::Trust;

namespace {

bool isSameContent(const Trace& before, const Trace& now) {
    if (before.size != now.size) return false;
    return before.modificationDate == now.modificationDate ||
           (!before.digest.isEmpty() && before.digest == now.digest);
}

/// The marks that mean something for the photograph as it is now.
Marks marksFor(const LedgerRow& row, const Trace& now) {
    Marks marks = row.marks;
    const bool isByPathOnly = row.trace.size < 0;
    if (!isByPathOnly && !isSameContent(row.trace, now) && !keepsRotation(row.trace, now))
        marks.rotation.reset();
    return marks;
}

/// False of a function: the whole can't be stored.
class Storing {
public:
    Storing(FMDatabase& both, const marks::RootPaths& roots) : _ledger(both), _roots(roots) {}

    bool store(const LedgerRow& row, const Sighting& seen, Trust trust) {
        if (!_ledger.isWithoutMarks(seen.fileId)) return true; // edited meanwhile, or gone
        const qint64 id = trust == Trust::SamePathOnly ? inherit(row, seen)
                          : row.isAway                 ? insert(row, seen)
                                                       : move(row, seen);
        if (id <= 0) return false;
        _given.push_back(seen.fileId);
        LedgerRow now;
        now.id = id;
        now.trace = seen.trace;
        _content.push_back(std::move(now));
        return true;
    }

    bool finish() {
        if (_given.empty()) return true;
        if (!_ledger.retrace(_given, _roots)) return false;
        for (const LedgerRow& row : _content) {
            if (!_ledger.setContent(row, row.trace.identity, row.trace.digest)) return false;
        }
        return _ledger.giveToCatalogue(_given) && _ledger.countEdit();
    }
    [[nodiscard]] std::vector<qint64>& given() { return _given; }

private:
    qint64 insert(const LedgerRow& row, const Sighting& seen) {
        const qint64 id = _ledger.insert(seen.trace, marksFor(row, seen.trace));
        return id > 0 && _ledger.setFileId(id, seen.fileId) ? id : 0;
    }

    qint64 move(const LedgerRow& row, const Sighting& seen) {
        const Marks marks = marksFor(row, seen.trace);
        const bool isMoved = _ledger.setFileId(row.id, seen.fileId) &&
                             (marks == row.marks || _ledger.setMarks(row.id, marks));
        if (!isMoved || !clearFormer(row)) return 0;
        // The very photograph turned up: what took its place was another one.
        const bool isVeryFile =
            row.trace.identity.isKnown() && row.trace.identity == seen.trace.identity;
        if (!isVeryFile) return row.id;
        const auto heirs = _ledger.disinheritHeirs(row.id);
        if (!heirs) return 0;
        _given.insert(_given.end(), heirs->begin(), heirs->end());
        return row.id;
    }

    /// A row of the catalogue that the photograph has left, and that no scan has come to yet.
    bool clearFormer(const LedgerRow& row) {
        if (row.fileId == 0) return true;
        _given.push_back(row.fileId);
        const marks::MarksChange none{
            .stars = 0,
            .flag = false,
            .tags = QStringList(),
            .rotation = std::optional<std::optional<int>>(std::in_place)};
        return _ledger.changeCatalogue(std::array{row.fileId}, none);
    }

    /// The row stays, since its photograph may turn up yet; one generation is kept.
    qint64 inherit(const LedgerRow& row, const Sighting& seen) {
        const qint64 id = insert(row, seen);
        const bool isDone = id > 0 && _ledger.setInheritedFrom(id, row.id) &&
                            (row.fileId == 0 || _ledger.setFileId(row.id, 0)) &&
                            (row.inheritedFrom == 0 || (_ledger.remove(row.inheritedFrom) &&
                                                        _ledger.setInheritedFrom(row.id, 0)));
        return isDone ? id : 0;
    }

    marks::MarksLedger _ledger;
    const marks::RootPaths& _roots;
    std::vector<qint64> _given;
    std::vector<LedgerRow> _content;
};

} // namespace

std::optional<std::vector<qint64>> storeMatches(
    FMDatabase& both, const marks::RootPaths& roots, std::span<const LedgerRow> rows,
    std::span<const Sighting> sightings, std::span<const marks::Match> matches) {
    FMTransaction transaction(both);
    if (!transaction.isOpen() || !marks::bindLedger(both, roots)) return std::nullopt;
    Storing storing(both, roots);
    for (const marks::Match& match : matches) {
        if (!storing.store(rows[match.row], sightings[match.sighting], match.trust))
            return std::nullopt;
    }
    if (!storing.finish() || !transaction.commit()) return std::nullopt;
    return std::move(storing.given());
}
