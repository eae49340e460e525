#include "catalogue/ThumbnailCleaning.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/CatalogueIdentity.h"

#include <optional>
#include <vector>

namespace {

using Outcome = ThumbnailCleaning::Outcome;

/// Nothing where they can't all be read.
template <typename... Arguments>
std::optional<std::vector<qint64>>
numbers(FMDatabase& db, const QString& sql, Arguments... arguments) {
    std::vector<qint64> found;
    FMResultSet rows = db.executeQuery(sql, arguments...);
    while (rows.next())
        found.push_back(rows.longLongIntForColumnIndex(0));
    if (rows.hadError()) return std::nullopt;
    return found;
}

/// Thumbnails without a photograph, to be removed together.
class Orphans {
public:
    explicit Orphans(FMDatabase& thumbnails) : _thumbnails(thumbnails) {}

    /// Takes those among the ids, as far as there is room; false where they can't be read.
    [[nodiscard]] bool take(qint64 first, qint64 last) {
        if (first > last || isFull()) return true;
        const auto found = numbers(
            _thumbnails,
            QStringLiteral("select FileId from Thumbnail where FileId between ? and ? "
                           "order by FileId limit ?"),
            first, last, ThumbnailCleaning::removedAtOnce - _count);
        if (!found) return false;
        if (found->empty()) return true;
        _count += static_cast<int>(found->size());
        _last = found->back();
        _ranges.emplace_back(first, _last);
        return true;
    }
    [[nodiscard]] bool isFull() const { return _count >= ThumbnailCleaning::removedAtOnce; }
    /// The greatest id that was taken.
    [[nodiscard]] qint64 last() const { return _last; }

    [[nodiscard]] bool remove() const {
        if (_ranges.empty()) return true;
        FMTransaction transaction(_thumbnails);
        for (const auto& [first, last] : _ranges) {
            const bool removed = _thumbnails.executeUpdate(
                QStringLiteral("delete from Thumbnail where FileId between ? and ?"), first, last);
            if (!removed) return false;
        }
        return transaction.commit();
    }

private:
    FMDatabase& _thumbnails;
    std::vector<std::pair<qint64, qint64>> _ranges;
    int _count = 0;
    qint64 _last = 0;
};

} // namespace

Outcome ThumbnailCleaning::step(FMDatabase& files, FMDatabase& thumbnails) {
    if (!CatalogueIdentity::agree(files, thumbnails)) return Outcome::Unknown;
    // First the last id that was given: a photograph that comes meanwhile has a greater one.
    const auto given =
        numbers(files, QStringLiteral("select seq from sqlite_sequence where name = 'ImageFile'"));
    if (!given) return Outcome::Unknown;
    const qint64 lastGiven = given->empty() ? 0 : given->front();
    const auto ids = numbers(
        files,
        QStringLiteral("select Id from ImageFile where Id between ? and ? order by Id limit ?"),
        _next, lastGiven, lookedAtAtOnce);
    if (!ids) return Outcome::Unknown;

    Orphans orphans(thumbnails);
    qint64 next = _next;
    for (const qint64 id : *ids) {
        if (!orphans.take(next, id - 1)) return Outcome::Unknown;
        next = id + 1;
    }
    if (ids->size() < lookedAtAtOnce) {
        if (!orphans.take(next, lastGiven)) return Outcome::Unknown;
        next = lastGiven + 1;
    }
    if (!orphans.remove()) return Outcome::Unknown;
    const bool isDone = next > lastGiven && !orphans.isFull();
    _next = isDone ? 1 : orphans.isFull() ? orphans.last() + 1 : next;
    return isDone ? Outcome::Done : Outcome::More;
}
