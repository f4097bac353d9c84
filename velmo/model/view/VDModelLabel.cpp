#include "velmo/model/view/VDModelLabel.h"

#include "velmo/model/values/StringExtensions.h"

namespace velmo {

const VDModelClass& VDModelLabel::classObject() {
    using C = VDModelLabel;
    static const VDModelClass cls("VDModelLabel", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::text, &C::setText>("text"),
                                      field<&C::font, &C::setFont>("font"),
                                      field<&C::fontWeight, &C::setFontWeight>("fontWeight"),
                                      field<&C::textSize, &C::setTextSize>("textSize"),
                                      field<&C::textColor, &C::setTextColor>("textColor"),
                                      field<&C::lines, &C::setLines>("lines"),
                                      field<&C::linebreak, &C::setLinebreak>("linebreak"),
                                      field<&C::alignment, &C::setAlignment>("alignment"),
                                      field<&C::kern, &C::setKern>("kern"),
                                      field<&C::lineHeight, &C::setLineHeight>("lineHeight"),
                                      field<&C::pSpacing, &C::setPSpacing>("pSpacing"),
                                      field<&C::isMinWidth, &C::setIsMinWidth>("isMinWidth"),
                                      field<&C::isAutoWidth, &C::setIsAutoWidth>("isAutoWidth"),
                                      field<&C::hasUnderline, &C::setHasUnderline>("hasUnderline"),
                                      field<&C::hasBullets, &C::setHasBullets>("hasBullets"),
                                      field<&C::hasNumbers, &C::setHasNumbers>("hasNumbers"),
                                      field<&C::hasStrike, &C::setHasStrike>("hasStrike"),
                                      field<&C::spans, &C::setSpans>("spans"),
                                      field<&C::vAlignment, &C::setVAlignment>("vAlignment"),
                                  },
                                  {.prefix = "Label"});
    return cls;
}

void VDModelLabel::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    // Set directly: the setter would name the label after its text first.
    text_ = "Text";
    font_ = "System";
    textSize_ = "12";
    textColor_ = VDModelColor::blackColor();
    setViewName("Label");
}

void VDModelLabel::setText(std::optional<std::string> v) {
    static constexpr std::string_view kLineSeparator = "\u2028";
    const std::string given = v.value_or(""); // the name shows the text as it came
    if (v && v->find(kLineSeparator) != std::string::npos) {
        // Built anew rather than replaced in place (g++ 12 warns falsely on that in release).
        std::string lines;
        lines.reserve(v->size());
        for (std::size_t at = 0; at < v->size();) {
            if (std::string_view(*v).substr(at).starts_with(kLineSeparator)) {
                lines += '\n';
                at += kLineSeparator.size();
            } else {
                lines += (*v)[at++];
            }
        }
        v = std::move(lines);
    }
    text_ = std::move(v);
    // Only a label that still has the plain view's name is named after its text: once it has
    // a label's name, a person's or a derived one, the name stays.
    if (viewName() && *viewName() != "View") return;
    const std::string prefix = capitalizedString(beautyIDPrefix());
    if (!userChangedViewName() && !given.empty()) {
        setViewName(prefix + ": " + given);
    } else if (given.empty()) {
        setViewName(prefix);
    }
}

std::string VDModelLabel::fixFontNameForMacOS(std::string_view name) {
    if (name.starts_with('.')) return std::string(name.substr(1));
    if (name == "SFUIText") return "SFUIText-Regular";
    if (name == "System") return "SF UI Text";
    return std::string(name);
}

} // namespace velmo
