#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

#include "velmo/foundation/Object.h"
#include "velmo/runtime/VDWeakMutableSetItem.h"

namespace velmo {

/// A set that holds its members weakly: members that go leave dead items behind until `cleanup`.
/// Members compare by `isEqual` and `hash`; a member's hash must not change while it is in the set.
/// Safe to use from several threads; callbacks run outside the set's lock.
class VDWeakMutableSet {
public:
    using ItemSet =
        std::unordered_set<VDWeakMutableSetItem, VDWeakMutableSetItem::Hash, VDWeakMutableSetItem::Equal>;

    /// nullptr is ignored.
    void addObject(const std::shared_ptr<Object>& object);
    /// Removes the member equal to `object`; nullptr is ignored.
    void removeObject(const std::shared_ptr<Object>& object);
    /// Drops the items whose members have gone.
    void cleanup();
    /// `cleanup`, then a copy of the items.
    std::vector<VDWeakMutableSetItem> allValidObjects();
    /// Calls `callback` with each member that still lives when its turn comes. Order unspecified.
    void enumerateValidObjects(const std::function<void(const std::shared_ptr<Object>&)>& callback);

private:
    /// Under the lock.
    void removeDeadItems();

    std::mutex mutex_;
    ItemSet set_;
};

} // namespace velmo
