#include "catalogue/marks/LedgerIndex.h"

#include <algorithm>

namespace marks {

LedgerIndex::LedgerIndex(std::vector<LedgerRow> rows) : _rows(std::move(rows)) {
    for (Position position = 0; position < _rows.size(); ++position) {
        const LedgerRow& row = _rows[position];
        const Trace& trace = row.trace;
        _byPath.insert(trace.path(), position);
        if (trace.identity.isKnown()) _byInode.insert(trace.identity.inode, position);
        if (row.fileId == 0) {
            _sizesLookedFor.insert(trace.size);
        } else {
            _byFile.insert(row.fileId, position);
            _sizesAndNames.insert({trace.size, trace.fileName()});
            if (row.isAway) _sizesLookedFor.insert(trace.size);
        }
    }
}

const LedgerRow* LedgerIndex::rowOfFile(qint64 fileId) const {
    const auto found = _byFile.constFind(fileId);
    return found == _byFile.constEnd() ? nullptr : &_rows[*found];
}

void LedgerIndex::fileWasRemoved(qint64 fileId) {
    const auto found = _byFile.constFind(fileId);
    if (found == _byFile.constEnd()) return;
    LedgerRow& row = _rows[*found];
    row.fileId = 0;
    _sizesLookedFor.insert(row.trace.size);
    _byFile.erase(found);
}

bool LedgerIndex::mayKnow(const Trace& trace) const {
    if (isEmpty()) return false;
    return (trace.identity.isKnown() && _byInode.contains(trace.identity.inode)) ||
           _sizesLookedFor.contains(trace.size) ||
           _sizesAndNames.contains({trace.size, trace.fileName()}) ||
           _byPath.contains(trace.path());
}

bool LedgerIndex::isOfAnother(const LedgerRow& row, const platform::FileIdentity& file) const {
    if (!file.isKnown() || !row.trace.identity.isKnown() || row.trace.identity == file)
        return false;
    const auto [begin, end] = _byInode.equal_range(file.inode);
    return std::any_of(
        begin, end, [&](Position other) { return _rows[other].trace.identity == file; });
}

std::vector<LedgerRow> LedgerIndex::rowsLike(const Trace& trace) const {
    std::vector<Position> positions;
    const auto add = [&](const auto& range) {
        for (auto found = range.first; found != range.second; ++found)
            positions.push_back(*found);
    };
    add(_byPath.equal_range(trace.path()));
    if (trace.identity.isKnown()) add(_byInode.equal_range(trace.identity.inode));
    std::vector<LedgerRow> rows;
    for (const Position position : positions)
        rows.push_back(_rows[position]);
    return rows;
}

} // namespace marks
