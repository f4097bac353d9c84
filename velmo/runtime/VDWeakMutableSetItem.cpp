#include "velmo/runtime/VDWeakMutableSetItem.h"

namespace velmo {

VDWeakMutableSetItem::VDWeakMutableSetItem(const std::shared_ptr<Object>& object)
    : object_(object), objHash_(object ? object->hash() : 0) {}

bool VDWeakMutableSetItem::isEqual(const VDWeakMutableSetItem& other) const {
    const auto mine = object_.lock();
    const auto theirs = other.object_.lock();
    if (!mine || !theirs) return false;
    return mine == theirs || mine->isEqual(*theirs);
}

} // namespace velmo
