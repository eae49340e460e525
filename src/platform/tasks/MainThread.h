#pragma once

namespace platform {

/// Whether the calling thread is the process's first one, on which the main loop runs.
[[nodiscard]] bool isMainThread();

/// In debug builds ends the program, naming the caller, unless this is the main thread. For the
/// entry points of classes that belong to the main thread: those that change something, or read
/// what only the main thread changes.
void assertMainThread(const char* caller = __builtin_FUNCTION());

} // namespace platform
