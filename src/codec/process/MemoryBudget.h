#pragma once

#include "platform/tasks/Mutex.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <stop_token>

namespace codec::process {

/// Bytes that the machine could give to programs now without swapping.
[[nodiscard]] std::uint64_t availableMemory();

/// What all decodes may take together: half of what is available when the first of them begins. One
/// alone is always let through, whatever it takes, and nobody is overtaken but by what the user
/// waits for. Any thread; outlives its shares.
class MemoryBudget {
public:
    /// Held for as long as the memory is.
    using Share = std::shared_ptr<const void>;

    explicit MemoryBudget(std::function<std::uint64_t()> available = &availableMemory)
        : _available(std::move(available)) {}

    /// Waits until so much is free; nullptr when it was stopped.
    [[nodiscard]] Share
    take(std::uint64_t bytes, const std::stop_token& stop, bool isUrgent = false);

    /// How many stand in line.
    [[nodiscard]] std::size_t waiting();

private:
    void giveBack(std::uint64_t bytes);

    const std::function<std::uint64_t()> _available;
    platform::Mutex _mutex;
    platform::Condition _changed;
    std::deque<std::uint64_t> _line VELMORA_GUARDED_BY(_mutex); ///< tickets
    std::uint64_t _nextTicket VELMORA_GUARDED_BY(_mutex) = 0;
    std::uint64_t _limit VELMORA_GUARDED_BY(_mutex) = 0;
    std::uint64_t _inUse VELMORA_GUARDED_BY(_mutex) = 0;
};

} // namespace codec::process
