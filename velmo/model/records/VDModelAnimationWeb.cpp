#include "velmo/model/records/VDModelAnimationWeb.h"

namespace velmo {

const VDModelClass& VDModelAnimationWeb::classObject() {
    using C = VDModelAnimationWeb;
    static const VDModelClass cls("VDModelAnimationWeb", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::delay, &C::setDelay>("delay"),
                                      field<&C::duration, &C::setDuration>("duration"),
                                      field<&C::curveType, &C::setCurveType>("curveType"),
                                      field<&C::fromCSS, &C::setFromCSS>("fromCSS"),
                                      field<&C::toCSS, &C::setToCSS>("toCSS"),
                                      field<&C::name, &C::setName>("name"),
                                  });
    return cls;
}

} // namespace velmo
