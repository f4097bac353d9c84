#include "velmo/model/interaction/VDModelAnimationTimeline.h"

#include "velmo/model/values/StringExtensions.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace velmo {

namespace {

// The longest a keyframe that fills an empty stretch runs: a larger gap stays empty in front of it.
constexpr double kLongestFillingKeyframe = 10.0;

} // namespace

const VDModelClass& VDModelAnimationTimeline::classObject() {
    using C = VDModelAnimationTimeline;
    static const VDModelClass cls("VDModelAnimationTimeline", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::target, &C::setTarget>("target"),
                                      field<&C::animations, &C::setAnimations>("animations"),
                                  });
    return cls;
}

void VDModelAnimationTimeline::fillDefaultValues() {
    VDModel::fillDefaultValues();
    target_ = "";
    animations_ = Array::create();
}

void VDModelAnimationTimeline::setTarget(std::optional<std::string> v) {
    if (v && !v->empty()) std::replace(v->begin(), v->end(), '.', ';');
    target_ = std::move(v);
}

void VDModelAnimationTimeline::setAnimations(Array v) {
    const bool allKeyframes = std::all_of(
        v.begin(), v.end(), [](const Value& e) { return e.objectAs<VDModelAnimation>() != nullptr; });
    if (allKeyframes) {
        animations_ = std::move(v);
        return;
    }
    Array kept = Array::create(v.size());
    for (const Value& e : v) {
        if (e.objectAs<VDModelAnimation>()) kept.push_back(e);
    }
    animations_ = std::move(kept);
}

std::shared_ptr<VDModelAnimation>
VDModelAnimationTimeline::latestAnimationStartedBeforeTime(float time) const {
    std::shared_ptr<VDModelAnimation> latest;
    for (const Value& e : animations_) {
        auto animation = e.objectAs<VDModelAnimation>();
        if (!(animation->delay() < time)) break;
        latest = std::move(animation);
    }
    return latest;
}

Dictionary VDModelAnimationTimeline::modelStateForTime(float time) const {
    const auto animation = latestAnimationStartedBeforeTime(time);
    return animation ? animation->state() : Dictionary();
}

void VDModelAnimationTimeline::addOrUpdateAnimationWithTime(float time, const Dictionary& modelState) {
    const auto prev = latestAnimationStartedBeforeTime(time);
    // Without a keyframe before the time, the tests read a start and an end of 0.
    const float prevDelay = prev ? prev->delay() : 0.0f;
    const float prevEnd = prev ? prev->end() : 0.0f;

    if (prevEnd == time) {
        // A keyframe ends exactly at the time: it takes the state. At 0 with nothing before,
        // there is nothing to change.
        if (prev) {
            prev->setState(modelState);
            prev->postUpdateNotification();
        }
    } else if (prev && time >= prevDelay && prevEnd >= time) {
        // The time falls inside `prev`: the new keyframe takes the part up to the time, `prev`
        // keeps the rest with its own end and state (and identifier), so the values still pass
        // through the new state at the time and arrive where they did.
        auto first = VDModelAnimation::create();
        first->setDelay(prevDelay);
        first->setState(modelState);
        first->setDuration(time - prevDelay);
        prev->setDuration(prevEnd - time);
        prev->setDelay(time);
        appendAnimation(first);
    } else {
        // An empty stretch: the new keyframe starts where the one before ended, or at 0.
        const double start = static_cast<double>(time) - kLongestFillingKeyframe;
        auto added = VDModelAnimation::create();
        added->setDelay(prev ? static_cast<float>(std::max(static_cast<double>(prevEnd), start))
                             : static_cast<float>(std::max(0.0, start)));
        added->setDuration(time - added->delay());
        added->setState(modelState);
        appendAnimation(added);
    }
    sortAnimations();
}

bool VDModelAnimationTimeline::isRedundantAnimationWithTime(float time, const Dictionary& modelState,
                                                            const Dictionary& modelOriginalState) const {
    Dictionary current = modelStateForTime(time);
    if (current.isNil()) current = modelOriginalState;
    // Nothing equals a missing state, not even another missing one.
    return !modelState.isNil() && !current.isNil() && modelState == current;
}

void VDModelAnimationTimeline::sortAnimations() {
    std::vector<std::pair<float, Value>> keyed;
    keyed.reserve(animations_.size());
    for (const Value& e : animations_)
        keyed.emplace_back(e.objectAs<VDModelAnimation>()->delay(), e);
    // A NaN delay (only bad data has one) sorts first, so the order stays a strict one.
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        if (std::isnan(a.first)) return !std::isnan(b.first);
        return a.first < b.first;
    });
    Array sorted = Array::create(keyed.size());
    for (auto& [delay, e] : keyed)
        sorted.push_back(std::move(e));
    setAnimations(std::move(sorted));
}

void VDModelAnimationTimeline::refactorPath(const std::string& oldPath, const std::string& newPath) {
    if (!target_) return;
    if (auto moved = pathMovedFrom(*target_, oldPath, newPath)) setTarget(std::move(moved));
}

void VDModelAnimationTimeline::appendAnimation(const std::shared_ptr<VDModelAnimation>& animation) {
    Array next = Array::fromVector(animations_.items());
    next.push_back(Value(animation));
    setAnimations(std::move(next));
}

} // namespace velmo
