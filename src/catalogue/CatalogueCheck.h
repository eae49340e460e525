#pragma once

#include <QString>
#include <QStringView>

#include <functional>

class FMDatabase;

/// Looks through a catalogue file for damage that no statement has met yet.
namespace CatalogueCheck {

enum class Depth {
    /// Each row of each table is read, some at a time, so that nobody waits long for the file.
    Rows,
    /// SQLite's own check of each table with its indexes; others wait while one is looked through.
    Whole,
};

/// What is wrong first, in SQLite's words; empty for a file without a fault, and when the check was
/// asked to stop. The connection is the check's own. `shouldStop` is asked between its steps; a
/// step of the whole check is ended by interrupting the connection. Any thread.
[[nodiscard]] QString
firstDamage(FMDatabase& db, Depth depth, const std::function<bool()>& shouldStop);

} // namespace CatalogueCheck
