#include "velmo/service/ValueObject.h"

#include "velmo/foundation/VDClass.h"

namespace velmo {

std::shared_ptr<ValueObject> ValueObject::make(Value value) {
    if (value.isNil()) return nullptr;
    return std::make_shared<ValueObject>(std::move(value));
}

const VDClass& ValueObject::classObject() {
    static const VDClass cls("ValueObject", nullptr, nullptr);
    return cls;
}

bool ValueObject::isEqual(const Object& other) const {
    const auto* boxed = dynamic_cast<const ValueObject*>(&other);
    return boxed && boxed->value_ == value_;
}

} // namespace velmo
