#pragma once

#include "catalogue/marks/EditedRows.h"
#include "catalogue/marks/MarksLedger.h"

#include <QByteArray>
#include <QString>

#include <variant>
#include <vector>

class FMDatabase;

namespace fileactions {

/// Marks that photographs are to have, whatever they have now: what an import brings, and what
/// takes an edit back.
struct MarksEdit {
    struct OfPhotographs {
        std::vector<qint64> fileIds;
        marks::MarksChange change;
        /// Parallel to the ids, or empty: their rows in the ledger, by which photographs are found
        /// whose rows of the catalogue were made anew.
        std::vector<qint64> ledgerIds = {};
    };
    /// A photograph that is not in the catalogue: the ledger keeps its marks until it comes.
    struct OfPath {
        QByteArray path; ///< absolute, as the disk spells it
        marks::MarksChange change;
    };
    /// The same, by its row in the ledger.
    struct OfLedgerRow {
        qint64 ledgerId = 0;
        QStringList tags;
    };
    std::vector<OfPhotographs> photographs;
    std::vector<OfPath> paths;
    std::vector<OfLedgerRow> ledgerRows = {};
    /// Are in the list of tags, whether a photograph has them or not.
    QStringList tagsInList = {};

    [[nodiscard]] bool isEmpty() const {
        return photographs.empty() && paths.empty() && ledgerRows.empty() && tagsInList.isEmpty();
    }
};

/// The same for changes that are equal, and for those only.
[[nodiscard]] QString keyOf(const marks::MarksChange& change);

/// An edit that is in both files.
struct PerformedEdit {
    /// Those whose marks are others now; the rest had them already.
    std::vector<qint64> fileIds;
    /// Brings back what was before.
    MarksEdit inverse;
    /// The rows of `fileIds` as they are now, as far as they are there.
    std::vector<marks::ShownRow> shown = {};
    /// Photographs of the edit that have no row any more.
    qint64 missingCount = 0;
};

/// Stores the edit in catalogue and ledger, in one transaction over both: either it is in both or
/// in none, and then the answer is why not. The connection is one to both files; on its thread.
[[nodiscard]] std::variant<PerformedEdit, QString>
storeEdit(FMDatabase& both, const marks::RootPaths& mountedRoots, const MarksEdit& edit);

} // namespace fileactions
