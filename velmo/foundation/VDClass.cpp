#include "velmo/foundation/VDClass.h"

namespace velmo {

VDClass::VDClass(std::string_view name, const VDClass* superclass, Factory factory)
    : name_(name), superclass_(superclass), factory_(factory) {}

bool VDClass::isSubclassOf(const VDClass& other) const {
    for (const VDClass* cls = this; cls != nullptr; cls = cls->superclass_) {
        if (cls == &other) return true;
    }
    return false;
}

} // namespace velmo
