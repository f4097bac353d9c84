#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/foundation/OperationQueue.h"

using namespace velmo;
using namespace std::chrono_literals;

namespace {

// Runs until told to end, as a transfer does.
class OpenOperation : public Operation {
public:
    explicit OpenOperation(std::atomic<int>* running = nullptr, std::atomic<int>* peak = nullptr)
        : running_(running), peak_(peak) {}
    bool isConcurrent() const override { return true; }
    void start() override {
        if (isCancelled()) {
            setState(OperationState::Finished);
            return;
        }
        if (running_) {
            const int now = ++*running_;
            int seen = peak_->load();
            while (now > seen && !peak_->compare_exchange_weak(seen, now)) {
            }
        }
        setState(OperationState::Executing);
    }
    void end() {
        if (running_) --*running_;
        setState(OperationState::Finished);
    }

private:
    std::atomic<int>* running_;
    std::atomic<int>* peak_;
};

class BlockOperation : public Operation {
public:
    explicit BlockOperation(std::function<void()> work) : work_(std::move(work)) {}
    void main() override { work_(); }

private:
    std::function<void()> work_;
};

template <class Predicate> bool eventually(Predicate done) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

} // namespace

TEST(OperationQueue, ConcurrentOperationsHoldTheirSlotUntilTheyFinish) {
    OperationQueue queue;
    EXPECT_EQ(queue.maxConcurrentOperationCount(), OperationQueue::kDefaultMaxConcurrentOperationCount);
    queue.setMaxConcurrentOperationCount(2);
    std::atomic<int> running{0};
    std::atomic<int> peak{0};
    std::vector<std::shared_ptr<OpenOperation>> operations;
    for (int i = 0; i < 5; ++i) {
        operations.push_back(std::make_shared<OpenOperation>(&running, &peak));
        queue.addOperation(operations.back());
    }
    for (std::size_t next = 0; next < operations.size(); ++next) {
        ASSERT_TRUE(eventually([&] { return operations[next]->isExecuting(); })) << next;
        // The queue fills its width before the oldest ends.
        if (next + 1 < operations.size()) {
            ASSERT_TRUE(eventually([&] { return operations[next + 1]->isExecuting(); })) << next + 1;
        }
        // Operations start in the order they were added.
        for (std::size_t later = next + 2; later < operations.size(); ++later) {
            EXPECT_TRUE(operations[later]->isReady()) << later;
        }
        operations[next]->end();
    }
    ASSERT_TRUE(eventually([&] { return queue.operationCount() == 0; }));
    EXPECT_EQ(peak.load(), 2);
}

TEST(OperationQueue, OperationsListsWhatHasNotFinished) {
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    auto first = std::make_shared<OpenOperation>();
    auto second = std::make_shared<OpenOperation>();
    queue.addOperation(first);
    queue.addOperation(second);
    EXPECT_EQ(queue.operations(), (std::vector<std::shared_ptr<Operation>>{first, second}));
    ASSERT_TRUE(eventually([&] { return first->isExecuting(); }));
    first->end();
    ASSERT_TRUE(
        eventually([&] { return queue.operations() == std::vector<std::shared_ptr<Operation>>{second}; }));
    ASSERT_TRUE(eventually([&] { return second->isExecuting(); }));
    second->end();
    ASSERT_TRUE(eventually([&] { return queue.operationCount() == 0; }));
}

TEST(OperationQueue, CancelAllSkipsTheWorkOfPlainOperationsNotYetRun) {
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    auto blocker = std::make_shared<OpenOperation>();
    std::atomic<int> ran{0};
    auto waiting = std::make_shared<BlockOperation>([&] { ++ran; });
    queue.addOperation(blocker);
    queue.addOperation(waiting);
    ASSERT_TRUE(eventually([&] { return blocker->isExecuting(); }));
    queue.cancelAllOperations();
    EXPECT_TRUE(blocker->isCancelled());
    blocker->end();
    ASSERT_TRUE(eventually([&] { return waiting->isFinished(); }));
    EXPECT_EQ(ran.load(), 0);
}

TEST(OperationQueue, AnOperationThatRaisesInStartFreesItsSlot) {
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    class Raising : public Operation {
        void start() override { throw std::invalid_argument("bad parameters"); }
    };
    std::atomic<int> ran{0};
    auto after = std::make_shared<BlockOperation>([&] { ++ran; });
    queue.addOperation(std::make_shared<Raising>());
    queue.addOperation(after);
    ASSERT_TRUE(eventually([&] { return after->isFinished(); }));
    EXPECT_EQ(ran.load(), 1);
    EXPECT_TRUE(eventually([&] { return queue.operationCount() == 0; }));
}

TEST(OperationQueue, AnOperationIsQueuedOnceAndOnlyBeforeItRuns) {
    OperationQueue queue;
    queue.setMaxConcurrentOperationCount(1);
    auto blocker = std::make_shared<OpenOperation>();
    auto waiting = std::make_shared<OpenOperation>();
    queue.addOperation(blocker);
    queue.addOperation(waiting);
    EXPECT_THROW(queue.addOperation(waiting), std::invalid_argument);
    ASSERT_TRUE(eventually([&] { return blocker->isExecuting(); }));
    EXPECT_THROW(queue.addOperation(blocker), std::invalid_argument);
    EXPECT_THROW(queue.addOperation(nullptr), std::invalid_argument);
    blocker->end();
    ASSERT_TRUE(eventually([&] { return waiting->isExecuting(); }));
    waiting->end();
    ASSERT_TRUE(eventually([&] { return queue.operationCount() == 0; }));
}

TEST(OperationQueue, OperationsOutliveTheQueueObject) {
    std::atomic<int> ran{0};
    {
        OperationQueue queue;
        queue.setMaxConcurrentOperationCount(1);
        for (int i = 0; i < 3; ++i) {
            queue.addOperation(std::make_shared<BlockOperation>([&] {
                std::this_thread::sleep_for(5ms);
                ++ran;
            }));
        }
    }
    EXPECT_TRUE(eventually([&] { return ran.load() == 3; }));
}

TEST(OperationQueue, OperationsStartOnTheUnderlyingQueue) {
    auto underlying = DispatchQueue::createConcurrent("test.underlying", 1);
    OperationQueue queue("test", underlying);
    std::atomic<bool> onUnderlying{false};
    queue.addOperation(std::make_shared<BlockOperation>([&] { onUnderlying = underlying->isCurrent(); }));
    ASSERT_TRUE(eventually([&] { return queue.operationCount() == 0; }));
    EXPECT_TRUE(onUnderlying.load());
}
