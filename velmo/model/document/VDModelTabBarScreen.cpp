#include "velmo/model/document/VDModelTabBarScreen.h"

namespace velmo {

const VDModelClass& VDModelTabBarScreen::classObject() {
    static const VDModelClass cls("VDModelTabBarScreen", &VDModelScreen::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {},
                                  {.prefix = "TabBarScreen"});
    return cls;
}

void VDModelTabBarScreen::fillDefaultValues() {
    VDModelScreen::fillDefaultValues();
    setSubviews(Array{Value(VDModelTabBar::create())});
}

std::shared_ptr<VDModelTabBar> VDModelTabBarScreen::tabbar() const {
    for (const Value& v : subviews()) {
        if (auto bar = v.objectAs<VDModelTabBar>()) return bar;
    }
    return nullptr;
}

std::shared_ptr<VDModelView> VDModelTabBarScreen::highestViewBelowTabbar() const {
    const Array list = subviews();
    if (list.empty()) return nullptr;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (list[i].objectAs<VDModelTabBar>()) return i == 0 ? nullptr : list[i - 1].objectAs<VDModelView>();
    }
    return list[list.size() - 1].objectAs<VDModelView>();
}

} // namespace velmo
