#pragma once

namespace platform {

/// Cores that this process may use, which may be fewer than the machine has; at least 1.
[[nodiscard]] int usableCores();

} // namespace platform
