#pragma once

#include <QString>

class FMDatabase;
class PBImageFileItem;

namespace group {
class FolderPaths;
}

namespace fileactions {

enum class RenameResult {
    Unchanged, ///< an empty text, or the name as it was
    Renamed,
    Failed,
};

struct RenameOutcome {
    RenameResult result = RenameResult::Unchanged;
    /// Why it failed, in words for the user.
    QString reason;
};

/// Gives the image's file another name in the same folder, and the image the same in the catalogue.
/// A file that has that name already is never replaced; a catalogue that can't take the name gives
/// the file its old one back. Main thread, with its connection.
[[nodiscard]] RenameOutcome renameImageFile(
    PBImageFileItem& item, const QString& fileName, FMDatabase& mainFileDb,
    const group::FolderPaths& folders);

} // namespace fileactions
