#include "velmo/foundation/OperationQueue.h"

#include <algorithm>
#include <list>
#include <mutex>
#include <stdexcept>

#include <fmt/format.h>

#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/SystemLog.h"

namespace velmo {

struct OperationQueue::State : std::enable_shared_from_this<OperationQueue::State> {
    struct Entry {
        std::shared_ptr<Operation> operation;
        Operation::ObserverToken token = 0;
        bool started = false;
    };

    mutable std::mutex mutex;
    std::string name;
    std::shared_ptr<DispatchQueue> underlying; // null: the default global queue
    int width = kDefaultMaxConcurrentOperationCount;
    int running = 0;
    int holds = 0; // while above 0, nothing starts
    std::list<Entry> entries;

    // Starts waiting operations while there is room, oldest first.
    void schedule() {
        std::vector<std::shared_ptr<Operation>> toStart;
        {
            std::lock_guard lock(mutex);
            if (holds > 0) return;
            for (auto& entry : entries) {
                if (running >= width) break;
                if (entry.started || !entry.operation->isReady()) continue;
                entry.started = true;
                ++running;
                toStart.push_back(entry.operation);
            }
        }
        DispatchQueue& queue = underlying ? *underlying : DispatchQueue::global();
        for (auto& operation : toStart) {
            queue.async([self = shared_from_this(), operation] { self->run(operation); });
        }
    }

    void run(const std::shared_ptr<Operation>& operation) {
        try {
            operation->start();
            return;
        } catch (const std::exception& e) {
            SystemLog::log(fmt::format("*** {}: an operation raised in start: {}", name, e.what()));
        } catch (...) {
            SystemLog::log(fmt::format("*** {}: an operation raised in start", name));
        }
        // An operation that failed before it ran will never say it finished: free its slot.
        if (!operation->isExecuting()) release(*operation);
    }

    void changed(Operation& operation, std::string_view key) {
        if (key == "isFinished" && operation.isFinished()) {
            release(operation);
        } else if (key == "isReady") {
            schedule();
        }
    }

    void release(Operation& operation) {
        Operation::ObserverToken token = 0;
        {
            std::lock_guard lock(mutex);
            auto it = std::find_if(entries.begin(), entries.end(),
                                   [&](const Entry& e) { return e.operation.get() == &operation; });
            if (it == entries.end()) return;
            if (it->started) --running;
            token = it->token;
            entries.erase(it);
        }
        operation.removeObserver(token);
        schedule();
    }
};

OperationQueue::OperationQueue(std::string name) : OperationQueue(std::move(name), nullptr) {}

OperationQueue::OperationQueue(std::string name, std::shared_ptr<DispatchQueue> underlyingQueue)
    : state_(std::make_shared<State>()) {
    state_->name = name.empty() ? "NSOperationQueue" : std::move(name);
    state_->underlying = std::move(underlyingQueue);
}

OperationQueue::~OperationQueue() = default;

const std::string& OperationQueue::name() const {
    return state_->name;
}

void OperationQueue::addOperation(std::shared_ptr<Operation> operation) {
    if (!operation) throw std::invalid_argument("operation must not be null");
    if (operation->state() != OperationState::Ready) {
        throw std::invalid_argument("operation is executing or finished and cannot be enqueued");
    }
    if (operation->enqueued_.exchange(true)) throw std::invalid_argument("operation is already in a queue");
    {
        std::lock_guard lock(state_->mutex);
        // The observer holds the bookkeeping: operations keep running after the queue object goes.
        Operation* raw = operation.get();
        const std::size_t before = state_->entries.size();
        try {
            state_->entries.push_back({operation, 0, false});
            state_->entries.back().token = raw->addObserver(
                [state = state_](Operation& op, std::string_view key) { state->changed(op, key); });
        } catch (...) {
            // Short of memory the operation is in no queue, and may be added again.
            if (state_->entries.size() > before) state_->entries.pop_back();
            operation->enqueued_ = false;
            throw;
        }
    }
    state_->schedule();
}

std::vector<std::shared_ptr<Operation>> OperationQueue::operations() const {
    std::lock_guard lock(state_->mutex);
    std::vector<std::shared_ptr<Operation>> result;
    result.reserve(state_->entries.size());
    for (const auto& entry : state_->entries)
        result.push_back(entry.operation);
    return result;
}

std::size_t OperationQueue::operationCount() const {
    std::lock_guard lock(state_->mutex);
    return state_->entries.size();
}

void OperationQueue::cancelAllOperations() {
    cancelOperations([](Operation&) { return true; });
}

void OperationQueue::cancelOperations(const std::function<bool(Operation&)>& which) {
    {
        std::lock_guard lock(state_->mutex);
        ++state_->holds;
    }
    try {
        for (const auto& operation : operations()) {
            if (which(*operation)) operation->cancel();
        }
    } catch (...) {
        std::lock_guard lock(state_->mutex);
        --state_->holds;
        throw;
    }
    {
        std::lock_guard lock(state_->mutex);
        --state_->holds;
    }
    state_->schedule();
}

int OperationQueue::maxConcurrentOperationCount() const {
    std::lock_guard lock(state_->mutex);
    return state_->width;
}

void OperationQueue::setMaxConcurrentOperationCount(int count) {
    {
        std::lock_guard lock(state_->mutex);
        state_->width = std::max(count, 1);
    }
    state_->schedule();
}

} // namespace velmo
