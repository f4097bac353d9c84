#include "velmo/model/view/VDModelSliderView.h"

namespace velmo {

const VDModelClass& VDModelSliderView::classObject() {
    static const VDModelClass cls("VDModelSliderView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {},
                                  {.prefix = "slider"});
    return cls;
}

void VDModelSliderView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setWidth(150);
    setHeight(31);
    setViewName("Slider");
}

} // namespace velmo
