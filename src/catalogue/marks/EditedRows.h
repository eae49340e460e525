#pragma once

#include <QString>

#include <optional>
#include <span>
#include <vector>

class FMDatabase;

namespace marks {

/// What is shown of a photograph's row and may be edited; tags are read when they are needed.
struct ShownRow {
    qint64 fileId = 0;
    int stars = 0; ///< 0 to 5
    bool flag = false;
    double rotateAngle = 0; ///< degrees counter-clockwise
    QString fileName;
    /// Of its row in the ledger; 0 for none.
    qint64 ledgerId = 0;
};

// On a connection to the catalogue with the ledger attached (`MarksLedger::connect`); nothing where
// it can't be read.

/// In the order of the ids; those without a row are left out.
[[nodiscard]] std::optional<std::vector<ShownRow>>
shownRows(FMDatabase& both, std::span<const qint64> fileIds);

/// Which rows of the catalogue have the photographs of the ledger's rows now: that of the row
/// itself, or, where another content came to its path, that of the row which took its marks over.
/// Parallel to the ids; 0 where there is none.
[[nodiscard]] std::optional<std::vector<qint64>>
presentFileIds(FMDatabase& both, std::span<const qint64> ledgerIds);

} // namespace marks
