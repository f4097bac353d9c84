#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/foundation/DispatchQueue.h"

using namespace velmo;
using namespace std::chrono_literals;

TEST(DispatchQueue, MainQueueRunsInOrderOnTheMainThread) {
    ASSERT_TRUE(isMainThread());
    std::vector<int> order;
    bool allOnMain = true;
    std::thread poster([&] {
        EXPECT_FALSE(isMainThread());
        for (int i = 0; i < 100; ++i) {
            DispatchQueue::main().async([&, i] {
                allOnMain = allOnMain && isMainThread();
                order.push_back(i);
            });
        }
    });
    poster.join();
    ASSERT_TRUE(runMainLoopUntil([&] { return order.size() == 100; }, 5s));
    EXPECT_TRUE(allOnMain);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(DispatchQueue, SerialQueueRunsOneAtATimeInOrder) {
    auto queue = DispatchQueue::createSerial("test.serial");
    std::atomic<int> running{0};
    std::atomic<bool> overlapped{false};
    std::mutex m;
    std::vector<int> order;
    std::atomic<int> done{0};
    for (int i = 0; i < 200; ++i) {
        queue->async([&, i] {
            if (running.fetch_add(1) != 0) overlapped = true;
            EXPECT_TRUE(queue->isCurrent());
            {
                std::lock_guard lock(m);
                order.push_back(i);
            }
            running.fetch_sub(1);
            done.fetch_add(1);
        });
    }
    queue->sync([] {});
    EXPECT_EQ(done.load(), 200) << "sync waits behind what is queued";
    EXPECT_FALSE(overlapped.load());
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    EXPECT_FALSE(queue->isCurrent());
}

TEST(DispatchQueue, SyncOnItselfRunsInlineAndPassesExceptions) {
    auto queue = DispatchQueue::createSerial("test.reentrant");
    int value = 0;
    queue->sync([&] { queue->sync([&] { value = 1; }); });
    EXPECT_EQ(value, 1);
    DispatchQueue::main().sync([&] { value = 2; });
    EXPECT_EQ(value, 2);
    EXPECT_THROW(DispatchQueue::global().sync([] { throw std::runtime_error("x"); }), std::runtime_error);
}

TEST(DispatchQueue, DelayedWorkWaitsItsTurn) {
    std::vector<int> order;
    DispatchQueue::main().after(50ms, [&] { order.push_back(2); });
    DispatchQueue::main().async([&] { order.push_back(1); });
    ASSERT_TRUE(runMainLoopUntil([&] { return order.size() == 2; }, 5s));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST(DispatchQueue, SerialQueueOnAPrivatePoolRunsWhileTheGlobalThreadsAreAllBlocked) {
    auto pool = DispatchQueue::createConcurrent("test.private", 2);
    auto queue = DispatchQueue::createSerial("test.private.serial", *pool);
    std::atomic<bool> release{false};
    std::atomic<int> ended{0};
    constexpr int kBlockers = 32; // more than the global threads
    for (int i = 0; i < kBlockers; ++i) {
        DispatchQueue::global().async([&] {
            while (!release)
                std::this_thread::sleep_for(1ms);
            ++ended;
        });
    }
    std::atomic<bool> ran{false};
    queue->async([&] { ran = true; });
    const bool ranWhileBlocked = runMainLoopUntil([&] { return ran.load(); }, 5s);
    release = true;
    EXPECT_TRUE(ranWhileBlocked);
    ASSERT_TRUE(runMainLoopUntil([&] { return ended.load() == kBlockers; }, 10s));
    EXPECT_THROW(DispatchQueue::createSerial("test.bad", DispatchQueue::main()), std::invalid_argument);
    EXPECT_THROW(DispatchQueue::createSerial("test.bad", *queue), std::invalid_argument);
}

TEST(DispatchTimer, RepeatsUntilCancelled) {
    DispatchTimer timer(DispatchQueue::main());
    int fired = 0;
    timer.start(5ms, [&] {
        if (++fired == 3) timer.cancel();
    });
    ASSERT_TRUE(runMainLoopUntil([&] { return fired >= 3; }, 5s));
    runMainLoopUntil([] { return false; }, 40ms);
    EXPECT_EQ(fired, 3);
    EXPECT_FALSE(timer.isValid());

    DispatchTimer once(DispatchQueue::global());
    std::atomic<int> onceFired{0};
    once.start(
        1ms, [&] { onceFired++; }, false);
    ASSERT_TRUE(runMainLoopUntil([&] { return onceFired.load() > 0 && !once.isValid(); }, 5s));
    EXPECT_EQ(onceFired.load(), 1);
}
