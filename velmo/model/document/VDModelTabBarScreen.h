#pragma once

#include <memory>

#include "velmo/model/document/VDModelScreen.h"
#include "velmo/model/view/VDModelTabBar.h"

namespace velmo {

/// A screen that owns a tab bar among its subviews. It adds no fields.
class VDModelTabBarScreen : public VDModelScreen {
    VD_MODEL_CLASS(VDModelTabBarScreen)

    /// A screen whose only subview is a new tab bar.
    void fillDefaultValues() override;

    /// The first subview that is a tab bar, or nullptr.
    std::shared_ptr<VDModelTabBar> tabbar() const;
    /// The subview just behind the tab bar, nullptr when the bar is the back-most; without a tab
    /// bar, the front-most subview; nullptr without subviews.
    std::shared_ptr<VDModelView> highestViewBelowTabbar() const;
};

} // namespace velmo
