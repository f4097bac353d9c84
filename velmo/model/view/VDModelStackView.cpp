#include "velmo/model/view/VDModelStackView.h"

namespace velmo {

const VDModelClass& VDModelStackView::classObject() {
    using C = VDModelStackView;
    static const VDModelClass cls(
        "VDModelStackView", &VDModelView::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::type, &C::setType>("type"),
            field<&C::stackType, &C::setStackType>("stackType"),
            field<&C::align, &C::setAlign>("align"),
            field<&C::spacing, &C::setSpacing>("spacing"),
            field<&C::resizesContainer, &C::setResizesContainer>("resizesContainer"),
        },
        {.prefix = "stackView"});
    return cls;
}

void VDModelStackView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("Stack");
}

} // namespace velmo
