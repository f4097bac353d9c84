#include "velmo/model/records/VDModelBorder.h"

namespace velmo {

const VDModelClass& VDModelBorder::classObject() {
    using C = VDModelBorder;
    static const VDModelClass cls("VDModelBorder", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::color, &C::setColor>("color"),
                                      field<&C::gradient, &C::setGradient>("gradient"),
                                      field<&C::position, &C::setPosition>("position"),
                                      field<&C::width, &C::setWidth>("width"),
                                      field<&C::dash, &C::setDash>("dash"),
                                      field<&C::gap, &C::setGap>("gap"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

} // namespace velmo
