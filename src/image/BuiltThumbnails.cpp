#include "image/BuiltThumbnails.h"

#include "FMDB/FMTransaction.h"
#include "catalogue/PBCatalogue.h"
#include "image/PBBuildThumbOperation.h"
#include "platform/program/StandardError.h"

#include <sqlite3.h>

#include <optional>
#include <span>
#include <utility>

namespace {

using Thumbnail = BuiltThumbnails::Thumbnail;

constexpr std::size_t mostTogether = 32;
constexpr std::chrono::milliseconds longestWait(50);

/// How many of them came into the table: one that is there already stays. Nothing where the
/// catalogue takes none.
std::optional<quint64> insert(FMDatabase& db, std::span<const Thumbnail> thumbnails) {
    quint64 inserted = 0;
    for (const auto& [operation, data] : thumbnails) {
        if (PBCatalogue(db).insertThumbnailWithFileId(operation->fileId(), data)) {
            ++inserted;
        } else if ((db.lastErrorCode() & 0xff) != SQLITE_CONSTRAINT) {
            return std::nullopt;
        }
    }
    return inserted;
}

void storeTogether(BuildThumbServices& services, std::span<const Thumbnail> thumbnails) {
    FMTransaction transaction(services.db);
    const auto inserted = insert(services.db, thumbnails);
    if (inserted && transaction.commit()) {
        services.built += *inserted;
        return;
    }
    services.failed += thumbnails.size();
    if (services.toldFailure.exchange(true)) return;
    platform::complain(QStringLiteral("thumbnails can't be stored in %1 (%2); those that are there "
                                      "stay")
                           .arg(services.db.databasePath(), transaction.errorMessage()));
}

} // namespace

void BuiltThumbnails::add(Thumbnail thumbnail) {
    if (_waiting.empty()) _since = _clock();
    _waiting.push_back(std::move(thumbnail));
}

std::chrono::nanoseconds BuiltThumbnails::patience() const {
    if (_waiting.size() >= mostTogether) return std::chrono::nanoseconds(0);
    return longestWait - (_clock() - _since);
}

void BuiltThumbnails::store(BuildThumbServices& services) {
    const std::vector<Thumbnail> thumbnails = std::exchange(_waiting, {});
    if (thumbnails.empty()) return;
    storeTogether(services, thumbnails);
    if (!services.didBuild) return;
    for (const Thumbnail& thumbnail : thumbnails)
        if (!thumbnail.operation->isCancelled()) services.didBuild(thumbnail.operation);
}
