#pragma once

#include "catalogue/marks/MarksLedger.h"

#include <QByteArray>
#include <QString>

#include <variant>
#include <vector>

class FMDatabase;

namespace fileactions {

/// What the user says of photographs: a value. Panels, menus, keys and imports make one, and
/// `MarksEditor` performs it; nobody else writes marks.
struct MarksEdit {
    struct OfPhotographs {
        std::vector<qint64> fileIds;
        marks::MarksChange change;
    };
    /// A photograph that is not in the catalogue: the ledger keeps its marks until it comes.
    struct OfPath {
        QByteArray path; ///< absolute, as the disk spells it
        marks::MarksChange change;
    };
    std::vector<OfPhotographs> photographs;
    std::vector<OfPath> paths;

    /// The same change for all of them.
    [[nodiscard]] static MarksEdit
    ofPhotographs(std::vector<qint64> fileIds, const marks::MarksChange& change);
    [[nodiscard]] bool isEmpty() const { return photographs.empty() && paths.empty(); }
};

/// An edit that is in both files.
struct PerformedEdit {
    /// Those whose marks are others now; the rest had them already.
    std::vector<qint64> fileIds;
    /// Brings back what was before.
    MarksEdit inverse;
};

/// Stores the edit in catalogue and ledger, in one transaction over both: either it is in both or
/// in none, and then the answer is why not. The connection is one to both files; on its thread.
[[nodiscard]] std::variant<PerformedEdit, QString>
storeEdit(FMDatabase& both, const marks::RootPaths& mountedRoots, const MarksEdit& edit);

} // namespace fileactions
