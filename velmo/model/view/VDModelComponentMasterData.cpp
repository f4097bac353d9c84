#include "velmo/model/view/VDModelComponentMasterData.h"

#include <stdexcept>

namespace velmo {

namespace {
// The master's "overrides": a name in the list without a field behind it.
Value readMissingOverrides(const VDModel& model) {
    throw std::invalid_argument(
        "[<" + model.modelClass().name() +
        " valueForUndefinedKey:]: this class is not key value coding-compliant for the key "
        "overrides.");
}
void writeMissingOverrides(VDModel&, const Value&) {
    throw std::invalid_argument("a component's master record has no overrides");
}
} // namespace

const VDModelClass& VDModelComponentMasterData::classObject() {
    using C = VDModelComponentMasterData;
    static const VDModelClass cls(
        "VDModelComponentMasterData", &VDModel::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            VDField{"overrides", VDFieldKind::Array, true, &readMissingOverrides, &writeMissingOverrides},
            field<&C::masterSymbolID, &C::setMasterSymbolID>("masterSymbolID"),
            field<&C::props, &C::setProps>("props"),
            field<&C::masterName, &C::setMasterName>("masterName"),
        });
    return cls;
}

} // namespace velmo
