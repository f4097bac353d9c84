#pragma once

#include "velmo/model/core/VDModel.h"
#include "velmo/model/records/VDModelWithTextProperties.h"

namespace velmo {

/// One styled run of a label's text. It sets no defaults of its own: a property it leaves nil or
/// 0 is the label's. It has no number of lines.
class VDModelSpan : public VDModel, public VDModelWithTextProperties {
    VD_MODEL_CLASS(VDModelSpan)

    /// Set by the host and carried; nothing here reads it.
    bool isEqualToParent() const { return isEqualToParent_ != 0; }
    void setIsEqualToParent(bool v) { isEqualToParent_ = v ? 1 : 0; }

    const std::optional<std::string>& text() const override { return text_; }
    void setText(std::optional<std::string> v) override { text_ = std::move(v); }
    const std::optional<std::string>& font() const override { return font_; }
    void setFont(std::optional<std::string> v) override { font_ = std::move(v); }
    const std::optional<std::string>& fontWeight() const override { return fontWeight_; }
    void setFontWeight(std::optional<std::string> v) override { fontWeight_ = std::move(v); }
    const std::optional<std::string>& textSize() const override { return textSize_; }
    void setTextSize(std::optional<std::string> v) override { textSize_ = std::move(v); }
    const std::shared_ptr<VDModelColor>& textColor() const override { return textColor_; }
    void setTextColor(std::shared_ptr<VDModelColor> v) override { textColor_ = std::move(v); }
    std::int32_t linebreak() const override { return linebreak_; }
    void setLinebreak(std::int32_t v) override { linebreak_ = v; }
    std::int32_t alignment() const override { return alignment_; }
    void setAlignment(std::int32_t v) override { alignment_ = v; }
    float kern() const override { return kern_; }
    void setKern(float v) override { kern_ = v; }
    float lineHeight() const override { return lineHeight_; }
    void setLineHeight(float v) override { lineHeight_ = v; }
    float pSpacing() const override { return pSpacing_; }
    void setPSpacing(float v) override { pSpacing_ = v; }
    bool hasUnderline() const { return hasUnderline_ != 0; }
    void setHasUnderline(bool v) { hasUnderline_ = v ? 1 : 0; }
    bool hasStrike() const { return hasStrike_ != 0; }
    void setHasStrike(bool v) { hasStrike_ = v ? 1 : 0; }

private:
    std::uint8_t isEqualToParent_ = 0;
    std::optional<std::string> text_;
    std::optional<std::string> font_;
    std::optional<std::string> fontWeight_;
    std::optional<std::string> textSize_;
    std::shared_ptr<VDModelColor> textColor_;
    std::int32_t linebreak_ = 0;
    std::int32_t alignment_ = 0;
    float kern_ = 0;
    float lineHeight_ = 0;
    float pSpacing_ = 0;
    std::uint8_t hasUnderline_ = 0;
    std::uint8_t hasStrike_ = 0;
};

} // namespace velmo
