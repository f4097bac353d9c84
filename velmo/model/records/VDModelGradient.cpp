#include "velmo/model/records/VDModelGradient.h"

namespace velmo {

const VDModelClass& VDModelGradient::classObject() {
    using C = VDModelGradient;
    static const VDModelClass cls("VDModelGradient", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::stops, &C::setStops>("stops"),
                                      field<&C::to, &C::setTo>("to"),
                                      field<&C::from, &C::setFrom>("from"),
                                      field<&C::gradientType, &C::setGradientType>("gradientType"),
                                      field<&C::elipseLength, &C::setElipseLength>("elipseLength"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

} // namespace velmo
