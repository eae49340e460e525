#pragma once

namespace bench {

/// Measures the removal of a folder root with 50,000 photographs against SQLite's own deletes, and
/// how long another connection, such as the window's, waits meanwhile. Prints a line for each;
/// answers whether they meet their targets.
[[nodiscard]] bool measureRootRemoval();

} // namespace bench
