#include "velmo/model/interaction/VDModelActionPresentScreen.h"

namespace velmo {

const VDModelClass& VDModelActionPresentScreen::classObject() {
    using C = VDModelActionPresentScreen;
    static const VDModelClass cls(
        "VDModelActionPresentScreen", &VDModelAction::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::customURL, &C::setCustomURL>("customURL"),
            field<&C::customURLOpenIn, &C::setCustomURLOpenIn>("customURLOpenIn"),
            field<&C::screenId, &C::setScreenId>("screenId"),
            field<&C::animation, &C::setAnimation>("animation"),
            field<&C::anchorTargetId, &C::setAnchorTargetId>("anchorTargetId"),
            field<&C::presentationType, &C::setPresentationType>("presentationType"),
            field<&C::customAnimationId, &C::setCustomAnimationId>("customAnimationId"),
            field<&C::isOverlay, &C::setIsOverlay>("isOverlay"),
            field<&C::webAnimation, &C::setWebAnimation>("webAnimation"),
            field<&C::autoAnimate, &C::setAutoAnimate>("autoAnimate"),
        },
        {.prefix = "OpenScreen"});
    return cls;
}

void VDModelActionPresentScreen::fillDefaultValues() {
    VDModelAction::fillDefaultValues();
    screenId_ = "";
    customAnimationId_ = "";
}

std::optional<std::string> VDModelActionPresentScreen::layerTitle() const {
    return shortTitleForTrigger().value_or("") + ": Open " + screenId_.value_or("-");
}

Array VDModelActionPresentScreen::linkedScreenIDs() const {
    return screenId_ ? Array{Value(*screenId_)} : Array();
}

} // namespace velmo
