#include "velmo/model/view/VDModelImageView.h"

#include "velmo/model/values/StringExtensions.h"

namespace velmo {

const VDModelClass& VDModelImageView::classObject() {
    using C = VDModelImageView;
    static const VDModelClass cls("VDModelImageView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::fileName, &C::setFileName>("fileName"),
                                      field<&C::imageName, &C::setImageName>("imageName"),
                                      field<&C::imageMode, &C::setImageMode>("imageMode"),
                                      field<&C::isTintOn, &C::setIsTintOn>("isTintOn"),
                                      field<&C::tintColor, &C::setTintColor>("tintColor"),
                                  },
                                  {.prefix = "image"});
    return cls;
}

void VDModelImageView::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setViewName("Image");
    setImageName("");
    imageMode_ = 2;
    isTintOn_ = 0;
    tintColor_ = VDModelColor::blackColor();
}

void VDModelImageView::setImageName(std::optional<std::string> v) {
    imageName_ = std::move(v);
    // "imageName" comes after "viewName" and "userChangedViewName" in the list, so a decoded
    // image that nobody named gets its name rebuilt from the asset here. The word is the
    // image's own, also on a slice, whose identifiers have a prefix of their own.
    const std::string prefix = capitalizedString(VDModelImageView::classObject().beautyIDPrefix());
    if (!imageName_ || imageName_->empty()) {
        setViewName(prefix);
    } else if (!userChangedViewName()) {
        setViewName(prefix + ": " + *imageName_);
    }
}

} // namespace velmo
