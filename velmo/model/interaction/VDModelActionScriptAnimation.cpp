#include "velmo/model/interaction/VDModelActionScriptAnimation.h"

#include <fmt/format.h>

#include "velmo/model/interaction/VDModelAnimationTimeline.h"

namespace velmo {

const VDModelClass& VDModelActionScriptAnimation::classObject() {
    using C = VDModelActionScriptAnimation;
    static const VDModelClass cls("VDModelActionScriptAnimation", &VDModelAction::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::timelines, &C::setTimelines>("timelines"),
                                      field<&C::targetStateName, &C::setTargetStateName>("targetStateName"),
                                  },
                                  {.prefix = "Transition"});
    return cls;
}

void VDModelActionScriptAnimation::fillDefaultValues() {
    VDModelAction::fillDefaultValues();
    timelines_ = Array::create();
}

std::string VDModelActionScriptAnimation::description() const {
    return fmt::format("[{}] <{}> {} -> {}", static_cast<const void*>(this), modelClass().name(),
                       originStateName().value_or("(null)"), targetStateName_.value_or("(null)"));
}

std::optional<std::string> VDModelActionScriptAnimation::layerTitle() const {
    return shortTitleForTrigger().value_or("") + ": " + name().value_or("");
}

void VDModelActionScriptAnimation::refactorPath(std::string_view oldPath, std::string_view newPath) {
    VDModelAction::refactorPath(oldPath, newPath);
    const std::string from(oldPath), to(newPath);
    for (const Value& v : timelines_) {
        if (auto timeline = v.objectAs<VDModelAnimationTimeline>()) timeline->refactorPath(from, to);
    }
}

bool VDModelActionScriptAnimation::updateRelativePathsWithBlock(const PathBlock& block) {
    bool changed = false;
    for (const Value& v : timelines_) {
        const auto timeline = v.objectAs<VDModelAnimationTimeline>();
        if (!timeline || !timeline->target()) continue;
        std::string path = block(*timeline->target());
        if (path == *timeline->target()) continue;
        timeline->setTarget(std::move(path));
        changed = true;
    }
    return changed;
}

void VDModelActionScriptAnimation::refactorStateNameFrom(const std::string& oldName,
                                                         const std::string& newName) {
    VDModelAction::refactorStateNameFrom(oldName, newName);
    if (targetStateName_ == oldName) setTargetStateName(newName);
}

} // namespace velmo
