#include "platform/tasks/PoliteWork.h"

#include "platform/tasks/Mutex.h"

#include <utility>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

using namespace std::chrono_literals;

constexpr auto longestWork = 10ms;
constexpr auto rest = 15ms;

} // namespace

void giveWayToOthers() {
    // The numbers are those of the kernel's interface, which has no header for programs.
    constexpr int whoIsAThread = 1;
    constexpr int idleClass = 3 << 13;
    constexpr int present = 0;
    ::syscall(SYS_ioprio_set, whoIsAThread, present, idleClass);
    constexpr int nicest = 19;
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), nicest);
}

PoliteWork::PoliteWork(std::stop_token stop) : _stop(std::move(stop)) {}

bool PoliteWork::goOn() {
    if (_stop.stop_requested()) return false;
    if (Clock::now() - _since < longestWork) return true;
    Mutex mutex;
    Condition stopped;
    Lock lock(mutex);
    stopped.rest(lock, _stop, rest);
    _since = Clock::now();
    return !_stop.stop_requested();
}

} // namespace platform
