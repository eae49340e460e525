#pragma once

#include "FMDB/FMTransaction.h"
#include "fileactions/marks/MarksEdit.h"

#include <QHash>

#include <optional>

namespace fileactions {

/// An edit on its way into both files: one transaction, what was before, and what is now. Others
/// read both files meanwhile, as they were. False of a function: it can't be stored; what is not
/// finished goes. On the thread of the connection.
class EditTransaction {
public:
    EditTransaction(FMDatabase& both, const marks::RootPaths& mountedRoots);

    [[nodiscard]] bool store(const MarksEdit& edit);
    [[nodiscard]] bool store(const MarksEdit::OfPhotographs& part);
    [[nodiscard]] bool turn(const std::vector<qint64>& fileIds, int degrees);
    /// What the photographs have before any change; those without a row are counted as missing.
    [[nodiscard]] std::optional<std::vector<marks::MarksLedger::Held>>
    held(const std::vector<qint64>& fileIds);
    [[nodiscard]] bool
    setTagsOfLedgerRow(qint64 ledgerId, const QStringList& tags, const QStringList& before);
    /// The texts of these photographs' tags in the ledger follow the list of tags.
    [[nodiscard]] bool takeTexts(const std::vector<qint64>& fileIds);
    [[nodiscard]] bool finish();

    [[nodiscard]] PerformedEdit& performed() { return _performed; }
    [[nodiscard]] FMDatabase& connection() { return _both; }
    /// Why not, in SQLite's words.
    [[nodiscard]] QString reason() const;

private:
    /// The marks are those of the rows on show: one look at them tells what was and what is shown.
    [[nodiscard]] bool
    storeStarsAndFlag(const std::vector<qint64>& fileIds, const marks::MarksChange& change);
    void noteChanged(const std::vector<qint64>& fileIds);
    bool
    storeHeld(const std::vector<marks::MarksLedger::Held>& held, const marks::MarksChange& change);
    bool storePaths(const std::vector<MarksEdit::OfPath>& paths);
    bool storePath(const MarksEdit::OfPath& one, const marks::LedgerRow* row);
    bool storeLedgerRows(const std::vector<MarksEdit::OfLedgerRow>& rows);
    /// The ids as they are now.
    [[nodiscard]] std::optional<std::vector<qint64>> present(const MarksEdit::OfPhotographs& part);
    void addInverse(qint64 fileId, const marks::MarksChange& change);
    bool noteShown();

    FMDatabase& _both;
    const marks::RootPaths& _roots;
    FMTransaction _transaction;
    marks::MarksLedger _ledger;
    const bool _isBound;
    PerformedEdit _performed;
    QHash<QString, std::size_t> _inverseParts;
    /// `_performed.shown` has all of them as they are.
    bool _isShownKnown = true;
};

} // namespace fileactions
