#include "velmo/foundation/DispatchQueue.h"

#include <future>
#include <stdexcept>

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
bool isMainThread() { return gettid() == getpid(); }

struct DispatchQueue::Impl {
    std::string label;
    asio::any_io_executor executor;
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
    case DispatchQueue::Priority::Default: break;
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
        impl->executor = pool(p).get_executor();
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
    case Priority::Default: break;
    }
    static DispatchQueue* q = make(Priority::Default, "com.apple.root.default-qos");
    return *q;
}

std::shared_ptr<DispatchQueue> DispatchQueue::createSerial(std::string label) {
    auto impl = std::make_unique<Impl>();
    impl->label = std::move(label);
    impl->strand = std::make_unique<asio::strand<asio::thread_pool::executor_type>>(
        asio::make_strand(pool(Priority::Default).get_executor()));
    impl->executor = *impl->strand;
    return std::shared_ptr<DispatchQueue>(new DispatchQueue(std::move(impl)));
}

const std::string& DispatchQueue::label() const { return impl_->label; }

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
    explicit State(DispatchQueue& q) : queue(q), timer(q.impl().executor) {}
    DispatchQueue& queue;
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

DispatchTimer::~DispatchTimer() { cancel(); }

void DispatchTimer::start(DispatchQueue::Duration interval, DispatchQueue::Work work, bool repeats) {
    auto state = state_;
    std::lock_guard lock(state->mutex);
    state->valid = true;
    state->interval = interval;
    state->work = std::move(work);
    state->repeats = repeats;
    const std::uint64_t gen = ++state->generation;
    // Arm on the timer's own executor: asio timers are not safe to touch from two threads.
    asio::post(state->queue.impl().executor, [state, gen] {
        std::lock_guard lock(state->mutex);
        if (state->valid && state->generation == gen) state->arm(gen);
    });
}

void DispatchTimer::cancel() {
    auto state = state_;
    std::lock_guard lock(state->mutex);
    state->valid = false;
    ++state->generation;
    state->work = nullptr;
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

void stopMainLoop() { mainContext().context.stop(); }

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
