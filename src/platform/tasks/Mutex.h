#pragma once

#include "platform/tasks/ThreadSafety.h"

#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace platform {

class Lock;

/// A mutex that the thread-safety analysis knows (the standard library's is not annotated). What it
/// guards is marked with VELMORA_GUARDED_BY. Taken by a `Lock`.
class VELMORA_CAPABILITY("mutex") Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /// For a lambda that runs while its maker holds the mutex: the analysis doesn't look across.
    void assertHeld() const VELMORA_ASSERT_HELD(this) {}

private:
    friend class Lock;
    std::mutex _mutex;
};

/// Holds a mutex from construction to destruction; may let go early and take it again.
class VELMORA_SCOPED_CAPABILITY Lock {
public:
    explicit Lock(Mutex& mutex) VELMORA_ACQUIRE(mutex) : _lock(mutex._mutex) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() VELMORA_RELEASE() = default;

    void unlock() VELMORA_RELEASE() { _lock.unlock(); }
    void lock() VELMORA_ACQUIRE() { _lock.lock(); }

private:
    friend class Condition;
    std::unique_lock<std::mutex> _lock;
};

/// A condition variable for `Lock`. Waits are with a predicate only, which runs with the mutex
/// held. As everywhere with these, what the predicate reads changes under the mutex, and so does a
/// wake.
class Condition {
public:
    void notifyOne() { _condition.notify_one(); }
    void notifyAll() { _condition.notify_all(); }

    template <typename Predicate>
    void wait(Lock& lock, Predicate predicate) {
        _condition.wait(lock._lock, predicate);
    }
    /// What the predicate says at the end.
    template <typename Period, typename Predicate>
    bool waitFor(Lock& lock, Period period, Predicate predicate) {
        return _condition.wait_for(lock._lock, period, predicate);
    }
    /// The same; also ends when a stop is asked for.
    template <typename Predicate>
    bool waitUnlessStopped(Lock& lock, const std::stop_token& stop, Predicate predicate) {
        return _condition.wait(lock._lock, stop, predicate);
    }
    /// No longer than the period, and until a stop is asked for.
    template <typename Period>
    void rest(Lock& lock, const std::stop_token& stop, Period period) {
        _condition.wait_for(lock._lock, stop, period, [] { return false; });
    }
    template <typename TimePoint, typename Predicate>
    bool waitUntil(Lock& lock, TimePoint deadline, Predicate predicate) {
        return _condition.wait_until(lock._lock, deadline, predicate);
    }

private:
    std::condition_variable_any _condition;
};

} // namespace platform
