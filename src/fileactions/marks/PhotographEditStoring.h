#pragma once

#include "fileactions/marks/MarksEdit.h"
#include "fileactions/marks/PhotographEdit.h"

namespace group {
class FolderPaths;
}

namespace fileactions {

/// What takes an edit back, or repeats it.
using StoredWay = std::variant<PhotographEdit, MarksEdit>;

/// An edit that is in the files.
struct StoredEdit {
    EditResult::Kind kind{};
    /// Of all that were changed.
    std::vector<marks::ShownRow> shown;
    qint64 missingCount = 0;
    /// Something is other than before: in photographs, in the ledger, or in the list of tags.
    bool hasChanged = false;
    bool isFlagged = false; ///< as in `EditResult`
    int turnedBy = 0;
    StoredWay inverse;
};

[[nodiscard]] EditResult::Kind kindOf(const PhotographEdit::Change& change);

/// Stores an edit of the user in catalogue and ledger, and on the disk where it is one of a name:
/// wholly, or the answer is why not. On the thread of the connection to both files.
[[nodiscard]] std::variant<StoredEdit, QString> storePhotographEdit(
    FMDatabase& both, const marks::RootPaths& mountedRoots, const group::FolderPaths& folders,
    const PhotographEdit& edit);

} // namespace fileactions
