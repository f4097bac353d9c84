#include "velmo/model/view/VDModelTabBar.h"

#include "velmo/model/view/VDModelTabBarItem.h"

namespace velmo {

const VDModelClass& VDModelTabBar::classObject() {
    using C = VDModelTabBar;
    static const VDModelClass cls(
        "VDModelTabBar", &VDModelView::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::tabbarButtonsColor, &C::setTabbarButtonsColor>("tabbarButtonsColor"),
            field<&C::tabbarItems, &C::setTabbarItems>("tabbarItems"),
            field<&C::firstSelectedTabIndex, &C::setFirstSelectedTabIndex>("firstSelectedTabIndex"),
            unlistedField<&C::tabbarTransparent, &C::setTabbarTransparent>("tabbarTransparent"),
        },
        {.prefix = "TabBar"});
    return cls;
}

void VDModelTabBar::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setColor(VDModelColor::navBarDefaultColor());
    setHeight(49);
    setViewName("TabBar");
    tabbarButtonsColor_ = VDModelColor::navBarDefaultTintColor();
    tabbarItems_ = Array{Value(VDModelTabBarItem::create()), Value(VDModelTabBarItem::create()),
                         Value(VDModelTabBarItem::create())};
    // The bar would pin itself to the bottom edge here, but a new view has no constraints yet:
    // a new tab bar has none until somebody sets them, and its JSON has no "constraints" key.
}

Array VDModelTabBar::subviewsForTreeView() const {
    const Array own = subviews();
    Array list = Array::create(own.size() + tabbarItems_.size());
    for (const Value& v : own)
        list.push_back(v);
    for (std::size_t i = tabbarItems_.size(); i-- > 0;)
        list.push_back(tabbarItems_[i]);
    return list;
}

} // namespace velmo
