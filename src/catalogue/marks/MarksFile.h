#pragma once

#include "catalogue/marks/MarksLedger.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

/// The ledger's file: what state it is in, what replaces it, and that it goes with `files.db`.
namespace marks {

enum class FileState {
    Good,
    Missing, ///< no file, or one without anything in it
    Damaged, ///< no database, or a malformed one
    Unknown, ///< it could not be looked at: locked, unreadable, on a disk that fails
};

/// Reads the whole file and the ledger's tables in it. Waits for locks for a bounded time. Any
/// thread.
[[nodiscard]] FileState stateOfLedger(const QString& path);

/// Sees to it, before anything else opens the ledger, that there is one: makes a missing one, and
/// replaces a damaged one, which is kept beside it, by the newest good snapshot. Answers what the
/// user should be told, in one sentence; empty for nothing.
[[nodiscard]] QString settleLedger(const QString& path, const QString& snapshotFolder);

/// Makes both files of one time and of one catalogue, within the transaction that is open on the
/// connection to both, before anything else is done in it. Mostly they are, and nothing happens. A
/// catalogue that was begun anew has none of the ledger's photographs; of two files of one
/// catalogue the one with fewer edits is an older copy, and takes the marks of the other.
[[nodiscard]] bool bindLedger(FMDatabase& both, const RootPaths& roots);
/// The same for whoever only reads, with a transaction of its own where there is something to do.
[[nodiscard]] bool ensureLedgerIsBound(FMDatabase& both, const RootPaths& roots);

/// Writes a copy of the ledger into the folder, unless the newest one there has all edits: whole,
/// under a temporary name, looked at, and then renamed. Removes those that are too many. `marks` is
/// a connection to the ledger alone. False if it failed.
[[nodiscard]] bool
takeSnapshot(FMDatabase& marks, const QString& snapshotFolder, const QDateTime& now);

/// Of the names of snapshots those that are not kept: all but the last ten, and of the others the
/// last of each month.
[[nodiscard]] QStringList dispensableSnapshots(QStringList names);

} // namespace marks
