#pragma once

#include "velmo/model/records/VDModelWithTextProperties.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A text input: its text properties, the keyboard it asks for, and the field it becomes in a
/// web form. It has no number of lines.
class VDModelTextView : public VDModelView, public VDModelWithTextProperties {
    VD_MODEL_CLASS(VDModelTextView)

    /// A white 150 by 30 field named "Text", empty, black 12-point "System", alignment 2, with
    /// the platform's own background.
    void fillDefaultValues() override;

    /// The initial text.
    const std::optional<std::string>& text() const override { return text_; }
    /// Stores the text as it is. The field is named after its text, "Text: <text>", unless a
    /// person named it; an empty text names it "Text" whatever its name was, even while
    /// decoding.
    void setText(std::optional<std::string> v) override;
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
    /// See `nameForKeyboardType`.
    std::int32_t keyboardType() const { return keyboardType_; }
    void setKeyboardType(std::int32_t v) { keyboardType_ = v; }
    /// See `nameForKeyboardAppearance`.
    std::int32_t keyboardAppearance() const { return keyboardAppearance_; }
    void setKeyboardAppearance(std::int32_t v) { keyboardAppearance_ = v; }
    /// See `nameForKeyboardReturnType`.
    std::int32_t keyboardReturnType() const { return keyboardReturnType_; }
    void setKeyboardReturnType(std::int32_t v) { keyboardReturnType_ = v; }
    bool isPassword() const { return isPassword_ != 0; }
    void setIsPassword(bool v) { isPassword_ = v ? 1 : 0; }
    bool nativeBackground() const { return nativeBackground_ != 0; }
    void setNativeBackground(bool v) { nativeBackground_ = v ? 1 : 0; }
    const std::optional<std::string>& placeHolder() const { return placeHolder_; }
    void setPlaceHolder(std::optional<std::string> v) { placeHolder_ = std::move(v); }
    /// Placeholder colour.
    const std::shared_ptr<VDModelColor>& phColor() const { return phColor_; }
    void setPhColor(std::shared_ptr<VDModelColor> v) { phColor_ = std::move(v); }
    /// The web form field's type.
    const std::optional<std::string>& inputType() const { return inputType_; }
    void setInputType(std::optional<std::string> v) { inputType_ = std::move(v); }
    /// Whether the web form field is required.
    bool inputRequired() const { return inputRequired_ != 0; }
    void setInputRequired(bool v) { inputRequired_ = v ? 1 : 0; }
    /// The web form field's placeholder.
    const std::optional<std::string>& inputPlaceholder() const { return inputPlaceholder_; }
    void setInputPlaceholder(std::optional<std::string> v) { inputPlaceholder_ = std::move(v); }

    // ---- keyboard names: one table each, read both ways; a value without a name gives ""
    // and a name without a value gives 0

    /// nameForKeyboardType: — "Default", "Email", "Number", "URL", "Social" for 0 to 4.
    static std::string nameForKeyboardType(std::int32_t type);
    /// keyboardTypeForName:
    static std::int32_t keyboardTypeForName(std::string_view name);
    /// nameForKeyboardReturnType: — "Done", "Return", "Search", "Next", "Send", "Go" for 0 to 5.
    static std::string nameForKeyboardReturnType(std::int32_t type);
    /// keyboardReturnTypeForName:
    static std::int32_t keyboardReturnTypeForName(std::string_view name);
    /// nameForKeyboardAppearance: — "Light", "Dark" for 0 and 1.
    static std::string nameForKeyboardAppearance(std::int32_t appearance);
    /// keyboardAppearanceForName:
    static std::int32_t keyboardAppearanceForName(std::string_view name);

private:
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
    std::int32_t keyboardType_ = 0;
    std::int32_t keyboardAppearance_ = 0;
    std::int32_t keyboardReturnType_ = 0;
    std::uint8_t isPassword_ = 0;
    std::uint8_t nativeBackground_ = 0;
    std::optional<std::string> placeHolder_;
    std::shared_ptr<VDModelColor> phColor_;
    std::optional<std::string> inputType_;
    std::uint8_t inputRequired_ = 0;
    std::optional<std::string> inputPlaceholder_;
};

} // namespace velmo
