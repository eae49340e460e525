#pragma once

#include <QString>

class FMDatabase;

namespace group {
class FolderPaths;
}

namespace fileactions {

enum class RenameResult {
    Unchanged, ///< an empty text, or the name as it was
    Renamed,
    Gone, ///< the photograph is not in the catalogue any more
    Failed,
};

struct RenameOutcome {
    RenameResult result = RenameResult::Unchanged;
    /// Why it failed, in words for the user.
    QString reason = {};
    /// What it was called before, of one that was renamed.
    QString formerName = {};
};

/// Gives the photograph's file another name in the same folder, and its row in the catalogue the
/// same. A file that has that name already is never replaced; a catalogue that can't take the name
/// leaves the file its old one. On the thread of the connection.
[[nodiscard]] RenameOutcome renameImageFile(
    qint64 fileId, const QString& fileName, FMDatabase& db, const group::FolderPaths& folders);

} // namespace fileactions
