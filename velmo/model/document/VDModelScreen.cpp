#include "velmo/model/document/VDModelScreen.h"

#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/interaction/VDModelActionPresentScreen.h"
#include "velmo/model/values/StringExtensions.h"

namespace velmo {

const VDModelClass& VDModelScreen::classObject() {
    using C = VDModelScreen;
    static const VDModelClass cls(
        "VDModelScreen", &VDModelView::classObject(),
        [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::title, &C::setTitle>("title"),
            field<&C::isAppRoot, &C::setIsAppRoot>("isAppRoot"),
            field<&C::isSelectedInEditor, &C::setIsSelectedInEditor>("isSelectedInEditor"),
            field<&C::statusBarType, &C::setStatusBarType>("statusBarType"),
            field<&C::navBehaviour, &C::setNavBehaviour>("navBehaviour"),
            field<&C::selectedBreakpoint, &C::setSelectedBreakpoint>("selectedBreakpoint"),
            field<&C::enabledBreakpoints, &C::setEnabledBreakpoints>("enabledBreakpoints"),
            field<&C::exportCacheKey, &C::setExportCacheKey>("exportCacheKey"),
            field<&C::imageFilenames, &C::setImageFilenames>("imageFilenames"),
        });
    return cls;
}

void VDModelScreen::fillDefaultValues() {
    VDModelView::fillDefaultValues();
    setX(0);
    setY(0);
    setWidth(375);
    setHeight(667);
    setViewName("Screen");
    title_ = "";
    navBehaviour_ = 2;
}

void VDModelScreen::setTitle(std::optional<std::string> v) {
    title_ = std::move(v);
    if (!userChangedViewName() && title_ && !title_->empty()) setViewName("Screen: " + *title_);
}

bool VDModelScreen::checkForPushActionsRecursive(const VDModelView& view) {
    for (const Value& v : view.actions()) {
        const auto open = v.objectAs<VDModelActionPresentScreen>();
        if (open && open->presentationType() == 1) return true;
    }
    for (const Array& children : {view.subviews(), view.subviewsPrototypes()}) {
        for (const Value& v : children) {
            const auto sub = v.objectAs<VDModelView>();
            if (sub && checkForPushActionsRecursive(*sub)) return true;
        }
    }
    return false;
}

bool VDModelScreen::requiresNavController() const {
    return navBehaviour_ == 1 || checkForPushActionsRecursive(*this);
}

bool VDModelScreen::showsNavBar() const {
    if (navBehaviour_ == 1) return true;
    if (navBehaviour_ == 2) return false;
    return checkForPushActionsRecursive(*this);
}

void VDModelScreen::linkedScreensIdsForView(const VDModelView& view, Array& accumulater) {
    for (const Value& v : view.actions()) {
        const auto open = v.objectAs<VDModelActionPresentScreen>();
        // Plain navigation loads its page when it is followed; overlays and automatic animation
        // need theirs at once.
        if (open && (open->isOverlay() || open->autoAnimate()) && open->screenId())
            accumulater.push_back(Value(*open->screenId()));
    }
    for (const Value& v : view.subviews()) {
        if (const auto sub = v.objectAs<VDModelView>()) linkedScreensIdsForView(*sub, accumulater);
    }
}

Array VDModelScreen::linkedScreensIds() const {
    Array ids = Array::create();
    linkedScreensIdsForView(*this, ids);
    return ids;
}

void VDModelScreen::removeBreakpoint(std::string_view key, bool recursive) {
    VDModelView::removeBreakpoint(key, recursive);
    if (!recursive || enabledBreakpoints_.isNil()) return;
    const Value removed{std::string(key)};
    Array kept = Array::create(enabledBreakpoints_.size());
    for (const Value& v : enabledBreakpoints_) {
        if (!(v == removed)) kept.push_back(v);
    }
    enabledBreakpoints_ = std::move(kept);
}

void VDModelScreen::updateVarIdFromName() {
    const std::string legal = toLegalVarName(viewName().value_or(""));
    if (legal.empty()) return;
    const auto element = relatedUIElement();
    const auto app =
        element ? std::dynamic_pointer_cast<VDModelApp>(element->ownerAppModelViewOfView(*this)) : nullptr;
    if (app && app->isLegalScreenVarName(legal)) setVariableID(legal);
}

} // namespace velmo
