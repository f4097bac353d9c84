#include "velmo/model/records/VDModelShadow.h"

namespace velmo {

const VDModelClass& VDModelShadow::classObject() {
    using C = VDModelShadow;
    static const VDModelClass cls("VDModelShadow", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::color, &C::setColor>("color"),
                                      field<&C::xOffset, &C::setXOffset>("xOffset"),
                                      field<&C::yOffset, &C::setYOffset>("yOffset"),
                                      field<&C::spread, &C::setSpread>("spread"),
                                      field<&C::blur, &C::setBlur>("blur"),
                                      field<&C::inside, &C::setInside>("inside"),
                                      unlistedField<&C::radius, &C::setRadius>("radius"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

} // namespace velmo
