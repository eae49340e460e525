#pragma once

namespace platform {

/// Gives memory that was freed back to the system, where the allocator has kept it for later: after
/// something large has ended. Any thread; takes a few milliseconds, and threads that allocate may
/// wait for part of them.
void returnFreeMemory();

} // namespace platform
