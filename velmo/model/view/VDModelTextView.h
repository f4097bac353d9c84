#pragma once

#include "velmo/model/records/VDModelTextFields.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A text input: its text properties, the keyboard it asks for, and the field it becomes in a
/// web form. It has no number of lines.
class VDModelTextView : public VDModelTextFields<VDModelView> {
    VD_MODEL_CLASS(VDModelTextView)

    /// A white 150 by 30 field named "Text", empty, black 12-point "System", alignment 2, with
    /// the platform's own background.
    void fillDefaultValues() override;

    /// The initial text.
    /// Stores the text as it is. The field is named after its text, "Text: <text>", unless a
    /// person named it; an empty text names it "Text" whatever its name was, even while
    /// decoding.
    void setText(std::optional<std::string> v) override;
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
