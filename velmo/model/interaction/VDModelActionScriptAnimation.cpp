#include "velmo/model/interaction/VDModelActionScriptAnimation.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>

#include "velmo/model/interaction/VDModelAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/values/DictionaryExtensions.h"
#include "velmo/model/values/StringExtensions.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/model/view/VDModelViewPathIndex.h"

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

namespace {

std::string titleOf(const VDModelViewState* state) {
    return capitalizedString(state && state->name() ? *state->name() : std::string("(null)"));
}

// The last keyframe of a timeline, made with its defaults when the timeline has none.
std::shared_ptr<VDModelAnimation> lastKeyframe(VDModelAnimationTimeline& timeline) {
    if (const auto last = timeline.animations().last().objectAs<VDModelAnimation>()) return last;
    auto keyframe = VDModelAnimation::create();
    timeline.setAnimations(Array{Value(keyframe)});
    return keyframe;
}

std::shared_ptr<VDModelAnimationTimeline> timelineOf(const Value& v) {
    return v.objectAs<VDModelAnimationTimeline>();
}

} // namespace

std::shared_ptr<VDModelActionScriptAnimation>
VDModelActionScriptAnimation::newScriptAnimationFromState(const VDModelViewState* from,
                                                          const VDModelViewState* to, VDModelView& view) {
    auto transition = create();
    if (from && to) {
        transition->setName(fmt::format("Transition ({} -> {})", titleOf(from), titleOf(to)));
    } else if (from) {
        transition->setName(fmt::format("Transition from {}", titleOf(from)));
    } else {
        transition->setName(fmt::format("Transition (Initial -> {})", titleOf(to)));
    }
    transition->updateWithOriginState(from, to, view, false);
    return transition;
}

void VDModelActionScriptAnimation::updateWithOriginState(const VDModelViewState* from,
                                                         const VDModelViewState* to, VDModelView& view) {
    updateWithOriginState(from, to, view, true);
}

void VDModelActionScriptAnimation::updateWithOriginState(const VDModelViewState* from,
                                                         const VDModelViewState* to, VDModelView& view,
                                                         bool postNotification) {
    setTargetStateName(to ? to->name() : std::nullopt);
    setOriginStateName(from ? from->name() : std::nullopt);
    const Dictionary targetSet = to ? to->overrides() : Dictionary();
    const Dictionary originSet = from ? from->overrides() : Dictionary();

    // The timelines of paths that either state still touches stay, in their order, with their
    // keyframes; the paths are looked up by target once, not searched for each entry.
    std::vector<std::shared_ptr<VDModelAnimationTimeline>> kept;
    std::unordered_map<std::string, std::shared_ptr<VDModelAnimationTimeline>> byTarget;
    for (const Value& v : timelines_) {
        auto timeline = timelineOf(v);
        if (!timeline || !timeline->target()) continue;
        const std::string& target = *timeline->target();
        if (!targetSet.contains(target) && !originSet.contains(target)) continue;
        byTarget.try_emplace(target, timeline);
        kept.push_back(std::move(timeline));
    }
    const auto timelineFor = [&](const std::string& path) {
        auto [at, added] = byTarget.try_emplace(path);
        if (added) {
            at->second = VDModelAnimationTimeline::create();
            at->second->setTarget(path);
            kept.push_back(at->second);
        }
        return at->second;
    };

    // The end of the transition: everything the target state sets.
    for (const auto& [path, fields] : targetSet)
        lastKeyframe(*timelineFor(path.str()))->setState(fields.dictionary().copy());

    // The way back: what only the origin state set returns to the view's own value; where both
    // set a field, the target's value wins.
    if (from) {
        const Dictionary reversed = from->reversedOverridesWithModel(view);
        for (const auto& [path, fields] : reversed) {
            const auto keyframe = lastKeyframe(*timelineFor(path.str()));
            const Dictionary back = fields.dictionary();
            keyframe->setState(targetSet.contains(path.stringView()) && !keyframe->state().isNil()
                                   ? dictionaryByExtendingWithDictionary(back, keyframe->state())
                                   : back);
        }
    }

    Array timelines = Array::create(kept.size());
    for (auto& timeline : kept)
        timelines.push_back(Value(std::move(timeline)));
    setTimelines(std::move(timelines));
    if (postNotification) postUpdateNotification();
}

std::shared_ptr<VDModelAnimationTimeline>
VDModelActionScriptAnimation::timeLineForModelWithRelativePath(const std::string& path) {
    for (const Value& v : timelines_) {
        auto timeline = timelineOf(v);
        if (timeline && timeline->target() == path) return timeline;
    }
    auto timeline = VDModelAnimationTimeline::create();
    timeline->setTarget(path);
    Array next = timelines_.isNil() ? Array::create(1) : timelines_.copy();
    next.push_back(Value(timeline));
    setTimelines(std::move(next));
    return timeline;
}

float VDModelActionScriptAnimation::totalAnimationTime() const {
    float total = 0;
    for (const Value& v : timelines_) {
        const auto timeline = timelineOf(v);
        if (!timeline) continue;
        if (const auto last = timeline->animations().last().objectAs<VDModelAnimation>())
            total = std::max(total, last->end());
    }
    return total;
}

bool VDModelActionScriptAnimation::isEmpty() const {
    for (const Value& v : timelines_) {
        const auto timeline = timelineOf(v);
        if (timeline && !timeline->animations().empty()) return false;
    }
    return true;
}

void VDModelActionScriptAnimation::changeOwnerViewFrom(VDModelView& oldOwner, VDModelView& newOwner) {
    VDModelViewPathIndex index;
    Array moved = Array::create(timelines_.size());
    for (const Value& v : timelines_) {
        const auto timeline = timelineOf(v);
        if (!timeline || timeline->animations().empty()) continue;
        const auto model = oldOwner.modelWithRelativePath(timeline->target().value_or(""), &index);
        if (!model) continue;
        timeline->setTarget(newOwner.relativePathToModel(*model));
        moved.push_back(v);
    }
    setTimelines(std::move(moved));
}

void VDModelActionScriptAnimation::reverseAnimationWithOwner(VDModelView& owner) {
    const float total = totalAnimationTime();
    struct Reversal {
        Value timeline;
        std::vector<std::shared_ptr<VDModelAnimation>> frames; // in reverse order
        std::vector<Value> statesBack;
    };
    // Everything is read before anything changes, so a failing read leaves the transition whole.
    std::vector<Reversal> reversals;
    for (const Value& v : timelines_) {
        const auto timeline = timelineOf(v);
        if (!timeline) continue;
        const auto model = owner.modelWithRelativePath(timeline->target().value_or(""));
        if (!model) continue;
        Reversal r{v, {}, {}};
        for (const Value& k : timeline->animations()) {
            const auto keyframe = k.objectAs<VDModelAnimation>();
            if (!keyframe) continue;
            r.statesBack.push_back(keyframe->valueForKey("targetViewState"));
            r.frames.push_back(keyframe);
        }
        std::reverse(r.statesBack.begin(), r.statesBack.end());
        std::reverse(r.frames.begin(), r.frames.end());
        const Dictionary base =
            model->hasOverrides() ? model->originalStateOverrides() : model->currentOverrides();
        r.statesBack.push_back(Value(base));
        reversals.push_back(std::move(r));
    }
    Array timelines = Array::create(reversals.size());
    for (auto& r : reversals) {
        Array animations = Array::create(r.frames.size());
        for (std::size_t i = 0; i < r.frames.size(); ++i) {
            const auto& frame = r.frames[i];
            const float end = frame->end();
            frame->setDelay(total - end);
            frame->setState(r.statesBack[i + 1].dictionary());
            animations.push_back(Value(frame));
        }
        timelineOf(r.timeline)->setAnimations(std::move(animations));
        timelines.push_back(r.timeline);
    }
    setTimelines(std::move(timelines));
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
