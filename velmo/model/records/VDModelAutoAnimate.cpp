#include "velmo/model/records/VDModelAutoAnimate.h"

namespace velmo {

const VDModelClass& VDModelAutoAnimate::classObject() {
    using C = VDModelAutoAnimate;
    static const VDModelClass cls("VDModelAutoAnimate", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::easing, &C::setEasing>("easing"),
                                      field<&C::duration, &C::setDuration>("duration"),
                                  });
    return cls;
}

} // namespace velmo
