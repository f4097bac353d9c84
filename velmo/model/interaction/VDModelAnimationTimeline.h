#pragma once

#include <memory>
#include <optional>
#include <string>

#include "velmo/model/interaction/VDModelAnimation.h"

namespace velmo {

/// The keyframes of one target view within a transition, ascending by `delay`. Keyframes join it
/// when a person puts a state on the timeline at a time: the keyframe running then is split, or a
/// new one fills the stretch before that time.
class VDModelAnimationTimeline : public VDModel {
    VD_MODEL_CLASS(VDModelAnimationTimeline)

    /// No target yet (the empty path) and no keyframes.
    void fillDefaultValues() override;

    /// The target view's path relative to the transition's owner, in the form of a change set's
    /// keys; the timeline's identity within its transition.
    const std::optional<std::string>& target() const { return target_; }
    /// Old documents delimited paths with "."; a non-empty value has each "." turned into ";", so
    /// decoding repairs them.
    void setTarget(std::optional<std::string> v);
    /// `VDModelAnimation` values, ascending by `delay`. Lists are replaced, not changed in place:
    /// set a new array. Values that aren't keyframes are dropped on the way in, so every operation
    /// can trust its elements.
    const Array& animations() const { return animations_; }
    void setAnimations(Array v);

    /// The last keyframe that starts strictly before the time, trusting the order; nullptr when
    /// none does. A keyframe that starts exactly at the time is not before it.
    std::shared_ptr<VDModelAnimation> latestAnimationStartedBeforeTime(float time) const;
    /// The `state` of that keyframe; nil when there is none, so always nil at 0.
    Dictionary modelStateForTime(float time) const;
    /// addOrUpdateAnimationWithTime:modelState: — the state must be reached at the time. A
    /// keyframe that ends exactly then takes the state; one that runs across the time is split,
    /// the new keyframe taking the part before it; otherwise a new keyframe runs up to the time
    /// from the end of the one before (or from 0), for 10.0 at most.
    void addOrUpdateAnimationWithTime(float time, const Dictionary& modelState);
    /// isRedundantAnimationWithTime:modelState:modelOriginalState: — whether a keyframe with this
    /// state at this time would change nothing: the state equals the one reached before the time,
    /// or the original state when no keyframe starts before it.
    bool isRedundantAnimationWithTime(float time, const Dictionary& modelState,
                                      const Dictionary& modelOriginalState) const;
    /// Replaces `animations` with a new array sorted by `delay`, keeping the order of equal ones.
    void sortAnimations();
    /// refactorPath:to: — a target at the old path or below it moves to the new path.
    void refactorPath(const std::string& oldPath, const std::string& newPath);

private:
    void appendAnimation(const std::shared_ptr<VDModelAnimation>& animation);

    std::optional<std::string> target_;
    Array animations_;
};

} // namespace velmo
