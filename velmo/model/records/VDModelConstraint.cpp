#include "velmo/model/records/VDModelConstraint.h"

#include <cmath>
#include <limits>

namespace velmo {

const VDModelClass& VDModelConstraint::classObject() {
    using C = VDModelConstraint;
    static const VDModelClass cls("VDModelConstraint", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::enabled, &C::setEnabled>("enabled"),
                                      field<&C::multiplier, &C::setMultiplier>("multiplier"),
                                      field<&C::constant, &C::setConstant>("constant"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

std::size_t VDModelConstraint::hash() const {
    const float value = multiplier_ * 10000.0f + constant_;
    // Negative values wrap, as the platform's conversion through a signed register does.
    if (std::isnan(value)) return 0;
    if (value >= 0) {
        return value >= 18446744073709551616.0f ? std::numeric_limits<std::size_t>::max()
                                                : static_cast<std::size_t>(value);
    }
    if (value <= static_cast<float>(std::numeric_limits<std::int64_t>::min())) {
        return static_cast<std::size_t>(std::numeric_limits<std::int64_t>::min());
    }
    return static_cast<std::size_t>(static_cast<std::int64_t>(value));
}

bool VDModelConstraint::isEqual(const Object& other) const {
    if (this == &other) return true;
    if (!other.isKindOf(objectClass())) return false;
    const auto& c = static_cast<const VDModelConstraint&>(other);
    if (!enabled() && !c.enabled()) return true;
    return enabled_ == c.enabled_ && multiplier_ == c.multiplier_ && constant_ == c.constant_;
}

bool VDModelConstraint::isSimilar(const VDModelConstraint& other) const {
    if (!enabled() && !other.enabled()) return true;
    if (enabled() != other.enabled()) return false;
    const float multiplierDifference = std::fabs(multiplier_ - other.multiplier_);
    return static_cast<double>(multiplierDifference) < 0.05 && std::fabs(constant_ - other.constant_) < 10.0f;
}

void VDModelConstraint::applyScaleFactor(double factor) {
    constant_ = static_cast<float>(static_cast<double>(constant_) * factor);
}

} // namespace velmo
