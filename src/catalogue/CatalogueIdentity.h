#pragma once

#include <QtGlobal>

#include <optional>

class FMDatabase;

/// What binds `thumbnail.db` to the `files.db` whose ids its rows go by: a random number that both
/// keep in the field of their headers that SQLite leaves to programs (`pragma user_version`), so
/// that their tables stay as they are. 0 stands in a file that was never bound.
namespace CatalogueIdentity {

enum class Match {
    Agree,   ///< bound to one another, now if not before
    Differ,  ///< the thumbnails are, or may be, of other images: none of them must be shown
    Unknown, ///< one of the files can't be read or written; nothing was changed
};

/// Compares the files, and binds those that never were. Both have their tables. Thumbnails of ids
/// that the catalogue has not given yet, as where it was put back from an older copy, are removed.
[[nodiscard]] Match match(FMDatabase& files, FMDatabase& thumbnails);

/// The number in one of the files; nothing where it can't be read.
[[nodiscard]] std::optional<qint64> identityOf(FMDatabase& db);

/// Whether the files are bound to one another at this moment. False also where one can't be read.
[[nodiscard]] bool agree(FMDatabase& files, FMDatabase& thumbnails);

} // namespace CatalogueIdentity
