#include "velmo/model/view/VDModelViewPadding.h"

namespace velmo {

const VDModelClass& VDModelViewPadding::classObject() {
    using C = VDModelViewPadding;
    static const VDModelClass cls("VDModelViewPadding", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::top, &C::setTop>("top"),
                                      field<&C::right, &C::setRight>("right"),
                                      field<&C::bottom, &C::setBottom>("bottom"),
                                      field<&C::left, &C::setLeft>("left"),
                                      unlistedField<&C::userInputs, &C::setUserInputs>("userInputs"),
                                  });
    return cls;
}

} // namespace velmo
