#pragma once

#include <QByteArray>

namespace platform {

/// Whether anybody on this machine has a file open for writing. Unknown where the kernel doesn't
/// tell: files of other users, file systems without leases, servers on which others may write.
enum class Writers { None, Some, Unknown };

/// Asks the kernel; changes nothing. Any thread.
[[nodiscard]] Writers writersOfFile(const QByteArray& path);

} // namespace platform
