#pragma once

#include <QString>

#include <optional>

/// Saves what is readable of a damaged `files.db`.
namespace CatalogueRepair {

/// Copies all rows that can be read into a new catalogue, a file that is not there yet, and answers
/// how many photographs are among them. Ids stay, and none that was given is given again. The
/// damaged file is only read. Nothing when the new file could not be written: it is gone then.
[[nodiscard]] std::optional<qint64> copyReadable(const QString& damaged, const QString& copy);

} // namespace CatalogueRepair
