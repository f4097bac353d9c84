#include "velmo/model/view/VDModelProp.h"

namespace velmo {

const VDModelClass& VDModelProp::classObject() {
    using C = VDModelProp;
    static const VDModelClass cls("VDModelProp", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::name, &C::setName>("name"),
                                      field<&C::type, &C::setType>("type"),
                                      field<&C::defaultValue, &C::setDefaultValue>("defaultValue"),
                                      field<&C::path, &C::setPath>("path"),
                                      field<&C::targetId, &C::setTargetId>("targetId"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

std::shared_ptr<VDModelProp> VDModelProp::locatePropByTargetId(std::string_view targetId,
                                                               const Array& props) {
    for (const Value& v : props) {
        auto prop = v.objectAs<VDModelProp>();
        if (prop && prop->targetId() == targetId) return prop;
    }
    return nullptr;
}

} // namespace velmo
