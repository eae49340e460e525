#include "codec/process/Reaper.h"

#include "platform/tasks/Mutex.h"

#include <cerrno>
#include <thread>
#include <vector>

#include <sys/wait.h>

namespace codec::process {

namespace {

using Clock = std::chrono::steady_clock;

/// Between two looks: a process ends within a millisecond or two, if nothing holds it.
constexpr auto step = std::chrono::microseconds(300);

struct LeftBehind {
    platform::Mutex mutex;
    std::vector<pid_t> children VELMORA_GUARDED_BY(mutex);
};

LeftBehind& leftBehind() {
    static LeftBehind one;
    return one;
}

/// Nothing while it runs; 0 for a child that somebody else has reaped.
std::optional<int> statusOf(pid_t child) {
    int status = 0;
    pid_t ended = -1;
    do {
        ended = ::waitpid(child, &status, WNOHANG);
    } while (ended < 0 && errno == EINTR);
    if (ended == 0) return std::nullopt;
    return ended == child ? status : 0;
}

} // namespace

std::optional<int> waitForEnd(pid_t child, std::chrono::milliseconds patience) {
    const auto deadline = Clock::now() + patience;
    while (true) {
        if (const auto status = statusOf(child)) return status;
        if (Clock::now() >= deadline) break;
        std::this_thread::sleep_for(step);
    }
    LeftBehind& left = leftBehind();
    const platform::Lock lock(left.mutex);
    left.children.push_back(child);
    return std::nullopt;
}

void reapLeftBehind() {
    LeftBehind& left = leftBehind();
    const platform::Lock lock(left.mutex);
    std::erase_if(left.children, [](pid_t child) { return statusOf(child).has_value(); });
}

} // namespace codec::process
