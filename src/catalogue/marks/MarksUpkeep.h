#pragma once

#include "platform/tasks/OperationQueue.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

class FMDatabase;

namespace marks {

/// What the ledger needs done behind the user's back: the files of marked photographs are read for
/// identity and digest, and copies of the ledger are kept. On a queue of its own with a connection
/// of its own. Any thread, but for the end.
class MarksUpkeep {
public:
    struct Environment {
        QString marksPath;
        QString snapshotFolder;
        /// What the user should know; on any thread. May be empty.
        std::function<void(const QString& sentence)> tell;
        /// Called with each connection before its first use, on any thread. May be empty.
        std::function<void(FMDatabase& connection)> observe;
    };
    explicit MarksUpkeep(Environment environment);
    ~MarksUpkeep();
    MarksUpkeep(const MarksUpkeep&) = delete;
    MarksUpkeep& operator=(const MarksUpkeep&) = delete;

    /// The ledger changed: sees to what is new in it, and takes a snapshot if the last one of this
    /// run is an hour old.
    void wake();
    /// Nothing waits or runs.
    [[nodiscard]] bool isIdle() const { return _queue.operationCount() == 0; }
    /// The end of a run: stops what runs and takes the last snapshot. Main thread, once.
    void finish();

private:
    class Work;
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] std::unique_ptr<FMDatabase> openLedger() const;
    void takeSnapshot();

    const Environment _environment;
    std::atomic<Clock::rep> _lastSnapshot{Clock::now().time_since_epoch().count()};
    std::atomic<bool> _isWorkWaiting = false;
    bool _isFinished = false;
    platform::OperationQueue _queue{QStringLiteral("marks")};
};

} // namespace marks
