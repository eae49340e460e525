#pragma once

#include <chrono>
#include <optional>

#include <sys/types.h>

/// Child processes that have been killed. The kernel may take long to end one, as while it waits
/// for a disk that does not answer, and nobody waits for that. Any thread.
namespace codec::process {

/// The status of a child that ends within the time given. One that does not is left behind, and
/// reaped by a later call of `reapLeftBehind`.
[[nodiscard]] std::optional<int> waitForEnd(pid_t child, std::chrono::milliseconds patience);

/// Takes note of the children that were left behind and have ended since; does not wait.
void reapLeftBehind();

} // namespace codec::process
