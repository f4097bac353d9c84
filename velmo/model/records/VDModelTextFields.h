#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelWithTextProperties.h"

namespace velmo {

/// The shared text properties kept once for every model that has them: a span is based on
/// `VDModel`, the label and the text view on `VDModelView`. Being based on the model class
/// itself, the accessors can stand in the classes' field tables like their own. A class whose
/// text setter does more overrides it.
template <class Base> class VDModelTextFields : public Base, public VDModelWithTextProperties {
public:
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

protected:
    VDModelTextFields() = default;

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
};

} // namespace velmo
