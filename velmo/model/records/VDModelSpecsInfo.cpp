#include "velmo/model/records/VDModelSpecsInfo.h"

namespace velmo {

const VDModelClass& VDModelSpecsInfo::classObject() {
    using C = VDModelSpecsInfo;
    static const VDModelClass cls("VDModelSpecsInfo", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::borders, &C::setBorders>("borders"),
                                      field<&C::shadows, &C::setShadows>("shadows"),
                                      field<&C::innerShadows, &C::setInnerShadows>("innerShadows"),
                                      field<&C::fills, &C::setFills>("fills"),
                                      field<&C::assets, &C::setAssets>("assets"),
                                  },
                                  {.removedFields = {"variableID"}});
    return cls;
}

bool VDModelSpecsInfo::isEmpty() const {
    return borders_.empty() && shadows_.empty() && innerShadows_.empty() && fills_.empty() && assets_.empty();
}

} // namespace velmo
