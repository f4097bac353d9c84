#include "velmo/model/view/VDModelComponentOverride.h"

namespace velmo {

const VDModelClass& VDModelComponentOverride::classObject() {
    using C = VDModelComponentOverride;
    static const VDModelClass cls("VDModelComponentOverride", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::targetId, &C::setTargetId>("targetId"),
                                      field<&C::name, &C::setName>("name"),
                                      field<&C::path, &C::setPath>("path"),
                                      field<&C::value, &C::setValue>("value"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

std::shared_ptr<VDModelComponentOverride>
VDModelComponentOverride::locateOverrideByTargetId(std::string_view targetId, const Array& overrides) {
    for (const Value& v : overrides) {
        const auto override = v.objectAs<VDModelComponentOverride>();
        if (!override) continue;
        if (override->targetId() == targetId) return override;
        if (override->value().isArray()) {
            auto nested = locateOverrideByTargetId(targetId, override->value().array());
            if (nested && !nested->value().isNone()) return nested;
        }
    }
    return nullptr;
}

} // namespace velmo
