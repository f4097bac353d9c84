#include "velmo/foundation/Operation.h"

#include <algorithm>

#include "velmo/foundation/VDClass.h"

namespace velmo {

Operation::~Operation() = default;

const VDClass& Operation::classObject() {
    static const VDClass cls("NSOperation", nullptr, nullptr);
    return cls;
}

void Operation::start() {
    if (isCancelled()) {
        setState(OperationState::Finished);
        return;
    }
    setState(OperationState::Executing);
    try {
        main();
    } catch (...) {
        setState(OperationState::Finished);
        throw;
    }
    setState(OperationState::Finished);
}

void Operation::cancel() {
    markCancelled();
}

OperationState Operation::state() const {
    std::lock_guard lock(mutex_);
    return state_;
}

OperationState Operation::setState(OperationState state) {
    OperationState previous;
    {
        std::lock_guard lock(mutex_);
        previous = state_;
        state_ = state;
    }
    if (previous == state) return previous;
    if (previous == OperationState::Ready) didChangeValueForKey("isReady");
    if (previous == OperationState::Executing || state == OperationState::Executing) {
        didChangeValueForKey("isExecuting");
    }
    if (state == OperationState::Finished) didChangeValueForKey("isFinished");
    return previous;
}

Operation::ObserverToken Operation::addObserver(Observer observer) {
    std::lock_guard lock(mutex_);
    const ObserverToken token = nextToken_++;
    observers_.push_back({token, std::make_shared<Observer>(std::move(observer))});
    return token;
}

void Operation::removeObserver(ObserverToken token) {
    std::lock_guard lock(mutex_);
    std::erase_if(observers_, [token](const Registration& r) { return r.token == token; });
}

void Operation::didChangeValueForKey(std::string_view key) {
    // Observers run without the lock: a queue's observer starts other operations and may remove
    // itself.
    std::vector<std::shared_ptr<Observer>> observers;
    {
        std::lock_guard lock(mutex_);
        observers.reserve(observers_.size());
        for (const auto& r : observers_)
            observers.push_back(r.observer);
    }
    for (const auto& observer : observers)
        (*observer)(*this, key);
}

} // namespace velmo
