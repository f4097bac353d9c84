#include "velmo/model/view/VDModelCellView.h"

namespace velmo {

const VDModelClass& VDModelCellView::classObject() {
    static const VDModelClass cls("VDModelCellView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {},
                                  {.prefix = "Cell"});
    return cls;
}

void VDModelCellView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setHeight(55);
}

void VDModelCellView::subviewDidUpdate() {
    postUpdateNotification();
}

} // namespace velmo
