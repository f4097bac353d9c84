#include "velmo/model/view/VDModelTextView.h"

#include <span>

#include "velmo/model/values/StringExtensions.h"

namespace velmo {

namespace {

constexpr std::string_view kKeyboardTypeNames[] = {"Default", "Email", "Number", "URL", "Social"};
constexpr std::string_view kKeyboardReturnTypeNames[] = {"Done", "Return", "Search", "Next", "Send", "Go"};
constexpr std::string_view kKeyboardAppearanceNames[] = {"Light", "Dark"};

std::string nameIn(std::span<const std::string_view> names, std::int32_t value) {
    if (value < 0 || static_cast<std::size_t>(value) >= names.size()) return std::string();
    return std::string(names[static_cast<std::size_t>(value)]);
}

// The values are walked from 0 and the first whose name matches wins.
std::int32_t valueIn(std::span<const std::string_view> names, std::string_view name) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) return static_cast<std::int32_t>(i);
    }
    return 0;
}

} // namespace

const VDModelClass& VDModelTextView::classObject() {
    using C = VDModelTextView;
    static const VDModelClass cls(
        "VDModelTextView", &VDModelView::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::text, &C::setText>("text"),
            field<&C::font, &C::setFont>("font"),
            field<&C::fontWeight, &C::setFontWeight>("fontWeight"),
            field<&C::textSize, &C::setTextSize>("textSize"),
            field<&C::textColor, &C::setTextColor>("textColor"),
            field<&C::linebreak, &C::setLinebreak>("linebreak"),
            field<&C::alignment, &C::setAlignment>("alignment"),
            field<&C::kern, &C::setKern>("kern"),
            field<&C::lineHeight, &C::setLineHeight>("lineHeight"),
            field<&C::pSpacing, &C::setPSpacing>("pSpacing"),
            field<&C::keyboardType, &C::setKeyboardType>("keyboardType"),
            field<&C::keyboardAppearance, &C::setKeyboardAppearance>("keyboardAppearance"),
            field<&C::keyboardReturnType, &C::setKeyboardReturnType>("keyboardReturnType"),
            field<&C::isPassword, &C::setIsPassword>("isPassword"),
            field<&C::nativeBackground, &C::setNativeBackground>("nativeBackground"),
            field<&C::placeHolder, &C::setPlaceHolder>("placeHolder"),
            field<&C::phColor, &C::setPhColor>("phColor"),
            field<&C::inputType, &C::setInputType>("inputType"),
            field<&C::inputRequired, &C::setInputRequired>("inputRequired"),
            field<&C::inputPlaceholder, &C::setInputPlaceholder>("inputPlaceholder"),
        },
        {.prefix = "Text"});
    return cls;
}

void VDModelTextView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    text_ = "";
    font_ = "System";
    textSize_ = "12";
    textColor_ = VDModelColor::blackColor();
    alignment_ = 2;
    nativeBackground_ = 1;
    placeHolder_ = "";
    setHeight(30);
    setWidth(150);
    setViewName("Text");
    setColor(VDModelColor::whiteColor());
}

void VDModelTextView::setText(std::optional<std::string> v) {
    const bool empty = !v || v->empty();
    text_ = std::move(v);
    // Unlike a label's, the name follows the text whatever it was, so decoding a field whose
    // text is empty names it "Text".
    const std::string prefix = capitalizedString(beautyIDPrefix());
    if (!userChangedViewName() && !empty) {
        setViewName(prefix + ": " + *text_);
    } else if (empty) {
        setViewName(prefix);
    }
}

std::string VDModelTextView::nameForKeyboardType(std::int32_t type) {
    return nameIn(kKeyboardTypeNames, type);
}
std::int32_t VDModelTextView::keyboardTypeForName(std::string_view name) {
    return valueIn(kKeyboardTypeNames, name);
}
std::string VDModelTextView::nameForKeyboardReturnType(std::int32_t type) {
    return nameIn(kKeyboardReturnTypeNames, type);
}
std::int32_t VDModelTextView::keyboardReturnTypeForName(std::string_view name) {
    return valueIn(kKeyboardReturnTypeNames, name);
}
std::string VDModelTextView::nameForKeyboardAppearance(std::int32_t appearance) {
    return nameIn(kKeyboardAppearanceNames, appearance);
}
std::int32_t VDModelTextView::keyboardAppearanceForName(std::string_view name) {
    return valueIn(kKeyboardAppearanceNames, name);
}

} // namespace velmo
