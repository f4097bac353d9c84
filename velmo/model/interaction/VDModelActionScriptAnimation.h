#pragma once

#include "velmo/model/interaction/VDModelAction.h"

namespace velmo {

/// A transition: the action that takes its owner view from one state to another, with one
/// timeline for each descendant that changes. Its paths are relative to the owner.
class VDModelAnimationTimeline;
class VDModelView;
class VDModelViewState;

class VDModelActionScriptAnimation : public VDModelAction {
    VD_MODEL_CLASS(VDModelActionScriptAnimation)

    void fillDefaultValues() override;
    static std::string_view prettyName() { return "Transition"; }
    std::string_view prettyNameOfClass() const override { return prettyName(); }

    /// `VDModelAnimationTimeline` values, one per target path.
    const Array& timelines() const { return timelines_; }
    void setTimelines(Array v) { timelines_ = std::move(v); }
    /// The state reached at the end; nil for a transition without target state.
    const std::optional<std::string>& targetStateName() const { return targetStateName_; }
    void setTargetStateName(std::optional<std::string> v) { targetStateName_ = std::move(v); }

    /// newScriptAnimationFromState:toState:ofView: — a transition computed from the two states of
    /// the view (nil for the initial look), named after them; not yet in the view's `actions`.
    static std::shared_ptr<VDModelActionScriptAnimation>
    newScriptAnimationFromState(const VDModelViewState* from, const VDModelViewState* to, VDModelView& view);
    /// updateWithOriginState:targetState:ofView: — recomputes and posts an update.
    void updateWithOriginState(const VDModelViewState* from, const VDModelViewState* to, VDModelView& view);
    /// updateWithOriginState:targetState:ofView:postNotification: — recomputes the end values of
    /// every timeline from the two change sets: what `to` sets is reached, what only `from` set
    /// goes back to the view's own value. Only the last keyframe's `state` is written, so timing
    /// and curves a person chose survive.
    void updateWithOriginState(const VDModelViewState* from, const VDModelViewState* to, VDModelView& view,
                               bool postNotification);
    /// timeLineForModelWithRelativePath: — the first timeline of the path, made when missing.
    std::shared_ptr<VDModelAnimationTimeline> timeLineForModelWithRelativePath(const std::string& path);
    /// The latest end of a last keyframe; 0 with no timelines.
    float totalAnimationTime() const;
    /// No timeline has a keyframe.
    bool isEmpty() const;
    /// changeOwnerViewFrom:toModel: — the timelines' paths, made relative to another owner;
    /// a timeline whose view is gone or that has no keyframes is dropped.
    void changeOwnerViewFrom(VDModelView& oldOwner, VDModelView& newOwner);
    /// reverseAnimationWithOwner: — turns the transition around in place, the time structure
    /// mirrored. Each keyframe is read for its "targetViewState", a field keyframes don't have:
    /// as the host has always seen it, a timeline with keyframes makes the by-name read throw
    /// `std::invalid_argument`, before anything changed.
    void reverseAnimationWithOwner(VDModelView& owner);

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
