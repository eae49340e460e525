#pragma once

#include <cstdint>

namespace codec::process {

/// Takes from this process what a decoder does not need: new privileges, the opening of files, the
/// network, other processes, writing anywhere but to its socket and its shared memory, and memory
/// beyond the limit. Answers the confinements that the kernel refused (`Refused`); the others
/// hold. Call once, before the first stranger's byte is read, and before any further thread starts.
[[nodiscard]] std::uint64_t confine(std::uint64_t addressSpaceBytes);

} // namespace codec::process
