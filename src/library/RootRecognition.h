#pragma once

#include <QString>

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <vector>

class FMDatabase;

/// A photograph of a folder root, as the catalogue has it.
struct CataloguedName {
    QString relativePath; ///< below the root
    qint64 fileSize = 0;  ///< bytes
};

/// So many photographs of the root at most, from as many of its folders as possible. Nothing where
/// the catalogue can't be read. On the connection's thread.
[[nodiscard]] std::optional<std::vector<CataloguedName>>
cataloguedNames(FMDatabase& db, qint64 aliasId, std::size_t most = 200);

/// Whether a folder is that of a root by the photographs in it, where it is another one by what the
/// file system says: put back from a backup, or copied to another disk.
enum class Recognition {
    Same,     ///< at least half of the photographs are there, with their sizes
    Other,    ///< none of them is there
    Undecided ///< some are there, or not enough of them could be looked at, or none is known
};

/// Looks for each photograph. `isOver`, asked before each, ends the looking; what was not looked at
/// is unknown. Waits for the disk; any thread.
[[nodiscard]] Recognition recogniseFolder(
    const QString& folder, std::span<const CataloguedName> names,
    const std::function<bool()>& isOver);
