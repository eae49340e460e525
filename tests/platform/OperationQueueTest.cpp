#include "platform/OperationQueue.h"
#include "support/Support.h"

#include <latch>
#include <mutex>

using platform::Operation;
using platform::OperationQueue;
using platform::QueuePriority;

namespace {

struct Lambda final : Operation {
    explicit Lambda(std::function<void(Lambda&)> body) : _body(std::move(body)) {}

protected:
    void main() override { _body(*this); }

private:
    std::function<void(Lambda&)> _body;
};

/// Collects names in the order in which operations ran.
struct Record {
    std::shared_ptr<Operation> operation(int name) {
        return std::make_shared<Lambda>([this, name](Lambda&) {
            const std::lock_guard lock(_mutex);
            _ran.push_back(name);
        });
    }
    std::vector<int> ran() {
        const std::lock_guard lock(_mutex);
        return _ran;
    }

private:
    std::mutex _mutex;
    std::vector<int> _ran;
};

TEST(OperationQueueTest, serialQueueRunsInOrderOfPriorityThenArrival) {
    Record record;
    OperationQueue queue(u"test"_s);
    queue.setSuspended(true);
    const std::vector operations{
        record.operation(1), record.operation(2), record.operation(3), record.operation(4),
        record.operation(5)};
    operations[0]->setQueuePriority(QueuePriority::Low);
    operations[3]->setQueuePriority(QueuePriority::VeryHigh);
    for (const auto& operation : operations)
        queue.addOperation(operation);
    // While waiting: the second falls behind, the first comes back to where it was added.
    operations[1]->setQueuePriority(QueuePriority::VeryLow);
    operations[0]->setQueuePriority(QueuePriority::Normal);
    operations[4]->cancel();
    EXPECT_TRUE(record.ran().empty());
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(record.ran(), (std::vector{4, 1, 3, 2})) << "and never the cancelled one";
    EXPECT_TRUE(operations[1]->isFinished() && operations[4]->isFinished());

    queue.setSuspended(true);
    const auto dropped = record.operation(6);
    queue.addOperation(dropped);
    queue.cancelAllOperations();
    EXPECT_EQ(queue.operationCount(), 0U);
    queue.waitUntilAllOperationsAreFinished(); // though suspended
    EXPECT_TRUE(dropped->isCancelled());
    EXPECT_EQ(record.ran().size(), 4U);
}

TEST(OperationQueueTest, runningOperationSeesItsCancellation) {
    OperationQueue queue(u"test"_s);
    std::latch started(1);
    std::atomic<bool> sawCallback = false;
    auto operation = std::make_shared<Lambda>([&](Lambda& self) {
        std::mutex mutex;
        std::condition_variable_any wake;
        std::stop_callback callback(self.stopToken(), [&] { sawCallback = true; });
        started.count_down();
        std::unique_lock lock(mutex);
        wake.wait(lock, self.stopToken(), [] { return false; });
    });
    queue.addOperation(operation);
    started.wait();
    EXPECT_TRUE(operation->isExecuting());
    queue.cancelAllOperations();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(sawCallback);
    EXPECT_TRUE(operation->isFinished());
}

TEST(OperationQueueTest, neverMoreThanTheAllowedNumberRunAtOnce) {
    for (const int limit : {1, 3}) {
        OperationQueue queue(u"test"_s, limit);
        std::atomic<int> running = 0;
        std::atomic<int> most = 0;
        std::atomic<int> total = 0;
        for (int i = 0; i < 200; ++i) {
            queue.addOperation([&] {
                const int now = ++running;
                int seen = most.load();
                while (seen < now && !most.compare_exchange_weak(seen, now)) {
                }
                ++total;
                std::this_thread::yield();
                --running;
            });
        }
        queue.waitUntilAllOperationsAreFinished();
        EXPECT_EQ(total, 200);
        EXPECT_LE(most, limit);
    }
}

TEST(OperationQueueTest, whatAnOperationOwnsIsGoneWhenTheWaitEnds) {
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> destroyed = false;
        OperationQueue queue(u"test"_s);
        auto owned = std::shared_ptr<int>(new int(1), [&](int* number) {
            std::this_thread::yield();
            destroyed = true;
            delete number;
        });
        queue.addOperation([owned = std::move(owned)] {});
        queue.waitUntilAllOperationsAreFinished();
        ASSERT_TRUE(destroyed);
    }
}

TEST(OperationQueueTest, idleHandlerIsCalledAfterTheLastOperation) {
    OperationQueue queue(u"test"_s);
    std::atomic<int> idle = 0;
    queue.setIdleHandler([&] { ++idle; });
    queue.setSuspended(true);
    queue.addOperation([] {});
    queue.addOperation([] {});
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(idle, 1);
    queue.setSuspended(true);
    queue.addOperation([] {});
    queue.cancelAllOperations();
    EXPECT_EQ(idle, 2);
}

/// Adds, cancels, suspends and changes priorities from three threads at once; meant for the thread
/// sanitizer, and for deadlocks.
TEST(OperationQueueTest, survivesUseFromManyThreads) {
    OperationQueue queue(u"storm"_s, 2);
    std::atomic<int> ran = 0;
    {
        std::vector<std::jthread> threads;
        for (unsigned seed = 1; seed <= 3; ++seed) {
            threads.emplace_back([&, seed] {
                std::mt19937 random(seed);
                std::vector<std::shared_ptr<Operation>> mine;
                for (int step = 0; step < 2000; ++step) {
                    const unsigned what = random() % 8;
                    Operation* some = mine.empty() ? nullptr : mine[random() % mine.size()].get();
                    if (what == 0) queue.setSuspended(random() % 2 == 0);
                    if (what == 1 && some) some->cancel();
                    if (what == 2 && some) some->setQueuePriority(QueuePriority::High);
                    if (what == 3 && step % 100 == 0) queue.cancelAllOperations();
                    if (what < 4) continue;
                    mine.push_back(std::make_shared<Lambda>([&](Lambda&) { ++ran; }));
                    queue.addOperation(mine.back());
                }
            });
        }
    }
    queue.setSuspended(false);
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(queue.operationCount(), 0U);
    EXPECT_GT(ran, 0);
}

} // namespace
