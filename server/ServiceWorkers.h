#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <httplib.h>

namespace velmo::server {

/// The service's bounded pool of workers. The HTTP server gives each connection to one worker for
/// as long as it stays open, so a connection kept alive while others wait would hold its worker
/// idle; the pool tells how many connections wait, and the service closes a connection after its
/// answer while any do.
class ServiceWorkers : public httplib::TaskQueue {
public:
    explicit ServiceWorkers(std::size_t count);
    ~ServiceWorkers() override;

    void enqueue(std::function<void()> job) override;
    /// Runs what is queued, then ends the workers.
    void shutdown() override;

    /// Connections waiting for a worker.
    std::size_t waiting() const { return waiting_.load(std::memory_order_relaxed); }

private:
    void work();

    std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<std::function<void()>> jobs_;
    std::atomic<std::size_t> waiting_{0};
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

} // namespace velmo::server
