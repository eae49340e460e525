#include "catalogue/CatalogueIdentity.h"

#include "FMDB/FMDatabase.h"

#include <QRandomGenerator>

#include <limits>
#include <optional>

namespace CatalogueIdentity {

namespace {

/// The first column of the statement's first row, 0 without a row; nothing where it can't be read.
std::optional<qint64> number(FMDatabase& db, const QString& sql) {
    FMResultSet row = db.executeQuery(sql);
    if (row.next()) return row.longLongIntForColumnIndex(0);
    if (row.hadError()) return std::nullopt;
    return 0;
}

bool setIdentity(FMDatabase& db, qint64 identity) {
    return db.executeUpdate(QStringLiteral("pragma user_version = %1").arg(identity));
}

qint64 newIdentity() {
    return QRandomGenerator::system()->bounded(1, std::numeric_limits<qint32>::max());
}

/// Gives thumbnails without an identity that of the catalogue, where they may be its own.
Match bind(FMDatabase& files, FMDatabase& thumbnails, qint64 identity) {
    if (identity == 0) {
        // Both are of a time when nothing was bound, or new.
        identity = newIdentity();
        if (!setIdentity(files, identity)) return Match::Unknown;
    } else {
        const auto any = number(thumbnails, QStringLiteral("select 1 from Thumbnail limit 1"));
        if (!any) return Match::Unknown;
        if (*any != 0) return Match::Differ;
    }
    return setIdentity(thumbnails, identity) ? Match::Agree : Match::Unknown;
}

/// Answers whether no thumbnail is left of an id that was never given.
bool removeUngiven(FMDatabase& thumbnails, qint64 lastGiven) {
    // The ends of the key tell whether there is anything to write.
    const auto below =
        number(thumbnails, QStringLiteral("select 1 from Thumbnail where FileId < 1 limit 1"));
    const auto last = number(thumbnails, QStringLiteral("select max(FileId) from Thumbnail"));
    if (below == 0 && last && *last <= lastGiven) return true;
    // All of them: a new file is made sooner.
    if (lastGiven == 0) return false;
    return thumbnails.executeUpdate(
        QStringLiteral("delete from Thumbnail where FileId < 1 or FileId > ?"), lastGiven);
}

} // namespace

std::optional<qint64> identityOf(FMDatabase& db) {
    return number(db, QStringLiteral("pragma user_version"));
}

Match match(FMDatabase& files, FMDatabase& thumbnails) {
    const auto wanted = identityOf(files);
    const auto found = identityOf(thumbnails);
    const auto lastGiven =
        number(files, QStringLiteral("select seq from sqlite_sequence where name = 'ImageFile'"));
    if (!wanted || !found || !lastGiven) return Match::Unknown;
    if (*found != 0 && *found != *wanted) return Match::Differ;
    if (*found == 0) {
        if (const Match bound = bind(files, thumbnails, *wanted); bound != Match::Agree)
            return bound;
    }
    return removeUngiven(thumbnails, *lastGiven) ? Match::Agree : Match::Differ;
}

bool agree(FMDatabase& files, FMDatabase& thumbnails) {
    const auto wanted = identityOf(files);
    return wanted && *wanted != 0 && wanted == identityOf(thumbnails);
}

} // namespace CatalogueIdentity
