#pragma once

#include "platform/tasks/Mutex.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace platform {

/// Sees to it that the process ends although something that should end first does not: a thread may
/// stand in the kernel for as long as a disk does not answer, and nobody can call it back. What
/// has to last must be stored before, or under a `Hold`; a transaction that is cut off is taken
/// back by the next start.
class ExitDeadline {
public:
    /// What the user did is being stored: the limit begins anew, a few times. Any thread.
    class Hold {
    public:
        Hold() { ++holds; }
        ~Hold() { --holds; }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
    };

    /// Unless this object is gone by then, `passed` is called on a thread of its own. In the
    /// program it ends the process without ado.
    ExitDeadline(std::chrono::milliseconds limit, std::function<void()> passed);
    ~ExitDeadline();
    ExitDeadline(const ExitDeadline&) = delete;
    ExitDeadline& operator=(const ExitDeadline&) = delete;

private:
    static inline std::atomic<int> holds = 0;

    Mutex _mutex;
    Condition _changed;
    bool _isOver VELMORA_GUARDED_BY(_mutex) = false;
    std::jthread _thread;
};

} // namespace platform
