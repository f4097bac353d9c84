#include "velmo/model/records/VDModelBar.h"

namespace velmo {

const VDModelClass& VDModelBar::classObject() {
    using C = VDModelBar;
    static const VDModelClass cls("VDModelBar", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::transparent, &C::setTransparent>("transparent"),
                                      field<&C::tint, &C::setTint>("tint"),
                                      field<&C::color, &C::setColor>("color"),
                                      field<&C::titleColor, &C::setTitleColor>("titleColor"),
                                      field<&C::titleTextSize, &C::setTitleTextSize>("titleTextSize"),
                                      field<&C::titleFont, &C::setTitleFont>("titleFont"),
                                  });
    return cls;
}

void VDModelBar::fillDefaultValues() {
    VDModel::fillDefaultValues();
    transparent_ = 0;
    tint_ = VDModelColor::navBarDefaultTintColor();
    color_ = VDModelColor::navBarDefaultColor();
    titleColor_ = VDModelColor::blackColor();
    titleTextSize_ = "16";
    titleFont_ = "System";
}

} // namespace velmo
