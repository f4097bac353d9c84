#include "velmo/model/view/VDModelProgressView.h"

namespace velmo {

const VDModelClass& VDModelProgressView::classObject() {
    static const VDModelClass cls("VDModelProgressView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {},
                                  {.prefix = "progressBar"});
    return cls;
}

void VDModelProgressView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setWidth(200);
    setHeight(2);
    setViewName("progressBar");
}

} // namespace velmo
