#pragma once

#include "FMDB/FMDatabase.h"

#include <QString>

/// A change of several rows that is stored whole or not at all. It begins when it is made and is
/// rolled back when it goes without having been committed. Until then the connection refuses every
/// update where it could not begin.
///
/// SQLite may end a transaction by itself when the disk is full or fails. What comes after that in
/// the same change would be stored row by row: the connection refuses it, and `commit` answers
/// false. The same holds after any statement that the disk failed; one that was refused for its
/// values leaves it to the caller whether to go on.
///
/// Within a transaction that is open already this one is a part of it: its `commit` stores nothing
/// yet, and if it goes uncommitted, the whole is rolled back and can't be committed any more.
/// Belongs to the thread of its connection, which outlives it.
class FMTransaction {
public:
    explicit FMTransaction(FMDatabase& db, FMDatabase::Others others = FMDatabase::Others::Wait);
    ~FMTransaction();
    FMTransaction(const FMTransaction&) = delete;
    FMTransaction& operator=(const FMTransaction&) = delete;

    /// Whether the change could begin and can still be committed.
    [[nodiscard]] bool isOpen() const;
    /// True when all is stored. Otherwise nothing is, and the transaction has ended.
    [[nodiscard]] bool commit();
    /// What SQLite said to the last statement of the transaction that failed.
    [[nodiscard]] QString errorMessage() const;

private:
    FMDatabase& _db;
    const bool _isPart;
    /// Neither committed nor rolled back.
    bool _isPending = true;
};
