#pragma once

#include <cerrno>

namespace platform {

/// What a question about a file or folder was answered. A look that failed for another reason than
/// that nothing has this path (no permission, a disk or server that fails, no descriptors left)
/// says nothing: the entry may well be there.
enum class Presence { There, Gone, Unknown };

/// By the `errno` of the look; 0 is that of one that succeeded.
[[nodiscard]] constexpr Presence presenceAfter(int error) {
    if (error == 0) return Presence::There;
    return error == ENOENT || error == ENOTDIR ? Presence::Gone : Presence::Unknown;
}

} // namespace platform
