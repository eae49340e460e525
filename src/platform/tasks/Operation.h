#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stop_token>

namespace platform {

class OperationQueue;

/// Order of the waiting operations of a queue; among equals the first added comes first.
enum class QueuePriority : int { VeryLow = -8, Low = -4, Normal = 0, High = 4, VeryHigh = 8 };

/// One piece of background work. Shared between its queue and whoever wants to cancel it, change
/// its priority or look at its state; every public operation may be called from any thread.
class Operation {
public:
    /// Its one key; 0: none.
    explicit Operation(std::int64_t key = 0) : _key(key) {}
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    virtual ~Operation() = default;

    /// Asks the operation to end. One that waits never runs; one that runs ends when it next looks
    /// at `isCancelled` or at its stop token.
    void cancel() { _stopSource.request_stop(); }
    [[nodiscard]] bool isCancelled() const { return _stopSource.stop_requested(); }
    /// For callbacks and waits that a cancellation has to break off.
    [[nodiscard]] std::stop_token stopToken() const { return _stopSource.get_token(); }

    /// Also true for an operation that was cancelled before it ran.
    [[nodiscard]] bool isFinished() const { return _state.load() == State::Finished; }

    /// What `OperationQueue::prefer` knows the operation by. They don't change while it is in a
    /// queue.
    [[nodiscard]] virtual std::span<const std::int64_t> keys() const {
        return {&_key, _key == 0 ? std::size_t{0} : 1};
    }

    [[nodiscard]] QueuePriority queuePriority() const { return _priority.load(); }
    /// Takes effect at once, also while the operation waits in a queue.
    void setQueuePriority(QueuePriority priority);

    /// Whether the operation runs in any case: a cancellation of its whole queue passes it over,
    /// and whoever waits for the queue waits for it.
    [[nodiscard]] virtual bool mustRun() const { return false; }

protected:
    /// The work, on a thread of the queue. Must not throw.
    virtual void main() = 0;

private:
    friend class OperationQueue;
    enum class State { Ready, Executing, Finished };

    std::stop_source _stopSource;
    std::atomic<State> _state{State::Ready};
    std::atomic<QueuePriority> _priority{QueuePriority::Normal};
    /// 0 as long as no queue has it. Written by the queue only.
    std::atomic<std::uint64_t> _sequence{0};
    const std::int64_t _key;
};

} // namespace platform
