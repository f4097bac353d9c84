#pragma once

#include <cstddef>
#include <memory>

#include "velmo/foundation/Object.h"

namespace velmo {

/// A member of `VDWeakMutableSet`: a weak reference and the member's hash, taken once when the item
/// is made, so the item keeps its place in the set after the member has gone.
class VDWeakMutableSetItem {
public:
    explicit VDWeakMutableSetItem(const std::shared_ptr<Object>& object);

    /// The member, or nullptr once it has gone.
    std::shared_ptr<Object> nonretainedObjectValue() const { return object_.lock(); }
    std::size_t objHash() const { return objHash_; }
    std::size_t hash() const { return objHash_; }

    /// Equal when both members live and compare equal; an item whose member has gone equals nothing.
    bool isEqual(const VDWeakMutableSetItem& other) const;

    struct Hash {
        std::size_t operator()(const VDWeakMutableSetItem& item) const { return item.hash(); }
    };
    struct Equal {
        bool operator()(const VDWeakMutableSetItem& a, const VDWeakMutableSetItem& b) const {
            return a.isEqual(b);
        }
    };

private:
    std::weak_ptr<Object> object_;
    std::size_t objHash_;
};

} // namespace velmo
