#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace velmo {

/// True on the process's initial thread, which is the main thread as on the original platform.
bool isMainThread();

/// A queue of work: the main queue (run by whoever runs the main loop), the global concurrent
/// queues of three priorities, or a serial queue of one's own.
class DispatchQueue {
public:
    enum class Priority { High, Default, Low };
    using Work = std::function<void()>;
    using Duration = std::chrono::steady_clock::duration;

    /// Runs on the main thread, in order, while a host or a test runs the main loop.
    static DispatchQueue& main();
    static DispatchQueue& global(Priority priority = Priority::Default);
    /// A concurrent queue with `threads` threads of its own, for work that must never wait for a
    /// thread behind jobs that block (the global queues hold jobs that wait on the network). Work
    /// still queued when the last reference goes runs to its end before the threads stop.
    static std::shared_ptr<DispatchQueue> createConcurrent(std::string label, std::size_t threads);
    /// A queue that runs one item at a time, in order, on the default global threads.
    static std::shared_ptr<DispatchQueue> createSerial(std::string label);
    /// The same on the threads of `target`, a global or a created concurrent queue, which the
    /// serial queue keeps running; any other target throws `std::invalid_argument`.
    static std::shared_ptr<DispatchQueue> createSerial(std::string label, const DispatchQueue& target);

    ~DispatchQueue();
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    const std::string& label() const;

    void async(Work work);
    void after(Duration delay, Work work);
    /// Runs the work on the queue and waits for it. Called on the queue itself (the main queue
    /// from the main thread, a serial queue from its own work) it runs inline instead of
    /// deadlocking. Exceptions of the work reach the caller.
    void sync(const Work& work);

    /// True when the calling code is running on this queue.
    bool isCurrent() const;

    /// For timers and the operation queue: the queue's executor, type-erased.
    struct Impl;
    Impl& impl() const { return *impl_; }

private:
    explicit DispatchQueue(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

/// A repeating timer on a queue. The first firing is one interval after `start`.
class DispatchTimer {
public:
    explicit DispatchTimer(DispatchQueue& queue);
    ~DispatchTimer();
    DispatchTimer(const DispatchTimer&) = delete;
    DispatchTimer& operator=(const DispatchTimer&) = delete;

    void start(DispatchQueue::Duration interval, DispatchQueue::Work work, bool repeats = true);
    /// No firing starts after `cancel` returns; a firing already under way on another thread ends.
    /// The pending wait is dropped too, so nothing of the timer outlives it on its queue.
    void cancel();
    bool isValid() const;

private:
    struct State;
    std::shared_ptr<State> state_;
};

/// Runs the main queue on the calling thread (the main thread) until `stopMainLoop`.
void runMainLoop();
void stopMainLoop();
/// Runs the main queue until `done` answers true or the time-out passes. Returns `done()`.
bool runMainLoopUntil(const std::function<bool()>& done, DispatchQueue::Duration timeout);
/// Runs whatever the main queue holds now, without waiting.
void drainMainQueue();

} // namespace velmo
