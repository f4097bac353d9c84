#include "velmo/model/records/VDModelGuide.h"

namespace velmo {

const VDModelClass& VDModelGuide::classObject() {
    using C = VDModelGuide;
    static const VDModelClass cls(
        "VDModelGuide", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            unlistedField<&C::type, &C::setType>("type"),
            unlistedField<&C::top, &C::setTop>("top"),
            unlistedField<&C::bottom, &C::setBottom>("bottom"),
            unlistedField<&C::centerVertically, &C::setCenterVertically>("centerVertically"),
            unlistedField<&C::left, &C::setLeft>("left"),
            unlistedField<&C::right, &C::setRight>("right"),
            unlistedField<&C::centerHorizontally, &C::setCenterHorizontally>("centerHorizontally"),
        });
    return cls;
}

} // namespace velmo
