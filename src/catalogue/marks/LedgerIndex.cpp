#include "catalogue/marks/LedgerIndex.h"

#include <QFile>

#include <algorithm>

namespace marks {

LedgerIndex::LedgerIndex(std::vector<LedgerRow> rows) : _rows(std::move(rows)) {
    for (Position position = 0; position < _rows.size(); ++position)
        enter(position);
}

void LedgerIndex::enter(Position position) {
    const LedgerRow& row = _rows[position];
    const Trace& trace = row.trace;
    _byId.insert(row.id, position);
    _byPath.insert(trace.path(), position);
    _names.insert(QFile::decodeName(trace.fileName()));
    if (trace.identity.isKnown()) _byInode.insert(trace.identity.inode, position);
    if (trace.size >= 0) _sizes.insert(trace.size);
    if (row.fileId == 0 || row.isAway) _sizesLookedFor.insert(trace.size);
    if (row.fileId == 0) return;
    _byFile.insert(row.fileId, position);
    _sizesAndNames.insert({trace.size, trace.fileName()});
}

void LedgerIndex::fileCame(qint64 rowId, qint64 fileId, const Trace& trace) {
    const auto found = _byId.constFind(rowId);
    if (found == _byId.constEnd()) return;
    const Position position = *found;
    LedgerRow& row = _rows[position];
    _byFile.remove(row.fileId);
    _byPath.remove(row.trace.path(), position);
    _byInode.remove(row.trace.identity.inode, position);
    row.fileId = fileId;
    row.isAway = false;
    row.trace = trace;
    enter(position);
}

bool LedgerIndex::mayKnowFile(
    const QString& fileName, qint64 size, const platform::FileIdentity& identity) const {
    return (identity.isKnown() && _byInode.contains(identity.inode)) || _sizes.contains(size) ||
           _names.contains(fileName);
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
