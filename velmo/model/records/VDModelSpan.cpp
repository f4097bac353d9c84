#include "velmo/model/records/VDModelSpan.h"

namespace velmo {

const VDModelClass& VDModelSpan::classObject() {
    using C = VDModelSpan;
    static const VDModelClass cls("VDModelSpan", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::isEqualToParent, &C::setIsEqualToParent>("isEqualToParent"),
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
                                      field<&C::hasUnderline, &C::setHasUnderline>("hasUnderline"),
                                      field<&C::hasStrike, &C::setHasStrike>("hasStrike"),
                                  });
    return cls;
}

} // namespace velmo
