#include "velmo/model/view/VDModelSliceView.h"

namespace velmo {

const VDModelClass& VDModelSliceView::classObject() {
    static const VDModelClass cls("VDModelSliceView", &VDModelImageView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {});
    return cls;
}

void VDModelSliceView::fillDefaultValues() {
    VDModelImageView::fillDefaultValues();
    setViewName("Slice");
    setImageName("");
    setImageMode(2);
}

} // namespace velmo
