#include "catalogue/PBRemoveAliasOperation.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"

#include <algorithm>
#include <utility>

namespace {

/// What a removal asks of its connection, and scans don't.
class Setting {
public:
    Setting(FMDatabase& db, std::chrono::milliseconds longestWait) : _db(db) {
        _db.setLongestWait(longestWait);
        // Pages written before the commit would keep all readers out, the window among them.
        _db.executeUpdate(QStringLiteral("pragma cache_spill = off"));
    }
    ~Setting() {
        _db.executeUpdate(QStringLiteral("pragma cache_spill = on"));
        _db.setLongestWait({});
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

private:
    FMDatabase& _db;
};

/// Bit 0 says that the user removed the root.
bool setMark(FMDatabase& db, qint64 aliasId, bool isRemoved) {
    if (aliasId == 0) return true;
    return db.executeUpdate(
        isRemoved ? QStringLiteral("update FolderAlias set State = State | 1 where Id = ?")
                  : QStringLiteral("update FolderAlias set State = State & ~1 where Id = ?"),
        aliasId);
}

bool removeRows(const std::vector<qint64>& aliasIds, FMDatabase& db) {
    FMTransaction transaction(db, FMDatabase::Others::Read);
    if (!transaction.isOpen()) return false;
    PBCatalogue catalogue(db);
    const bool removed = std::ranges::all_of(
        aliasIds, [&](qint64 aliasId) { return catalogue.removeFolderAliasWithAllRows(aliasId); });
    return removed && transaction.commit();
}

} // namespace

PBRemoveAliasOperation::PBRemoveAliasOperation(
    Roots roots, FMDatabase& db, Ended ended, std::chrono::milliseconds longestWait)
    : _roots(std::move(roots)), _db(db), _ended(std::move(ended)), _longestWait(longestWait) {}

bool PBRemoveAliasOperation::remove(
    const Roots& roots, FMDatabase& db, std::chrono::milliseconds longestWait) {
    const Setting setting(db, longestWait);
    if (!setMark(db, roots.askedFor, true)) return false;
    if (removeRows(roots.aliasIds, db)) return true;
    // Where not even that can be stored, the next start removes it.
    static_cast<void>(setMark(db, roots.askedFor, false));
    return false;
}

void PBRemoveAliasOperation::main() {
    const bool isRemoved = remove(_roots, _db, _longestWait);
    if (_ended) _ended(isRemoved);
}
