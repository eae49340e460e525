#include "platform/tasks/OperationQueue.h"

#include <pthread.h>

#include <algorithm>

namespace platform {

namespace {

/// Counts changes of any operation's priority; a queue that sees a new count sorts its line anew.
/// One count for all queues keeps an operation from having to know, and to lock, its queue. Atomic,
/// since priorities change on any thread.
std::atomic<std::uint64_t> priorityChanges = 0;

std::size_t slotOf(const Operation& operation) {
    return static_cast<std::size_t>((8 - static_cast<int>(operation.queuePriority())) / 4);
}

class FunctionOperation final : public Operation {
public:
    explicit FunctionOperation(std::function<void()> function) : _function(std::move(function)) {}

protected:
    void main() override { _function(); }

private:
    std::function<void()> _function;
};

} // namespace

OperationQueue::OperationQueue(QString name, int maxConcurrentOperationCount)
    : _name(std::move(name)),
      _maxConcurrent(static_cast<std::size_t>(std::max(1, maxConcurrentOperationCount))) {}

OperationQueue::~OperationQueue() {
    cancelAllOperations();
    std::vector<std::jthread> workers; // joined when the lock is gone
    const Lock lock(_mutex);
    _ending = true;
    _wake.notifyAll();
    workers.swap(_workers);
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    addOperations({&operation, 1});
}

void OperationQueue::addOperations(std::span<const std::shared_ptr<Operation>> operations) {
    const Lock lock(_mutex);
    for (const auto& operation : operations) {
        operation->_sequence = _nextSequence++;
        _waiting[slotOf(*operation)].push_back(operation);
        startWorkerIfNeeded();
        if (_idleWorkers > 0) _wake.notifyOne();
    }
}

void OperationQueue::addOperation(std::function<void()> work) {
    addOperation(std::make_shared<FunctionOperation>(std::move(work)));
}

void OperationQueue::cancelAllOperations() {
    Waiting dropped; // destroyed after the lock is gone
    bool becameIdle = false;
    {
        const Lock lock(_mutex);
        for (Waiting& line : _waiting) {
            for (const auto& operation : line) {
                if (operation->mustRun()) continue;
                operation->cancel();
                operation->_state = Operation::State::Finished;
                dropped.push_back(operation);
            }
            std::erase_if(line, [](const auto& operation) { return !operation->mustRun(); });
        }
        for (const auto& operation : _running) {
            if (!operation->mustRun()) operation->cancel();
        }
        becameIdle = !dropped.empty() && isDrained(0);
        if (isDrained(0)) _idle.notifyAll();
    }
    if (becameIdle && _idleHandler) _idleHandler();
}

void OperationQueue::setSuspended(bool suspended) {
    const Lock lock(_mutex);
    _suspended = suspended;
    if (!suspended) _wake.notifyAll();
}

bool OperationQueue::isSuspended() const {
    const Lock lock(_mutex);
    return _suspended;
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
    Lock lock(_mutex);
    _idle.wait(lock, [this] {
        _mutex.assertHeld();
        return isDrained(0);
    });
}

std::size_t OperationQueue::operationCount() const {
    const Lock lock(_mutex);
    std::size_t count = _running.size();
    for (const Waiting& line : _waiting)
        count += line.size();
    return count;
}

std::vector<std::shared_ptr<Operation>> OperationQueue::operations() const {
    const Lock lock(_mutex);
    refreshOrder();
    std::vector<std::shared_ptr<Operation>> all = _running;
    for (const Waiting& line : _waiting)
        all.insert(all.end(), line.begin(), line.end());
    return all;
}

std::vector<std::shared_ptr<Operation>> OperationQueue::nextOperations(std::size_t most) const {
    const Lock lock(_mutex);
    refreshOrder();
    std::vector<std::shared_ptr<Operation>> next;
    for (const Waiting& line : _waiting) {
        for (const auto& operation : line) {
            if (next.size() == most) return next;
            next.push_back(operation);
        }
    }
    return next;
}

void OperationQueue::setIdleHandler(std::function<void()> handler) {
    _idleHandler = std::move(handler);
}

void OperationQueue::prioritiesChanged() {
    priorityChanges.fetch_add(1);
}

void OperationQueue::startWorkerIfNeeded() {
    const bool lineNeedsMore = hasWaiting() && _idleWorkers == 0;
    if (!lineNeedsMore || _workers.size() >= _maxConcurrent) return;
    _workers.emplace_back([this] {
        pthread_setname_np(pthread_self(), _name.toUtf8().left(15).constData());
        work();
    });
}

void OperationQueue::work() {
    Lock lock(_mutex);
    while (true) {
        ++_idleWorkers;
        _wake.wait(lock, [this] {
            _mutex.assertHeld();
            return _ending || canStart();
        });
        --_idleWorkers;
        if (_ending) return;
        std::shared_ptr<Operation> operation = takeNext();
        _running.push_back(operation);
        startWorkerIfNeeded();
        lock.unlock();

        if (!operation->isCancelled()) {
            operation->_state = Operation::State::Executing;
            operation->main();
        }
        operation->_state = Operation::State::Finished;

        lock.lock();
        std::erase(_running, operation);
        ++_ended;
        const bool becameIdle = isDrained(1);
        lock.unlock();
        operation.reset(); // what it owns goes before anybody is told that it has ended
        if (becameIdle && _idleHandler) _idleHandler();
        lock.lock();
        --_ended;
        if (isDrained(0)) _idle.notifyAll();
        if (hasWaiting()) _wake.notifyOne();
    }
}

void OperationQueue::refreshOrder() const {
    const std::uint64_t changes = priorityChanges.load();
    if (changes == _seenPriorityChanges) return;
    _seenPriorityChanges = changes;
    std::vector<std::shared_ptr<Operation>> all;
    for (Waiting& line : _waiting) {
        all.insert(all.end(), line.begin(), line.end());
        line.clear();
    }
    std::ranges::sort(all, {}, [](const auto& operation) { return operation->_sequence; });
    for (auto& operation : all)
        _waiting[slotOf(*operation)].push_back(std::move(operation));
}

bool OperationQueue::hasWaiting() const {
    return std::ranges::any_of(_waiting, [](const Waiting& line) { return !line.empty(); });
}

bool OperationQueue::isDrained(int besidesEnded) const {
    return _running.empty() && _ended == besidesEnded && !hasWaiting();
}

bool OperationQueue::canStart() const {
    const std::size_t busy = _running.size() + static_cast<std::size_t>(_ended);
    return !_suspended && hasWaiting() && busy < _maxConcurrent;
}

std::shared_ptr<Operation> OperationQueue::takeNext() {
    refreshOrder();
    for (Waiting& line : _waiting) {
        if (line.empty()) continue;
        std::shared_ptr<Operation> next = std::move(line.front());
        line.pop_front();
        return next;
    }
    return nullptr;
}

} // namespace platform
