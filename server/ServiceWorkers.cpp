#include "server/ServiceWorkers.h"

namespace velmo::server {

ServiceWorkers::ServiceWorkers(std::size_t count) {
    threads_.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        threads_.emplace_back([this] { work(); });
}

ServiceWorkers::~ServiceWorkers() {
    shutdown();
}

void ServiceWorkers::enqueue(std::function<void()> job) {
    {
        std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
        waiting_.store(jobs_.size(), std::memory_order_relaxed);
    }
    ready_.notify_one();
}

void ServiceWorkers::shutdown() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    ready_.notify_all();
    for (std::thread& thread : threads_) {
        if (thread.joinable()) thread.join();
    }
}

void ServiceWorkers::work() {
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(mutex_);
            ready_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
            if (jobs_.empty()) return;
            job = std::move(jobs_.front());
            jobs_.pop_front();
            waiting_.store(jobs_.size(), std::memory_order_relaxed);
        }
        job();
    }
}

} // namespace velmo::server
