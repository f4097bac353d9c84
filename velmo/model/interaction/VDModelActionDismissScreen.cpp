#include "velmo/model/interaction/VDModelActionDismissScreen.h"

namespace velmo {

const VDModelClass& VDModelActionDismissScreen::classObject() {
    using C = VDModelActionDismissScreen;
    static const VDModelClass cls(
        "VDModelActionDismissScreen", &VDModelAction::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::type, &C::setType>("type"),
            field<&C::isOverlay, &C::setIsOverlay>("isOverlay"),
            unlistedField<&C::animation, &C::setAnimation>("animation"),
            unlistedField<&C::customAnimationId, &C::setCustomAnimationId>("customAnimationId"),
        },
        {.prefix = "CloseScreen"});
    return cls;
}

std::optional<std::string> VDModelActionDismissScreen::layerTitle() const {
    return shortTitleForTrigger().value_or("") + ": Close Screen";
}

} // namespace velmo
