#pragma once

#include "platform/tasks/OperationQueue.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

/// Lets cores that have nothing to do decode the pictures that are next in line for the build
/// queue, which itself stays serial. Has a thread for each core: the build queue mostly waits for a
/// picture that is decoded here already. Who takes a place gives it back when the decoded picture
/// is stored or dropped. There are at least twice as many places as cores, and more where pictures
/// are decoded quickly, so that the threads need not wait for the build queue: what comes on show
/// has to wait for no more than those in the places. Any thread.
class DecodeAhead {
public:
    /// Holds a place as long as it lives.
    using Place = std::shared_ptr<const void>;
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// With one core nothing is decoded ahead.
    explicit DecodeAhead(int cores, Clock clock = std::chrono::steady_clock::now);
    /// Waits for what runs; the operations have been cancelled by then.
    ~DecodeAhead() = default;
    DecodeAhead(const DecodeAhead&) = delete;
    DecodeAhead& operator=(const DecodeAhead&) = delete;

    /// How many pictures may be decoded, or waiting to be stored, at a time.
    [[nodiscard]] int capacity() const { return _capacity; }
    /// nullptr when all places are taken.
    [[nodiscard]] Place takePlace();
    /// Runs the work on a core of its own, in the order of the calls.
    void run(std::function<void()> work);

private:
    void noteTime(std::chrono::nanoseconds spent);

    const int _cores;
    const Clock _clock;
    std::atomic<int> _capacity;
    std::atomic<std::chrono::nanoseconds> _mean{}; ///< of the last works; 0 before the first
    const std::shared_ptr<std::atomic<int>> _taken = std::make_shared<std::atomic<int>>(0);
    platform::OperationQueue _queue;
};
