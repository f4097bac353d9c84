#include "velmo/model/view/VDModelSwitchView.h"

namespace velmo {

const VDModelClass& VDModelSwitchView::classObject() {
    using C = VDModelSwitchView;
    static const VDModelClass cls("VDModelSwitchView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::defaultValue, &C::setDefaultValue>("defaultValue"),
                                  },
                                  {.prefix = "switch"});
    return cls;
}

void VDModelSwitchView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setWidth(51);
    setHeight(31);
    setViewName("Switch");
    defaultValue_ = 1;
}

} // namespace velmo
