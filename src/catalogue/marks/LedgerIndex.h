#pragma once

#include "catalogue/marks/Marks.h"

#include <QHash>
#include <QSet>

#include <vector>

namespace marks {

/// The ledger in memory, for asking of each photograph that a scan comes across whether it may be
/// one of the ledger's. On one thread.
class LedgerIndex {
public:
    LedgerIndex() = default;
    explicit LedgerIndex(std::vector<LedgerRow> rows);

    [[nodiscard]] bool isEmpty() const { return _rows.empty(); }
    [[nodiscard]] const std::vector<LedgerRow>& rows() const { return _rows; }
    /// The row of a photograph of the catalogue; nullptr for none.
    [[nodiscard]] const LedgerRow* rowOfFile(qint64 fileId) const;
    /// The catalogue's row went: the photograph is looked for.
    void fileWasRemoved(qint64 fileId);
    /// The photograph of the row with this id was found.
    void fileCame(qint64 rowId, qint64 fileId, const Trace& trace);

    /// Whether a photograph without marks has something in common with one of the ledger that may
    /// have come here. The trace needs path, size and identity.
    [[nodiscard]] bool mayKnow(const Trace& trace) const;
    /// The same at less cost, and sometimes true where the other is not.
    [[nodiscard]] bool
    mayKnowFile(const QString& fileName, qint64 size, const platform::FileIdentity& identity) const;
    /// Whether a photograph of the ledger has this size, wherever it is.
    [[nodiscard]] bool knowsSize(qint64 size) const { return _sizes.contains(size); }
    /// Whether the file with this identity is another one's of the ledger.
    [[nodiscard]] bool isOfAnother(const LedgerRow& row, const platform::FileIdentity& file) const;
    /// The rows with the path or the identity of the trace.
    [[nodiscard]] std::vector<LedgerRow> rowsLike(const Trace& trace) const;

private:
    using Position = std::size_t;

    void enter(Position position);

    std::vector<LedgerRow> _rows;
    QHash<qint64, Position> _byId;
    QHash<qint64, Position> _byFile;
    QMultiHash<quint64, Position> _byInode;
    QMultiHash<QByteArray, Position> _byPath;
    QSet<QString> _names;
    QSet<qint64> _sizes;
    /// Of photographs that are looked for.
    QSet<qint64> _sizesLookedFor;
    /// Of those that have a place, which they may have left without anybody's having seen it yet.
    QSet<std::pair<qint64, QByteArray>> _sizesAndNames;
};

} // namespace marks
