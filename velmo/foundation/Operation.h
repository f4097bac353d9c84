#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "velmo/foundation/Object.h"

namespace velmo {

/// The life of an operation; the numbers are the ones the system stores.
enum class OperationState : unsigned { Ready = 0, Executing = 1, Finished = 2 };

/// A unit of work for an `OperationQueue`, as the platform's operation is.
///
/// A plain operation overrides `main`; `start` runs it and the operation is finished when `main`
/// returns. A concurrent operation overrides `start`, returns from it at once and ends when it says
/// so, by moving its state to finished. State changes are announced to observers under the keys
/// "isReady", "isExecuting" and "isFinished", which is how a queue learns that a slot is free.
class Operation : public Object {
public:
    using Observer = std::function<void(Operation& operation, std::string_view key)>;
    using ObserverToken = std::uint64_t;

    ~Operation() override;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// Runs the operation on the calling thread. The default finishes at once when cancelled, and
    /// otherwise runs `main` between the executing and finished states.
    virtual void start();
    /// The work of a plain operation.
    virtual void main() {}
    /// Marks the operation cancelled; what that stops is up to the operation.
    virtual void cancel();

    bool isCancelled() const { return cancelled_.load(); }
    virtual bool isReady() const { return state() == OperationState::Ready; }
    bool isExecuting() const { return state() == OperationState::Executing; }
    bool isFinished() const { return state() == OperationState::Finished; }
    /// True for operations that end when they say so rather than when `start` returns.
    virtual bool isConcurrent() const { return false; }

    OperationState state() const;

    /// Observers are told of each change of "isReady", "isExecuting" and "isFinished", on the
    /// thread that made it, after the change. They may remove themselves while being told.
    ObserverToken addObserver(Observer observer);
    void removeObserver(ObserverToken token);

protected:
    Operation() = default;

    /// Moves to `state` and tells observers which of the derived flags changed. Returns the
    /// state it replaced.
    OperationState setState(OperationState state);
    void markCancelled() { cancelled_.store(true); }
    /// Tells the observers that `key` changed, for subclasses with readiness of their own.
    void didChangeValueForKey(std::string_view key);

private:
    friend class OperationQueue;

    struct Registration {
        ObserverToken token;
        std::shared_ptr<Observer> observer;
    };

    mutable std::mutex mutex_;
    OperationState state_ = OperationState::Ready;
    std::atomic<bool> cancelled_{false};
    // Set by the queue that takes the operation: an operation is added to one queue, once.
    std::atomic<bool> enqueued_{false};
    std::vector<Registration> observers_;
    ObserverToken nextToken_ = 1;
};

} // namespace velmo
