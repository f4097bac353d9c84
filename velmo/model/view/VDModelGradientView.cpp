#include "velmo/model/view/VDModelGradientView.h"

namespace velmo {

const VDModelClass& VDModelGradientView::classObject() {
    using C = VDModelGradientView;
    static const VDModelClass cls("VDModelGradientView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::color1, &C::setColor1>("color1"),
                                      field<&C::color2, &C::setColor2>("color2"),
                                  },
                                  {.prefix = "gradient"});
    return cls;
}

void VDModelGradientView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("Gradient");
    color1_ = VDModelColor::colorWithRed(0, 0, 0, 0);
    color2_ = VDModelColor::colorWithRed(0, 0, 0, 0.5f);
}

} // namespace velmo
