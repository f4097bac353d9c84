#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Operation.h"

namespace velmo {

/// Runs operations, several at a time, as the platform's operation queue does.
///
/// Operations start in the order they were added, each as soon as it is ready and a slot is
/// free; `start` is called on a thread of the underlying queue, the default-priority global
/// queue unless the queue was made with another. An operation holds
/// its slot until it is finished, so a concurrent operation (one that ends when it says so)
/// counts against the width for as long as it runs, not only while `start` runs.
///
/// The queue's bookkeeping outlives the queue object while operations remain, so operations
/// added to a queue that goes away still run to their end.
class OperationQueue {
public:
    /// The width of a new queue. The platform leaves the width to the system, which let up to 64
    /// thread-holding operations run at once; operations here hold a slot, not a thread, so the
    /// same figure keeps work that is asked for all at once (one request per screen of a
    /// document) running at once, while still bounding the sockets one queue keeps open.
    static constexpr int kDefaultMaxConcurrentOperationCount = 64;

    explicit OperationQueue(std::string name = {});
    /// A queue whose operations start on `underlyingQueue`, a concurrent queue.
    OperationQueue(std::string name, std::shared_ptr<DispatchQueue> underlyingQueue);
    ~OperationQueue();
    OperationQueue(const OperationQueue&) = delete;
    OperationQueue& operator=(const OperationQueue&) = delete;

    const std::string& name() const;

    /// Queues the operation. An operation belongs to one queue and is added once; adding a
    /// started or queued operation again throws `std::invalid_argument`.
    void addOperation(std::shared_ptr<Operation> operation);

    /// The operations that have not finished, waiting ones and running ones, in the order they
    /// were added.
    std::vector<std::shared_ptr<Operation>> operations() const;
    std::size_t operationCount() const;

    /// Sends `cancel` to every operation the queue holds. What each does with it is its own
    /// affair.
    void cancelAllOperations();
    /// Sends `cancel` to each operation the queue holds for which `which` answers true. No
    /// operation starts while the queue is being walked, so the cancel reaches the operations as
    /// they stood at the call: one that was waiting is not caught running by it.
    void cancelOperations(const std::function<bool(Operation&)>& which);

    int maxConcurrentOperationCount() const;
    /// At least 1; a wider queue starts waiting operations at once.
    void setMaxConcurrentOperationCount(int count);

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace velmo
