#include "velmo/foundation/Object.h"

#include "velmo/foundation/VDClass.h"

#include <fmt/format.h>

namespace velmo {

std::string Object::description() const {
    return fmt::format("<{}: {}>", objectClass().name(), static_cast<const void*>(this));
}

bool Object::isKindOf(const VDClass& cls) const {
    return objectClass().isSubclassOf(cls);
}

bool Object::isMemberOf(const VDClass& cls) const {
    return &objectClass() == &cls;
}

} // namespace velmo
