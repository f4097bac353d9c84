#include "velmo/model/records/VDModelHover.h"

namespace velmo {

const VDModelClass& VDModelHover::classObject() {
    using C = VDModelHover;
    static const VDModelClass cls("VDModelHover", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::curve, &C::setCurve>("curve"),
                                      field<&C::duration, &C::setDuration>("duration"),
                                      field<&C::css, &C::setCss>("css"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

} // namespace velmo
