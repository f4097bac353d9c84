#pragma once

#include "velmo/model/records/VDModelColor.h"

namespace velmo {

/// The navigation bar of a document's theme.
class VDModelBar : public VDModel {
    VD_MODEL_CLASS(VDModelBar)

    void fillDefaultValues() override;

    bool transparent() const { return transparent_ != 0; }
    void setTransparent(bool v) { transparent_ = v ? 1 : 0; }
    const std::shared_ptr<VDModelColor>& tint() const { return tint_; }
    void setTint(std::shared_ptr<VDModelColor> v) { tint_ = std::move(v); }
    const std::shared_ptr<VDModelColor>& color() const { return color_; }
    void setColor(std::shared_ptr<VDModelColor> v) { color_ = std::move(v); }
    const std::shared_ptr<VDModelColor>& titleColor() const { return titleColor_; }
    void setTitleColor(std::shared_ptr<VDModelColor> v) { titleColor_ = std::move(v); }
    const std::optional<std::string>& titleTextSize() const { return titleTextSize_; }
    void setTitleTextSize(std::optional<std::string> v) { titleTextSize_ = std::move(v); }
    const std::optional<std::string>& titleFont() const { return titleFont_; }
    void setTitleFont(std::optional<std::string> v) { titleFont_ = std::move(v); }

private:
    std::uint8_t transparent_ = 0;
    std::shared_ptr<VDModelColor> tint_;
    std::shared_ptr<VDModelColor> color_;
    std::shared_ptr<VDModelColor> titleColor_;
    std::optional<std::string> titleTextSize_;
    std::optional<std::string> titleFont_;
};

} // namespace velmo
