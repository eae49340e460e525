#include "scan/marks/MarksRestorer.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/marks/MarksFile.h"
#include "catalogue/marks/PhotographFile.h"
#include "scan/marks/MarksStoring.h"

#include <QFile>

using marks::LedgerRow;
using marks::Match;
using marks::Sighting;

namespace {

/// Marks come back so many at a time, so that a scan that is stopped has not worked for nothing.
constexpr std::size_t storedTogether = 256;

Sighting sightingOf(
    qint64 fileId, const QString& folderPath, const QString& fileName, qint64 size,
    double modificationDate, const platform::FileIdentity& identity) {
    Sighting seen;
    seen.fileId = fileId;
    seen.trace.rootPath = QFile::encodeName(folderPath);
    seen.trace.relativePath = QFile::encodeName(fileName);
    seen.trace.size = size;
    seen.trace.modificationDate = modificationDate;
    seen.trace.identity = identity;
    return seen;
}

} // namespace

MarksRestorer::MarksRestorer(Environment environment) : _environment(std::move(environment)) {}

MarksRestorer::~MarksRestorer() = default;

bool MarksRestorer::isOpen() {
    if (!_both) _both = _environment.connect();
    return _both != nullptr;
}

void MarksRestorer::scanBegins() {
    refresh();
}

void MarksRestorer::refresh() {
    if (!isOpen()) return;
    FMResultSet row = _both->executeQuery(QStringLiteral("pragma marks.data_version"));
    const qint64 version = row.next() ? row.longLongIntForColumnIndex(0) : -1;
    row.close();
    const bool isSame = version == _dataVersion && _roots == _environment.mountedRoots();
    if (version < 0 || (isSame && !_mustRead)) return;
    _mustRead = false;
    if (readLedger()) {
        _dataVersion = version;
    } else {
        _mustRead = true;
    }
}

bool MarksRestorer::readLedger() {
    _roots = _environment.mountedRoots();
    if (!marks::ensureLedgerIsBound(*_both, _roots)) return false;
    marks::MarksLedger ledger(*_both);
    auto rows = ledger.rows(_roots);
    if (!rows) return false;
    std::vector<qint64> moved;
    QHash<QByteArray, QByteArray> movedRoots;
    for (const LedgerRow& row : *rows) {
        if (row.hasMoved && !row.isAway) moved.push_back(row.fileId);
        if (!row.formerRootPath.isEmpty())
            movedRoots.insert(row.formerRootPath, row.trace.rootPath);
    }
    for (LedgerRow& row : *rows) {
        const auto root = movedRoots.constFind(row.trace.rootPath);
        if (row.fileId == 0 && root != movedRoots.constEnd()) row.trace.rootPath = *root;
    }
    for (auto root = movedRoots.cbegin(); root != movedRoots.cend(); ++root) {
        if (!ledger.followRoot(root.key(), root.value())) return false;
    }
    if (!moved.empty() && ledger.retrace(moved, _roots)) _environment.ledgerDidChange();
    _index = marks::LedgerIndex(*std::move(rows));
    return true;
}

void MarksRestorer::sawPhotograph(
    const group::ImageFileRow& row, const QString& folderPath,
    const platform::ResourceValues& values) {
    if (_index.rowOfFile(row.id)) return;
    if (row.fileStars.toInteger() > 0 || row.fileFlag.toInteger() != 0 ||
        !row.tag.toText().isEmpty()) {
        _unrecorded.push_back(row.id);
        return;
    }
    if (_index.mayKnowFile(row.fileName, values.fileSize, values.identity)) {
        note(
            sightingOf(
                row.id, folderPath, row.fileName, values.fileSize, values.modificationDate,
                values.identity),
            false);
    }
}

void MarksRestorer::note(Sighting sighting, bool isInserted) {
    const bool mayBe = _index.mayKnow(sighting.trace);
    if (!mayBe && !_index.knowsSize(sighting.trace.size)) return;
    if (mayBe || isInserted) _isSomethingNew = true;
    const qint64 fileId = sighting.fileId;
    _seen.insert_or_assign(fileId, Seen{std::move(sighting), isInserted});
}

bool MarksRestorer::isExchanged(qint64 fileId, const platform::FileIdentity& identity) const {
    const LedgerRow* row = _index.rowOfFile(fileId);
    return row && _index.isOfAnother(*row, identity);
}

bool MarksRestorer::isReplaced(qint64 fileId, const platform::ResourceValues& values) const {
    const LedgerRow* row = _index.rowOfFile(fileId);
    if (!row || !row->trace.identity.isKnown() || !values.identity.isKnown()) return false;
    return row->trace.identity != values.identity &&
           (row->trace.size != values.fileSize ||
            row->trace.modificationDate != values.modificationDate ||
            _index.isOfAnother(*row, values.identity));
}

void MarksRestorer::rowsWereRemoved(const std::vector<qint64>& fileIds) {
    for (const qint64 fileId : fileIds) {
        if (_index.rowOfFile(fileId)) {
            _index.fileWasRemoved(fileId);
            _isSomethingNew = true;
        }
        _seen.erase(fileId);
    }
}

void MarksRestorer::restoreInserted(const std::vector<InsertedPhotograph>& photographs) {
    refresh();
    if (_index.isEmpty()) return;
    std::vector<Sighting> seen;
    std::vector<LedgerRow> rows;
    for (const InsertedPhotograph& photograph : photographs) {
        const auto column = [&](const QString& name) {
            return valueForKey(*photograph.columns, name);
        };
        const QString name = column(QStringLiteral("FileName")).toText();
        const qint64 size = column(QStringLiteral("FileSize")).toInteger();
        if (!_index.mayKnowFile(name, size, photograph.identity)) continue;
        Sighting one = sightingOf(
            photograph.fileId, photograph.folderPath, name, size,
            column(QStringLiteral("ModificationDate")).toDouble(), photograph.identity);
        note(one, true);
        auto alike = _index.rowsLike(one.trace);
        if (alike.empty()) continue;
        seen.push_back(std::move(one));
        rows.insert(rows.end(), alike.begin(), alike.end());
    }
    if (rows.empty()) return;
    std::ranges::sort(rows, {}, &LedgerRow::id);
    const auto isSame = [](const auto& one, const auto& other) { return one.id == other.id; };
    rows.erase(std::unique(rows.begin(), rows.end(), isSame), rows.end());
    const auto matches = marks::matchPhotographs(
        {.rows = rows,
         .sightings = seen,
         .place = [](const LedgerRow& row) { return marks::placeOf(row, false); },
         .digest = {},
         .isAllSeen = false});
    std::unordered_map<qint64, PBDictionary*> columnsOf;
    for (const InsertedPhotograph& photograph : photographs)
        columnsOf.emplace(photograph.fileId, photograph.columns);
    std::vector<qint64> others;
    for (const qint64 fileId : store(rows, seen, matches)) {
        const auto found = columnsOf.find(fileId);
        if (found != columnsOf.end()) {
            readMarks(fileId, *found->second);
        } else {
            others.push_back(fileId);
        }
    }
    if (!others.empty()) _environment.marksCameBack(std::move(others));
}

void MarksRestorer::readMarks(qint64 fileId, PBDictionary& columns) {
    FMResultSet row = _both->executeQuery(
        QStringLiteral("select FileStars,FileFlag,Tag,RotateAngle from ImageFile where Id = ?"),
        fileId);
    if (!row.next()) return;
    columns[QStringLiteral("FileStars")] = row.objectForColumnIndex(0);
    columns[QStringLiteral("FileFlag")] = row.objectForColumnIndex(1);
    columns[QStringLiteral("Tag")] = row.objectForColumnIndex(2);
    columns[QStringLiteral("RotateAngle")] = row.objectForColumnIndex(3);
}

std::vector<Sighting> MarksRestorer::openSightings() {
    // Which have something in common with a photograph that is looked for shows only now.
    std::vector<qint64> fileIds;
    std::erase_if(_seen, [this](const auto& one) { return _index.rowOfFile(one.first); });
    for (const auto& [fileId, seen] : _seen) {
        if (seen.isInserted || _index.mayKnow(seen.sighting.trace)) fileIds.push_back(fileId);
    }
    std::vector<Sighting> open;
    const auto traces = marks::MarksLedger(*_both).traces(fileIds, _roots);
    if (!traces) return open;
    for (const auto& [fileId, trace] : *traces) {
        Sighting& seen = _seen.at(fileId).sighting;
        marks::Trace now = trace;
        now.identity = seen.trace.identity;
        now.digest = seen.trace.digest;
        seen.trace = std::move(now);
        seen.isOnRemovableVolume = _environment.isRemovable(trace.rootPath);
        open.push_back(seen);
    }
    return open;
}

void MarksRestorer::restoreRest(
    const platform::Operation& operation, bool isEndOfScan,
    const std::function<void()>& checkpoint) {
    recordMarked();
    if (_seen.empty() || !_isSomethingNew || !isOpen() || !readLedger()) return;
    std::vector<Sighting> open = openSightings();
    if (open.empty()) return;
    const auto isCancelled = [&] { return operation.isCancelled(); };
    const auto digest = [&](const Sighting& seen) {
        Sighting& kept = open[static_cast<std::size_t>(&seen - open.data())];
        if (!kept.trace.digest.isEmpty() || isCancelled()) return kept.trace.digest;
        if (checkpoint) checkpoint();
        kept.trace.digest = marks::digestOfFile(kept.trace.path(), isCancelled);
        if (const auto found = _seen.find(kept.fileId); found != _seen.end())
            found->second.sighting.trace.digest = kept.trace.digest;
        return kept.trace.digest;
    };
    const std::vector<LedgerRow> rows = _index.rows();
    const auto matches = marks::matchPhotographs(
        {.rows = rows,
         .sightings = open,
         .place =
             [&](const LedgerRow& row) {
                 return isCancelled() ? marks::Place::Unknown : marks::placeOf(row, true);
             },
         .digest = digest,
         .isEndOfScan = isEndOfScan});
    // What a cancelled scan did not see may be anywhere.
    if (isCancelled()) return;
    if (isEndOfScan) _isSomethingNew = false;
    std::vector<qint64> given;
    for (std::size_t begin = 0; begin < matches.size(); begin += storedTogether) {
        const auto end = std::min(matches.size(), begin + storedTogether);
        const auto stored = store(
            rows, open,
            {matches.begin() + static_cast<std::ptrdiff_t>(begin),
             matches.begin() + static_cast<std::ptrdiff_t>(end)});
        given.insert(given.end(), stored.begin(), stored.end());
    }
    if (!given.empty()) _environment.marksCameBack(std::move(given));
}

std::vector<qint64> MarksRestorer::store(
    const std::vector<LedgerRow>& rows, const std::vector<Sighting>& sightings,
    const std::vector<Match>& matches) {
    if (matches.empty()) return {};
    // Those that were just inserted are known by path, size and date only.
    std::vector<Sighting> full = sightings;
    std::vector<qint64> fileIds;
    for (const Match& match : matches)
        fileIds.push_back(sightings[match.sighting].fileId);
    const auto traces = marks::MarksLedger(*_both).traces(fileIds, _roots);
    if (!traces || traces->size() != matches.size()) return {};
    for (std::size_t index = 0; index < matches.size(); ++index) {
        marks::Trace& trace = full[matches[index].sighting].trace;
        marks::Trace known = (*traces)[index].second;
        known.identity = trace.identity;
        known.digest = trace.digest;
        trace = std::move(known);
    }
    const auto given = storeMatches(*_both, _roots, rows, full, matches);
    if (!given) return {};
    for (const Match& match : matches)
        _seen.erase(sightings[match.sighting].fileId);
    // This connection's own changes are not counted; most are simple enough to follow.
    for (const Match& match : matches) {
        if (rows[match.row].isAway || match.trust == marks::Trust::SamePathOnly) {
            _dataVersion = -1;
        } else {
            _index.fileCame(
                rows[match.row].id, full[match.sighting].fileId, full[match.sighting].trace);
        }
    }
    _environment.ledgerDidChange();
    return *given;
}

void MarksRestorer::recordMarked() {
    const std::vector<qint64> fileIds = std::exchange(_unrecorded, {});
    if (fileIds.empty() || !isOpen()) return;
    FMTransaction transaction(*_both);
    marks::MarksLedger ledger(*_both);
    const bool isRecorded = marks::bindLedger(*_both, _roots) &&
                            ledger.takeFromCatalogue(fileIds, _roots) && ledger.countEdit() &&
                            transaction.commit();
    if (!isRecorded) return;
    _dataVersion = -1;
    _environment.ledgerDidChange();
}
