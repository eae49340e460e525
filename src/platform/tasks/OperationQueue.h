#pragma once

#include "platform/tasks/Mutex.h"
#include "platform/tasks/Operation.h"

#include <QHash>
#include <QString>

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <thread>
#include <unordered_map>
#include <vector>

namespace platform {

/// Runs operations on threads of its own, at most N at once; with N = 1 strictly one after the
/// other. Every operation may be called from any thread, `waitUntilAllOperationsAreFinished` from
/// any but the queue's own.
class OperationQueue {
public:
    /// The name is that of the threads too (the kernel keeps its first 15 bytes).
    explicit OperationQueue(QString name, int maxConcurrentOperationCount = 1);
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;
    /// Drops what is left, suspended or not, also what must run, and waits for what runs.
    ~OperationQueue();

    /// An operation may be added once, to one queue.
    void addOperation(std::shared_ptr<Operation> operation);
    /// Many at once, which then stand in line one behind the other.
    void addOperations(std::span<const std::shared_ptr<Operation>> operations);
    /// By an operation that runs on this queue, once: they stand in line in its place, at most
    /// `mostInPlace`, and those that `prefer` has named have the priority that it said. Nothing
    /// happens when the one that runs is cancelled.
    void
    addInPlaceOf(const Operation& running, std::span<const std::shared_ptr<Operation>> operations);
    static constexpr std::size_t mostInPlace = 1023;
    /// A piece of work that nobody needs to cancel on its own.
    void addOperation(std::function<void()> work);

    /// Cancels every operation but those that must run. Those that wait are dropped at once, on the
    /// calling thread.
    void cancelAllOperations();
    /// While suspended, no waiting operation is started; running ones go on.
    void setSuspended(bool suspended);
    [[nodiscard]] bool isSuspended() const;

    /// Waits for waiting and running operations. A suspended queue with waiting operations never
    /// gets there: resume or cancel first.
    void waitUntilAllOperationsAreFinished();

    /// Gives the waiting operations with these keys these priorities, and those that the former
    /// call gave one, and that this one doesn't name, the normal one again; no operation starts
    /// between. Others cost nothing. Of operations with one key, the last added is meant; one with
    /// several of the keys gets the highest of their priorities.
    void prefer(const std::unordered_map<std::int64_t, QueuePriority>& priorities);

    /// Waiting and running.
    [[nodiscard]] std::size_t operationCount() const;
    /// How many keys those have that wait or run.
    [[nodiscard]] std::size_t keyCount() const;
    /// Running ones first, then the waiting in the order in which they would run now.
    [[nodiscard]] std::vector<std::shared_ptr<Operation>> operations() const;
    /// The first of the waiting ones, at most so many.
    [[nodiscard]] std::vector<std::shared_ptr<Operation>> nextOperations(std::size_t most) const;

    /// Called on a thread of the queue each time the last operation has ended, or on the thread of
    /// `cancelAllOperations`. Set before the first operation is added; must not call back.
    void setIdleHandler(std::function<void()> handler);

private:
    friend class Operation;
    /// Without an operation where that stands in another line now.
    struct Place {
        std::uint64_t sequence;
        std::shared_ptr<Operation> operation;
    };
    /// In the order of their numbers.
    using Line = std::deque<Place>;

    static void prioritiesChanged();
    void startWorkerIfNeeded() VELMORA_REQUIRES(_mutex);
    void work();
    void refreshOrder() const VELMORA_REQUIRES(_mutex);
    void putInLine(const std::shared_ptr<Operation>& operation, std::uint64_t sequence)
        VELMORA_REQUIRES(_mutex);
    void moveTo(QueuePriority priority, Operation& operation) VELMORA_REQUIRES(_mutex);
    void forgetKey(const Operation& operation) VELMORA_REQUIRES(_mutex);
    static void putInOrder(Line& line, Place place);
    /// Nothing waits, runs or is being torn down, but for that many operations.
    [[nodiscard]] bool isDrained(int besidesEnded) const VELMORA_REQUIRES(_mutex);
    [[nodiscard]] bool canStart() const VELMORA_REQUIRES(_mutex);
    [[nodiscard]] std::shared_ptr<Operation> takeNext() VELMORA_REQUIRES(_mutex);

    const QString _name;
    const std::size_t _maxConcurrent;
    std::function<void()> _idleHandler;

    mutable Mutex _mutex;
    Condition _wake;
    Condition _idle;
    /// The highest priority first.
    mutable std::array<Line, 5> _lines VELMORA_GUARDED_BY(_mutex);
    std::size_t _waiting VELMORA_GUARDED_BY(_mutex) = 0;
    /// Of the waiting ones that have a key.
    QHash<std::int64_t, Operation*> _byKey VELMORA_GUARDED_BY(_mutex);
    /// As `prefer` named them last.
    std::unordered_map<std::int64_t, QueuePriority> _preferred VELMORA_GUARDED_BY(_mutex);
    mutable std::uint64_t _seenPriorityChanges VELMORA_GUARDED_BY(_mutex) = 0;
    std::vector<std::shared_ptr<Operation>> _running VELMORA_GUARDED_BY(_mutex);
    std::vector<std::jthread> _workers VELMORA_GUARDED_BY(_mutex);
    std::uint64_t _nextSequence VELMORA_GUARDED_BY(_mutex) = 1;
    int _idleWorkers VELMORA_GUARDED_BY(_mutex) = 0;
    /// Operations that have run and are about to be destroyed.
    int _ended VELMORA_GUARDED_BY(_mutex) = 0;
    bool _suspended VELMORA_GUARDED_BY(_mutex) = false;
    bool _ending VELMORA_GUARDED_BY(_mutex) = false;
};

} // namespace platform
