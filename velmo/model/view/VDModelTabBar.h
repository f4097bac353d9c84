#pragma once

#include <cstdint>
#include <memory>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// The bar of tabs at the bottom of a tab bar screen. Its items are views of their own, beside
/// its subviews; the builder doesn't make subviews of it.
class VDModelTabBar : public VDModelView {
    VD_MODEL_CLASS(VDModelTabBar)

    /// 49 high, "TabBar", the navigation bar's colours, three new items.
    void fillDefaultValues() override;

    const std::shared_ptr<VDModelColor>& tabbarButtonsColor() const { return tabbarButtonsColor_; }
    void setTabbarButtonsColor(std::shared_ptr<VDModelColor> v) { tabbarButtonsColor_ = std::move(v); }
    /// The `VDModelTabBarItem`s, in order.
    const Array& tabbarItems() const { return tabbarItems_; }
    void setTabbarItems(Array v) { tabbarItems_ = std::move(v); }
    std::int32_t firstSelectedTabIndex() const { return firstSelectedTabIndex_; }
    void setFirstSelectedTabIndex(std::int32_t v) { firstSelectedTabIndex_ = v; }
    /// Outside `fieldNames`: neither encoded nor copied.
    bool tabbarTransparent() const { return tabbarTransparent_ != 0; }
    void setTabbarTransparent(bool v) { tabbarTransparent_ = v ? 1 : 0; }

    bool builderShouldGenerateSubviews() const override { return false; }
    /// The subviews, then the items in reverse order.
    Array subviewsForTreeView() const override;

private:
    std::shared_ptr<VDModelColor> tabbarButtonsColor_;
    Array tabbarItems_;
    std::int32_t firstSelectedTabIndex_ = 0;
    std::uint8_t tabbarTransparent_ = 0;
};

} // namespace velmo
