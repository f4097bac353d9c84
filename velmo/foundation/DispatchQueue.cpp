#include "velmo/foundation/DispatchQueue.h"

#include <algorithm>
#include <future>
#include <stdexcept>
#include <thread>

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <unistd.h>

namespace velmo {

namespace asio = boost::asio;

// The initial thread of a Linux process has the process's own id as its thread id.
bool isMainThread() {
    return gettid() == getpid();
}

struct DispatchQueue::Impl {
    std::string label;
    asio::any_io_executor executor;
    // The threads of a concurrent queue, and of a serial queue's target, which it keeps alive.
    std::shared_ptr<asio::thread_pool> pool;
    // For a serial queue: the strand, to tell whether its work is running.
    std::unique_ptr<asio::strand<asio::thread_pool::executor_type>> strand;
    bool isMain = false;
};

namespace {

struct MainContext {
    asio::io_context context;
    asio::executor_work_guard<asio::io_context::executor_type> guard = asio::make_work_guard(context);
};

MainContext& mainContext() {
    static MainContext* main = new MainContext(); // lives for the process, like the main run loop
    return *main;
}

// Global threads are never joined: work stuck on the network must not hold the process at exit.
// Widths: high and default have room for work that blocks on the network (release jobs block on
// registry requests); low runs rare background chores.
asio::thread_pool& pool(DispatchQueue::Priority priority) {
    switch (priority) {
    case DispatchQueue::Priority::High: {
        static auto* p = new asio::thread_pool(4);
        return *p;
    }
    case DispatchQueue::Priority::Low: {
        static auto* p = new asio::thread_pool(2);
        return *p;
    }
    case DispatchQueue::Priority::Default:
        break;
    }
    static auto* p = new asio::thread_pool(8);
    return *p;
}

thread_local const DispatchQueue* tlsCurrentGlobal = nullptr;

} // namespace

DispatchQueue::DispatchQueue(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
DispatchQueue::~DispatchQueue() = default;

DispatchQueue& DispatchQueue::main() {
    static DispatchQueue* queue = [] {
        auto impl = std::make_unique<Impl>();
        impl->label = "com.apple.main-thread";
        impl->executor = mainContext().context.get_executor();
        impl->isMain = true;
        return new DispatchQueue(std::move(impl));
    }();
    return *queue;
}

DispatchQueue& DispatchQueue::global(Priority priority) {
    auto make = [](Priority p, const char* label) {
        auto impl = std::make_unique<Impl>();
        impl->label = label;
        impl->pool = std::shared_ptr<asio::thread_pool>(&pool(p), [](asio::thread_pool*) {});
        impl->executor = impl->pool->get_executor();
        return new DispatchQueue(std::move(impl));
    };
    switch (priority) {
    case Priority::High: {
        static DispatchQueue* q = make(Priority::High, "com.apple.root.user-initiated-qos");
        return *q;
    }
    case Priority::Low: {
        static DispatchQueue* q = make(Priority::Low, "com.apple.root.utility-qos");
        return *q;
    }
    case Priority::Default:
        break;
    }
    static DispatchQueue* q = make(Priority::Default, "com.apple.root.default-qos");
    return *q;
}

std::shared_ptr<DispatchQueue> DispatchQueue::createConcurrent(std::string label, std::size_t threads) {
    auto impl = std::make_unique<Impl>();
    impl->label = std::move(label);
    // The last reference may go on one of the pool's own threads, which can't join itself: the
    // pool is joined, after its queued work, from a thread of its own.
    impl->pool = std::shared_ptr<asio::thread_pool>(new asio::thread_pool(std::max<std::size_t>(threads, 1)),
                                                    [](asio::thread_pool* p) {
                                                        std::thread([p] {
                                                            p->join();
                                                            delete p;
                                                        }).detach();
                                                    });
    impl->executor = impl->pool->get_executor();
    return std::shared_ptr<DispatchQueue>(new DispatchQueue(std::move(impl)));
}

std::shared_ptr<DispatchQueue> DispatchQueue::createSerial(std::string label) {
    return createSerial(std::move(label), global());
}

std::shared_ptr<DispatchQueue> DispatchQueue::createSerial(std::string label, const DispatchQueue& target) {
    if (!target.impl_->pool || target.impl_->strand)
        throw std::invalid_argument("a serial queue runs on a concurrent queue");
    auto impl = std::make_unique<Impl>();
    impl->label = std::move(label);
    impl->pool = target.impl_->pool;
    impl->strand = std::make_unique<asio::strand<asio::thread_pool::executor_type>>(
        asio::make_strand(impl->pool->get_executor()));
    impl->executor = *impl->strand;
    return std::shared_ptr<DispatchQueue>(new DispatchQueue(std::move(impl)));
}

const std::string& DispatchQueue::label() const {
    return impl_->label;
}

void DispatchQueue::async(Work work) {
    if (impl_->strand || impl_->isMain) {
        asio::post(impl_->executor, std::move(work));
        return;
    }
    asio::post(impl_->executor, [this, work = std::move(work)] {
        const DispatchQueue* previous = tlsCurrentGlobal;
        tlsCurrentGlobal = this;
        work();
        tlsCurrentGlobal = previous;
    });
}

void DispatchQueue::after(Duration delay, Work work) {
    auto timer = std::make_shared<asio::steady_timer>(impl_->executor, delay);
    timer->async_wait([this, timer, work = std::move(work)](const boost::system::error_code& ec) {
        if (ec) return;
        if (impl_->strand || impl_->isMain) {
            work();
        } else {
            async(work);
        }
    });
}

bool DispatchQueue::isCurrent() const {
    if (impl_->isMain) return isMainThread();
    if (impl_->strand) return impl_->strand->running_in_this_thread();
    return tlsCurrentGlobal == this;
}

void DispatchQueue::sync(const Work& work) {
    if (isCurrent()) {
        work();
        return;
    }
    std::promise<void> done;
    auto finished = done.get_future();
    asio::post(impl_->executor, [&] {
        try {
            work();
            done.set_value();
        } catch (...) {
            done.set_exception(std::current_exception());
        }
    });
    finished.get();
}

// ---------------------------------------------------------------- timer

struct DispatchTimer::State : std::enable_shared_from_this<DispatchTimer::State> {
    explicit State(DispatchQueue& q) : timer(q.impl().executor) {}
    // Touched under `mutex` only, on its executor: asio timers are not safe to touch from two
    // threads, and a global queue's executor runs two jobs at once.
    asio::steady_timer timer;
    std::mutex mutex;
    bool valid = false;
    std::uint64_t generation = 0;
    DispatchQueue::Duration interval{};
    DispatchQueue::Work work;
    bool repeats = true;

    void arm(std::uint64_t gen) {
        timer.expires_after(interval);
        timer.async_wait([self = shared_from_this(), gen](const boost::system::error_code& ec) {
            if (ec) return;
            DispatchQueue::Work w;
            {
                std::lock_guard lock(self->mutex);
                if (!self->valid || self->generation != gen) return;
                w = self->work;
                if (!self->repeats) self->valid = false;
            }
            w();
            std::lock_guard lock(self->mutex);
            if (self->valid && self->repeats && self->generation == gen) self->arm(gen);
        });
    }
};

DispatchTimer::DispatchTimer(DispatchQueue& queue) : state_(std::make_shared<State>(queue)) {}

DispatchTimer::~DispatchTimer() {
    cancel();
}

void DispatchTimer::start(DispatchQueue::Duration interval, DispatchQueue::Work work, bool repeats) {
    auto state = state_;
    std::lock_guard lock(state->mutex);
    state->valid = true;
    state->interval = interval;
    state->work = std::move(work);
    state->repeats = repeats;
    const std::uint64_t gen = ++state->generation;
    asio::post(state->timer.get_executor(), [state, gen] {
        std::lock_guard lock(state->mutex);
        if (state->valid && state->generation == gen) state->arm(gen);
    });
}

void DispatchTimer::cancel() {
    auto state = state_;
    std::lock_guard lock(state->mutex);
    if (!state->valid) return;
    state->valid = false;
    const std::uint64_t gen = ++state->generation;
    state->work = nullptr;
    // Left alone, the pending wait would hold the timer until the time it was set for (many
    // minutes for a request's time-out). A later `start` re-arms it anyway.
    asio::post(state->timer.get_executor(), [state, gen] {
        std::lock_guard lock(state->mutex);
        if (state->generation == gen) state->timer.cancel();
    });
}

bool DispatchTimer::isValid() const {
    std::lock_guard lock(state_->mutex);
    return state_->valid;
}

// ---------------------------------------------------------------- main loop

void runMainLoop() {
    auto& ctx = mainContext().context;
    ctx.restart();
    ctx.run();
}

void stopMainLoop() {
    mainContext().context.stop();
}

bool runMainLoopUntil(const std::function<bool()>& done, DispatchQueue::Duration timeout) {
    auto& ctx = mainContext().context;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline) return done();
        if (ctx.stopped()) ctx.restart();
        ctx.run_one_for(std::min<DispatchQueue::Duration>(deadline - now, std::chrono::milliseconds(20)));
    }
    return true;
}

void drainMainQueue() {
    auto& ctx = mainContext().context;
    if (ctx.stopped()) ctx.restart();
    ctx.poll();
}

} // namespace velmo
