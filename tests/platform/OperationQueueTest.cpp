#include "platform/tasks/OperationQueue.h"
#include "platform/tasks/ExitDeadline.h"
#include "support/Support.h"

#include <QElapsedTimer>

#include <latch>

using platform::Operation;
using platform::OperationQueue;
using platform::QueuePriority;
using Operations = std::vector<std::shared_ptr<Operation>>;

namespace {

struct Lambda : Operation {
    explicit Lambda(std::function<void(Lambda&)> body, std::int64_t key = 0)
        : Operation(key), _body(std::move(body)) {}
    void main() override { _body(*this); }
    const std::function<void(Lambda&)> _body;
};

/// A line of operations that note their keys.
struct OperationLineTest : testing::Test {
    OperationLineTest() { queue.setSuspended(true); }
    std::shared_ptr<Operation> noting(std::int64_t key) {
        return std::make_shared<Lambda>([this](Lambda& self) { ran += self.keys()[0]; }, key);
    }
    QList<std::int64_t> waiting() const {
        QList<std::int64_t> keys;
        for (const auto& operation : queue.operations())
            keys += operation->keys()[0];
        return keys;
    }
    void runAll() {
        queue.setSuspended(false);
        queue.waitUntilAllOperationsAreFinished();
    }
    using Keys = QList<std::int64_t>;
    Keys ran; // looked at while nothing runs
    OperationQueue queue{u"test"_s};
};

TEST_F(OperationLineTest, serialQueueRunsInOrderOfPriorityThenArrivalAndTellsTheEnd) {
    int idle = 0;
    queue.setIdleHandler([&] { ++idle; });
    Operations operations;
    for (int key = 1; key <= 6; ++key)
        operations.push_back(noting(key));
    operations[5]->setQueuePriority(QueuePriority::High);
    operations[0]->setQueuePriority(QueuePriority::Low);
    operations[3]->setQueuePriority(QueuePriority::VeryHigh);
    for (const auto& operation : operations)
        queue.addOperation(operation);
    // While waiting: the second falls behind, the first comes back to where it was added.
    operations[1]->setQueuePriority(QueuePriority::VeryLow);
    operations[0]->setQueuePriority(QueuePriority::Normal);
    operations[4]->cancel();
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(queue.nextOperations(2), (std::vector{operations[3], operations[5]}));
    EXPECT_EQ(queue.nextOperations(99), queue.operations());
    runAll();
    EXPECT_EQ(ran, (Keys{4, 6, 1, 3, 2})) << "and never the cancelled one";
    EXPECT_EQ(idle, 1);
    EXPECT_TRUE(operations[1]->isFinished() && operations[4]->isFinished());

    queue.setSuspended(true);
    queue.addOperation(noting(7));
    queue.cancelAllOperations();
    EXPECT_EQ(idle, 2);
    EXPECT_EQ(queue.operationCount(), 0U);
    queue.waitUntilAllOperationsAreFinished(); // though suspended
    EXPECT_EQ(ran.size(), 5);
}

TEST_F(OperationLineTest, whatIsPreferredComesFirstAndGoesBackToItsPlace) {
    using enum QueuePriority;
    for (std::int64_t key = 1; key <= 6; ++key)
        queue.addOperation(noting(key));
    queue.prefer({{5, VeryHigh}, {1, High}, {3, High}, {99, VeryHigh}});
    EXPECT_EQ(waiting(), (Keys{5, 1, 3, 2, 4, 6}));
    EXPECT_EQ(queue.nextOperations(3).back()->keys()[0], 3);
    queue.prefer({{3, VeryHigh}, {6, High}});
    EXPECT_EQ(waiting(), (Keys{3, 6, 1, 2, 4, 5}));
    queue.operations().back()->setQueuePriority(VeryHigh); // of the fifth, by itself
    EXPECT_EQ(waiting(), (Keys{3, 5, 6, 1, 2, 4}));
    EXPECT_EQ(queue.operationCount(), 6U);
    queue.cancelAllOperations();
    EXPECT_EQ(queue.operationCount(), 0U);

    // The thumbnail of 2 is wanted once more: the last one is meant.
    for (const std::int64_t key : {1, 2, 3, 4, 2})
        queue.addOperation(noting(key));
    queue.prefer({{1, High}, {2, High}, {6, High}});
    EXPECT_EQ(waiting(), (Keys{1, 2, 2, 3, 4}));
    EXPECT_EQ(queue.operations()[1]->queuePriority(), High);
    queue.addOperation([&] {
        // The first two of the line are gone by now.
        queue.prefer({{4, High}});
        queue.prefer({});
    });
    queue.prefer({{3, High}, {4, High}});
    runAll();
    EXPECT_EQ(ran, (Keys{3, 4, 1, 2, 2}));
}

TEST_F(OperationLineTest, whatStandsForOthersIsKnownByAllAndTheyTakeItsPlace) {
    using enum QueuePriority;
    struct Several final : Lambda {
        Several(std::vector<std::int64_t> all, std::function<void(Lambda&)> body)
            : Lambda(std::move(body)), _keys(std::move(all)) {}
        std::span<const std::int64_t> keys() const override { return _keys; }
        const std::vector<std::int64_t> _keys;
    };
    const auto add = [&](std::int64_t first, bool isCancelled) {
        const std::vector<std::int64_t> keys{first, first + 1, first + 2};
        queue.addOperation(std::make_shared<Several>(keys, [this, isCancelled](Lambda& self) {
            ran += -self.keys()[0];
            Operations all;
            for (const std::int64_t key : self.keys())
                all.push_back(noting(key));
            if (isCancelled) self.cancel();
            queue.addInPlaceOf(self, all);
        }));
    };
    add(1, false);
    add(4, false);
    add(7, true);
    queue.addOperation(noting(10));
    EXPECT_EQ(queue.keyCount(), 10U);
    queue.prefer({{8, VeryHigh}, {9, High}});
    EXPECT_EQ(waiting()[0], 7);
    queue.prefer({{6, VeryHigh}, {5, High}, {8, High}});
    EXPECT_EQ(waiting()[0], 4);
    queue.prefer({{6, VeryHigh}, {5, High}, {10, High}});
    runAll();
    EXPECT_EQ(ran, (Keys{-4, 6, 5, 10, -1, 1, 2, 3, 4, -7}));
    EXPECT_EQ(queue.keyCount(), 0U);
}

TEST(OperationQueueTest, runningOperationIsCancelledByTheQueueOrItsEnd) {
    for (const bool byEnd : {false, true}) {
        std::optional<OperationQueue> queue(u"test"_s);
        std::latch started(1);
        int idle = 0;
        queue->setIdleHandler([&] { ++idle; });
        auto operation = std::make_shared<Lambda>([&](Lambda& self) {
            started.count_down();
            platform::Mutex mutex;
            platform::Lock lock(mutex);
            platform::Condition().waitUnlessStopped(lock, self.stopToken(), [] { return false; });
        });
        const auto behind = std::make_shared<Lambda>([](Lambda&) { FAIL(); });
        queue->addOperation(operation);
        queue->addOperation(behind);
        started.wait();
        EXPECT_EQ(queue->operations(), (Operations{operation, behind}));
        if (!byEnd) {
            queue->cancelAllOperations();
            queue->waitUntilAllOperationsAreFinished();
            EXPECT_EQ(idle, 1);
        }
        queue.reset();
        EXPECT_TRUE(operation->isFinished() && behind->isCancelled() && behind->isFinished());
    }
}

TEST(OperationQueueTest, whatMustRunIsNotCancelledByTheQueueThoughItRuns) {
    struct Needed final : Lambda {
        using Lambda::Lambda;
        bool mustRun() const override { return true; }
    };
    bool wasCancelled = true;
    OperationQueue queue(u"test"_s);
    queue.addOperation(std::make_shared<Needed>([&](Lambda& self) {
        queue.cancelAllOperations();
        wasCancelled = self.isCancelled();
    }));
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(wasCancelled);
}

TEST(OperationQueueTest, whatAnOperationOwnsIsGoneWhenTheWaitEnds) {
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> destroyed = false;
        OperationQueue queue(u"test"_s);
        std::shared_ptr<void> owned(nullptr, [&](void*) {
            std::this_thread::yield();
            destroyed = true;
        });
        queue.addOperation([owned = std::move(owned)] {});
        queue.waitUntilAllOperationsAreFinished();
        ASSERT_TRUE(destroyed);
    }
}

} // namespace

TEST(ExitDeadline, IsMetByWhoeverIsNotGoneInTime) {
    std::atomic<int> passed = 0;
    {
        const platform::ExitDeadline kept(std::chrono::hours(1), [&] { ++passed; });
    }
    EXPECT_EQ(passed, 0);
    const platform::ExitDeadline::Hold storing;
    QElapsedTimer time;
    time.start();
    const platform::ExitDeadline missed(std::chrono::milliseconds(10), [&] { ++passed; });
    EXPECT_TRUE(support::spinUntil([&] { return passed == 1; }));
    EXPECT_GE(time.elapsed(), 99) << "ten times the limit";
}
