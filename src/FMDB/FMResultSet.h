#pragma once

#include "FMDB/FMStatement.h"
#include "platform/values/PBValue.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <memory>

class FMDatabase;

/// A forward cursor over the rows of one query. It starts before the first row.
///
/// An invalid cursor (made by default, moved from, of a statement that could not be prepared, or
/// closed) answers false to `next`, and zero, empty or the null marker to everything else; its
/// `close` does nothing. Columns out of range and unknown names answer in the same way. The cursor
/// holds the values bound to its statement. It stays on the thread of its connection, which may be
/// closed or destroyed before it.
class FMResultSet {
public:
    FMResultSet() = default;
    ~FMResultSet() { close(); }
    FMResultSet(FMResultSet&& other) noexcept;
    FMResultSet& operator=(FMResultSet&& other) noexcept;
    FMResultSet(const FMResultSet&) = delete;
    FMResultSet& operator=(const FMResultSet&) = delete;

    /// Advances; true on a row. Waits for other connections' locks. At the end, or on an error, the
    /// cursor closes itself; a caller that stops earlier closes it.
    [[nodiscard]] bool next();
    /// Whether there may be rows that `next` did not come to: the statement could not be prepared,
    /// or an error ended the cursor. Ask it after the last row, before taking what was read for
    /// all that there is.
    [[nodiscard]] bool hadError() const { return _hadError; }
    void close();
    /// Whether the cursor is open.
    [[nodiscard]] bool isValid() const { return _statement != nullptr; }

    [[nodiscard]] int columnCount() const;
    /// The index of the column with this name, without regard to case; -1 if there is none. Of
    /// columns with the same name the last counts.
    [[nodiscard]] int columnIndexForName(const QString& name) const;

    [[nodiscard]] int intForColumnIndex(int index) const;
    [[nodiscard]] qint64 longLongIntForColumnIndex(int index) const;
    [[nodiscard]] double doubleForColumnIndex(int index) const;
    /// A null string for NULL.
    [[nodiscard]] QString stringForColumnIndex(int index) const;
    /// A copy of the bytes; a null array for NULL.
    [[nodiscard]] QByteArray dataForColumnIndex(int index) const;
    [[nodiscard]] bool columnIndexIsNull(int index) const;
    /// The value by the type that SQLite stores it with: bytes, a double, a 64-bit integer or a
    /// text; the null marker for NULL. Never absent.
    [[nodiscard]] PBValue objectForColumnIndex(int index) const;

    [[nodiscard]] int intForColumn(const QString& name) const;
    [[nodiscard]] qint64 longLongIntForColumn(const QString& name) const;
    [[nodiscard]] quint64 unsignedLongLongIntForColumn(const QString& name) const;
    [[nodiscard]] QString stringForColumn(const QString& name) const;
    [[nodiscard]] QByteArray dataForColumn(const QString& name) const;
    [[nodiscard]] bool columnIsNull(const QString& name) const;

private:
    friend class FMDatabase;
    FMResultSet(
        FMDatabase* parentDB, std::shared_ptr<FMStatement> statement, FMBoundBytes boundBytes);

    /// A cursor that never opened, for want of a statement.
    [[nodiscard]] static FMResultSet failed();
    void fail();
    [[nodiscard]] QString columnName(int index) const;
    [[nodiscard]] int typeOfColumn(int index) const;

    /// Cleared on close; the connection closes its cursors before it goes.
    FMDatabase* _parentDB = nullptr;
    /// Shared with the connection's cache, if that is on.
    std::shared_ptr<FMStatement> _statement;
    FMBoundBytes _boundBytes;
    bool _hadError = false;
    /// Filled on first use.
    mutable QHash<QString, int> _columnNameToIndexMap;
    mutable bool _columnNamesSetup = false;
};
