#include "velmo/model/records/VDModelFill.h"

namespace velmo {

const VDModelClass& VDModelFill::classObject() {
    using C = VDModelFill;
    static const VDModelClass cls("VDModelFill", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::color, &C::setColor>("color"),
                                      field<&C::gradient, &C::setGradient>("gradient"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

} // namespace velmo
