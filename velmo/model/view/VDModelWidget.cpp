#include "velmo/model/view/VDModelWidget.h"

namespace velmo {

const VDModelClass& VDModelWidget::classObject() {
    static const VDModelClass cls("VDModelWidget", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {});
    return cls;
}

} // namespace velmo
