#pragma once

#include <utility>

#include <sqlite3.h>
#include <unistd.h>

/// The wait for another connection's lock: SQLite's own busy handler is not used.
namespace FMDB {

/// Pause between two tries.
inline constexpr useconds_t busyRetryPauseMicroseconds = 20;

[[nodiscard]] constexpr bool isBusyOrLocked(int result) {
    return result == SQLITE_BUSY || result == SQLITE_LOCKED;
}

/// Repeats the attempt as long as it answers busy or locked, and answers its last result. A limit
/// other than 0 gives up after more than that many retries. `pause` takes microseconds, and answers
/// whether to try again.
template <typename Attempt, typename Pause>
int retryWhileBusy(int limit, Attempt attempt, Pause pause) {
    int retries = 0;
    while (true) {
        const int result = attempt();
        if (!isBusyOrLocked(result) || (limit != 0 && retries++ > limit)) return result;
        if (!pause(busyRetryPauseMicroseconds)) return result;
    }
}

/// `sqlite3_step` that waits for locks. A locked table needs a reset before the next try.
template <typename Pause>
int stepWhileBusy(int limit, sqlite3_stmt* statement, Pause pause) {
    const auto step = [statement] {
        const int result = sqlite3_step(statement);
        if (result == SQLITE_LOCKED) sqlite3_reset(statement);
        return result;
    };
    return retryWhileBusy(limit, step, std::move(pause));
}

} // namespace FMDB
