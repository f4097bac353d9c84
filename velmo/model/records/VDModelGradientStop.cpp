#include "velmo/model/records/VDModelGradientStop.h"

namespace velmo {

const VDModelClass& VDModelGradientStop::classObject() {
    using C = VDModelGradientStop;
    static const VDModelClass cls("VDModelGradientStop", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::color, &C::setColor>("color"),
                                      field<&C::position, &C::setPosition>("position"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

} // namespace velmo
