#pragma once

#include <chrono>
#include <stop_token>

namespace platform {

/// The present thread gives way to all others from now on: the disk serves it when nobody else
/// asks, and so does the processor. For threads that end with the work.
void giveWayToOthers();

/// Rests of a long piece of work in the background: called often, it lets the caller work for a
/// short while and then waits for a longer one.
class PoliteWork {
public:
    explicit PoliteWork(std::stop_token stop);
    /// False when the work is to end, which is told at once.
    [[nodiscard]] bool goOn();

private:
    using Clock = std::chrono::steady_clock;
    const std::stop_token _stop;
    Clock::time_point _since = Clock::now();
};

} // namespace platform
