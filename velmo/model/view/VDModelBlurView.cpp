#include "velmo/model/view/VDModelBlurView.h"

namespace velmo {

const VDModelClass& VDModelBlurView::classObject() {
    using C = VDModelBlurView;
    static const VDModelClass cls("VDModelBlurView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::isDark, &C::setIsDark>("isDark"),
                                  },
                                  {.prefix = "blurView"});
    return cls;
}

void VDModelBlurView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("Blur");
}

} // namespace velmo
