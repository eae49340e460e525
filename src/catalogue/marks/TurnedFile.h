#pragma once

#include <QByteArray>

#include <optional>

class FMDatabase;

namespace marks {

/// How the user turned the file with this path, size (bytes) and date (seconds since 1970), which
/// need not be in the catalogue: degrees in [0, 360) counter-clockwise; nothing where he did not.
/// The connection has the ledger attached.
[[nodiscard]] std::optional<int>
rotationOfFile(FMDatabase& both, const QByteArray& path, qint64 size, double modificationDate);

} // namespace marks
