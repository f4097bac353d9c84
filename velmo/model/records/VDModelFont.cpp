#include "velmo/model/records/VDModelFont.h"

#include <functional>

namespace velmo {

const VDModelClass& VDModelFont::classObject() {
    using C = VDModelFont;
    static const VDModelClass cls(
        "VDModelFont", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::familyName, &C::setFamilyName>("familyName"),
            field<&C::fileName, &C::setFileName>("fileName"),
            field<&C::cssLink, &C::setCssLink>("cssLink"),
            field<&C::weight, &C::setWeight>("weight"),
            field<&C::fontName, &C::setFontName>("fontName"),
            field<&C::size, &C::setSize>("size"),
            field<&C::lineSpacing, &C::setLineSpacing>("lineSpacing"),
            field<&C::letterSpacing, &C::setLetterSpacing>("letterSpacing"),
            field<&C::style, &C::setStyle>("style"),
            field<&C::originalFontName, &C::setOriginalFontName>("originalFontName"),
            field<&C::originalStyle, &C::setOriginalStyle>("originalStyle"),
        });
    return cls;
}

bool VDModelFont::isEqual(const Object& other) const {
    if (!other.isMemberOf(classObject())) return false;
    const auto& f = static_cast<const VDModelFont&>(other);
    // std::optional and VDNumber both hold that two absent values are equal and one absent value
    // is different, which is the rule for each field.
    return familyName_ == f.familyName_ && fileName_ == f.fileName_ &&
           originalFontName_ == f.originalFontName_ && cssLink_ == f.cssLink_ && weight_ == f.weight_ &&
           fontName_ == f.fontName_ && size_ == f.size_ && lineSpacing_ == f.lineSpacing_ &&
           letterSpacing_ == f.letterSpacing_;
}

std::size_t VDModelFont::hash() const {
    // nil hashes to 0, as a message to nil answers 0.
    const auto of = [](const std::optional<std::string>& s) { return s ? std::hash<std::string>{}(*s) : 0; };
    return of(familyName_) + of(fileName_) + of(cssLink_);
}

} // namespace velmo
