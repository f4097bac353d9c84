#include "velmo/model/interaction/VDModelActionCallAction.h"

#include "velmo/model/interaction/VDModelActionReference.h"

namespace velmo {

const VDModelClass& VDModelActionCallAction::classObject() {
    using C = VDModelActionCallAction;
    static const VDModelClass cls("VDModelActionCallAction", &VDModelAction::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {field<&C::actionRefs, &C::setActionRefs>("actionRefs")},
                                  {.prefix = "LaunchAction"});
    return cls;
}

void VDModelActionCallAction::fillDefaultValues() {
    VDModelAction::fillDefaultValues();
    actionRefs_ = Array::create();
}

std::optional<std::string> VDModelActionCallAction::layerTitle() const {
    std::string title = shortTitleForTrigger().value_or("") + ": ";
    if (actionRefs_.empty()) return title + "-";
    bool first = true;
    for (const Value& v : actionRefs_) {
        const auto ref = v.objectAs<VDModelActionReference>();
        if (!first) title += ", ";
        first = false;
        if (ref) title += ref->actionName().value_or("");
    }
    return title;
}

bool VDModelActionCallAction::updateRelativePathsWithBlock(const PathBlock& block) {
    bool changed = false;
    for (const Value& v : actionRefs_) {
        const auto ref = v.objectAs<VDModelActionReference>();
        if (!ref || !ref->viewModelPath()) continue;
        std::string path = block(*ref->viewModelPath());
        if (path == *ref->viewModelPath()) continue;
        ref->setViewModelPath(std::move(path));
        changed = true;
    }
    return changed;
}

} // namespace velmo
