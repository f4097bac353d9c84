#include "velmo/runtime/VDWeakMutableSet.h"

namespace velmo {

void VDWeakMutableSet::addObject(const std::shared_ptr<Object>& object) {
    if (!object) return;
    std::lock_guard lock(mutex_);
    set_.insert(VDWeakMutableSetItem(object));
}

void VDWeakMutableSet::removeObject(const std::shared_ptr<Object>& object) {
    if (!object) return;
    std::lock_guard lock(mutex_);
    set_.erase(VDWeakMutableSetItem(object));
}

void VDWeakMutableSet::removeDeadItems() {
    std::erase_if(set_,
                  [](const VDWeakMutableSetItem& item) { return item.nonretainedObjectValue() == nullptr; });
}

void VDWeakMutableSet::cleanup() {
    std::lock_guard lock(mutex_);
    removeDeadItems();
}

std::vector<VDWeakMutableSetItem> VDWeakMutableSet::allValidObjects() {
    std::lock_guard lock(mutex_);
    removeDeadItems();
    return {set_.begin(), set_.end()};
}

void VDWeakMutableSet::enumerateValidObjects(
    const std::function<void(const std::shared_ptr<Object>&)>& callback) {
    for (const auto& item : allValidObjects()) {
        if (const auto object = item.nonretainedObjectValue()) callback(object);
    }
}

} // namespace velmo
