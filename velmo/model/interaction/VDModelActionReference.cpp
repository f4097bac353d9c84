#include "velmo/model/interaction/VDModelActionReference.h"

namespace velmo {

const VDModelClass& VDModelActionReference::classObject() {
    using C = VDModelActionReference;
    static const VDModelClass cls("VDModelActionReference", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::viewModelPath, &C::setViewModelPath>("viewModelPath"),
                                      field<&C::actionName, &C::setActionName>("actionName"),
                                  });
    return cls;
}

void VDModelActionReference::fillDefaultValues() {
    VDModel::fillDefaultValues();
    viewModelPath_ = "";
    actionName_ = "";
}

} // namespace velmo
