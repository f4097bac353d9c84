#include "velmo/model/view/VDModelTabBarItem.h"

namespace velmo {

const VDModelClass& VDModelTabBarItem::classObject() {
    using C = VDModelTabBarItem;
    static const VDModelClass cls(
        "VDModelTabBarItem", &VDModelView::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::screenId, &C::setScreenId>("screenId"),
            field<&C::title, &C::setTitle>("title"),
            field<&C::imageName, &C::setImageName>("imageName"),
            field<&C::selectedImageName, &C::setSelectedImageName>("selectedImageName"),
        },
        {.prefix = "TabBarItem"});
    return cls;
}

void VDModelTabBarItem::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("TabBar Item");
    screenId_ = "";
    title_ = "";
    imageName_ = "";
    selectedImageName_ = "";
}

} // namespace velmo
