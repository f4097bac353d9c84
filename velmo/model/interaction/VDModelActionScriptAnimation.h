#pragma once

#include "velmo/model/interaction/VDModelAction.h"

namespace velmo {

/// A transition: the action that takes its owner view from one state to another, with one
/// timeline for each descendant that changes. Its paths are relative to the owner.
class VDModelActionScriptAnimation : public VDModelAction {
    VD_MODEL_CLASS(VDModelActionScriptAnimation)

    void fillDefaultValues() override;
    static std::string_view prettyName() { return "Transition"; }

    /// `VDModelAnimationTimeline` values, one per target path.
    const Array& timelines() const { return timelines_; }
    void setTimelines(Array v) { timelines_ = std::move(v); }
    /// The state reached at the end; nil for a transition without target state.
    const std::optional<std::string>& targetStateName() const { return targetStateName_; }
    void setTargetStateName(std::optional<std::string> v) { targetStateName_ = std::move(v); }

    /// "[%p] <%@> %@ -> %@": address, class name, origin and target state names.
    std::string description() const override;
    /// "Tap: Transition (A -> B)".
    std::optional<std::string> layerTitle() const override;
    /// The listeners' targets and the timelines' targets follow a renamed path.
    void refactorPath(std::string_view oldPath, std::string_view newPath) override;
    /// Each timeline's target follows a moved view.
    bool updateRelativePathsWithBlock(const PathBlock& block) override;
    /// The target state's name follows too.
    void refactorStateNameFrom(const std::string& oldName, const std::string& newName) override;

private:
    Array timelines_;
    std::optional<std::string> targetStateName_;
};

} // namespace velmo
