#include "platform/tasks/OperationQueue.h"

#include <pthread.h>

#include <algorithm>

namespace platform {

namespace {

/// Counts changes of any operation's priority; a queue that sees a new count sorts its line anew.
/// One count for all queues keeps an operation from having to know, and to lock, its queue. Atomic,
/// since priorities change on any thread.
std::atomic<std::uint64_t> priorityChanges = 0;

std::size_t slotOf(QueuePriority priority) {
    return static_cast<std::size_t>((8 - static_cast<int>(priority)) / 4);
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
        putInLine(operation, _nextSequence);
        _nextSequence += mostInPlace + 1;
    }
}

void OperationQueue::addInPlaceOf(
    const Operation& running, std::span<const std::shared_ptr<Operation>> operations) {
    const Lock lock(_mutex);
    // Those that it stands for would have been dropped.
    if (running.isCancelled()) return;
    std::uint64_t sequence = running._sequence;
    for (const auto& operation : operations) {
        for (const std::int64_t key : operation->keys()) {
            const auto preferred = _preferred.find(key);
            if (preferred != _preferred.end()) operation->_priority = preferred->second;
        }
        putInLine(operation, ++sequence);
    }
}

void OperationQueue::putInLine(
    const std::shared_ptr<Operation>& operation, std::uint64_t sequence) {
    operation->_sequence = sequence;
    putInOrder(_lines[slotOf(operation->queuePriority())], Place{sequence, operation});
    ++_waiting;
    for (const std::int64_t key : operation->keys())
        _byKey.insert(key, operation.get());
    startWorkerIfNeeded();
    if (_idleWorkers > 0) _wake.notifyOne();
}

void OperationQueue::addOperation(std::function<void()> work) {
    addOperation(std::make_shared<FunctionOperation>(std::move(work)));
}

void OperationQueue::cancelAllOperations() {
    std::vector<std::shared_ptr<Operation>> dropped; // destroyed after the lock is gone
    bool becameIdle = false;
    {
        const Lock lock(_mutex);
        for (Line& line : _lines) {
            for (Place& place : line) {
                if (!place.operation || place.operation->mustRun()) continue;
                forgetKey(*place.operation);
                place.operation->cancel();
                place.operation->_state = Operation::State::Finished;
                dropped.push_back(std::move(place.operation));
            }
            std::erase_if(line, [](const Place& place) { return !place.operation; });
        }
        _waiting -= dropped.size();
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
    return _running.size() + _waiting;
}

std::size_t OperationQueue::keyCount() const {
    const Lock lock(_mutex);
    auto count = static_cast<std::size_t>(_byKey.size());
    for (const auto& operation : _running)
        count += operation->keys().size();
    return count;
}

std::vector<std::shared_ptr<Operation>> OperationQueue::operations() const {
    const Lock lock(_mutex);
    refreshOrder();
    std::vector<std::shared_ptr<Operation>> all = _running;
    for (const Line& line : _lines) {
        for (const Place& place : line) {
            if (place.operation) all.push_back(place.operation);
        }
    }
    return all;
}

std::vector<std::shared_ptr<Operation>> OperationQueue::nextOperations(std::size_t most) const {
    const Lock lock(_mutex);
    refreshOrder();
    std::vector<std::shared_ptr<Operation>> next;
    for (const Line& line : _lines) {
        for (const Place& place : line) {
            if (next.size() == most) return next;
            if (place.operation) next.push_back(place.operation);
        }
    }
    return next;
}

void OperationQueue::setIdleHandler(std::function<void()> handler) {
    _idleHandler = std::move(handler);
}

void OperationQueue::prefer(const std::unordered_map<std::int64_t, QueuePriority>& priorities) {
    const Lock lock(_mutex);
    refreshOrder();
    std::unordered_map<Operation*, QueuePriority> wanted; // the highest of those of its keys
    for (const auto& [key, former] : _preferred)
        if (Operation* operation = _byKey.value(key)) wanted[operation] = QueuePriority::Normal;
    for (const auto& [key, priority] : priorities) {
        Operation* operation = _byKey.value(key);
        if (!operation) continue;
        const auto [place, isNew] = wanted.try_emplace(operation, priority);
        if (!isNew) place->second = std::max(place->second, priority);
    }
    for (const auto& [operation, priority] : wanted)
        moveTo(priority, *operation);
    _preferred = priorities;
}

void OperationQueue::moveTo(QueuePriority priority, Operation& operation) {
    if (operation.queuePriority() == priority) return;
    Line& from = _lines[slotOf(operation.queuePriority())];
    const auto place =
        std::ranges::lower_bound(from, operation._sequence.load(), {}, &Place::sequence);
    // Somebody may give it another one at this very moment: the whole line is sorted anew then.
    if (place == from.end() || place->operation.get() != &operation) return;
    operation._priority = priority;
    putInOrder(_lines[slotOf(priority)], Place{place->sequence, std::move(place->operation)});
}

void OperationQueue::putInOrder(Line& line, Place place) {
    if (line.empty() || line.back().sequence < place.sequence) {
        line.push_back(std::move(place));
        return;
    }
    const auto at = std::ranges::lower_bound(line, place.sequence, {}, &Place::sequence);
    if (at != line.end() && at->sequence == place.sequence) {
        *at = std::move(place);
    } else {
        line.insert(at, std::move(place));
    }
}

void OperationQueue::forgetKey(const Operation& operation) {
    for (const std::int64_t key : operation.keys()) {
        const auto found = _byKey.find(key);
        if (found != _byKey.end() && found.value() == &operation) _byKey.erase(found);
    }
}

void OperationQueue::prioritiesChanged() {
    priorityChanges.fetch_add(1);
}

void OperationQueue::startWorkerIfNeeded() {
    const bool lineNeedsMore = _waiting > 0 && _idleWorkers == 0;
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
        if (_waiting > 0) _wake.notifyOne();
    }
}

void OperationQueue::refreshOrder() const {
    const std::uint64_t changes = priorityChanges.load();
    if (changes == _seenPriorityChanges) return;
    _seenPriorityChanges = changes;
    std::vector<Place> all;
    for (Line& line : _lines) {
        for (Place& place : line) {
            if (place.operation) all.push_back(std::move(place));
        }
        line.clear();
    }
    std::ranges::sort(all, {}, &Place::sequence);
    for (Place& place : all)
        _lines[slotOf(place.operation->queuePriority())].push_back(std::move(place));
}

bool OperationQueue::isDrained(int besidesEnded) const {
    return _running.empty() && _ended == besidesEnded && _waiting == 0;
}

bool OperationQueue::canStart() const {
    const std::size_t busy = _running.size() + static_cast<std::size_t>(_ended);
    return !_suspended && _waiting > 0 && busy < _maxConcurrent;
}

std::shared_ptr<Operation> OperationQueue::takeNext() {
    refreshOrder();
    for (Line& line : _lines) {
        while (!line.empty()) {
            std::shared_ptr<Operation> next = std::move(line.front().operation);
            line.pop_front();
            if (!next) continue;
            --_waiting;
            forgetKey(*next);
            return next;
        }
    }
    return nullptr;
}

} // namespace platform
