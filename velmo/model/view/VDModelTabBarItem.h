#pragma once

#include <optional>
#include <string>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// One button of a tab bar: the screen it opens, its title and its two images.
class VDModelTabBarItem : public VDModelView {
    VD_MODEL_CLASS(VDModelTabBarItem)

    /// "TabBar Item", everything else empty.
    void fillDefaultValues() override;

    /// The identifier of the screen the item opens.
    const std::optional<std::string>& screenId() const { return screenId_; }
    void setScreenId(std::optional<std::string> v) { screenId_ = std::move(v); }
    const std::optional<std::string>& title() const { return title_; }
    void setTitle(std::optional<std::string> v) { title_ = std::move(v); }
    const std::optional<std::string>& imageName() const { return imageName_; }
    void setImageName(std::optional<std::string> v) { imageName_ = std::move(v); }
    const std::optional<std::string>& selectedImageName() const { return selectedImageName_; }
    void setSelectedImageName(std::optional<std::string> v) { selectedImageName_ = std::move(v); }

    /// A tab bar shows all its items.
    bool supportsHiding() const override { return false; }

private:
    std::optional<std::string> screenId_;
    std::optional<std::string> title_;
    std::optional<std::string> imageName_;
    std::optional<std::string> selectedImageName_;
};

} // namespace velmo
