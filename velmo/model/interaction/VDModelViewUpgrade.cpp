// The view's repairs of documents written by earlier versions. They belong to VDModelView but
// live here, with the states and transitions they rework. Each looks at the shape of the data,
// so it is safe on a document that doesn't need it.
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/runtime/VPLogging.h"

namespace velmo {

namespace {
std::optional<std::string> nameOfFirstState(const Array& states) {
    const auto first = states.first().objectAs<VDModelViewState>();
    return first ? first->name() : std::nullopt;
}
} // namespace

bool VDModelView::migrateStateZero() {
    VP_TRY
    if (defaultStateName_ || !timelineType_) return false;
    // Old timeline components had no explicit first state: nil stood for it.
    auto initial = VDModelViewState::create();
    initial->setName(stateNamed("initial") ? generateUniqueStateName(std::string("initial")) : "initial");
    Array states = states_.isNil() ? Array::create(1) : states_.copy();
    states.insert(0, Value(initial));
    states_ = std::move(states);
    setDefaultStateName(initial->name());
    // Both groups are gathered before either changes.
    const Array fromNothing = animationsFromState(nullptr);
    const Array toNothing = animationsToState(nullptr);
    for (const Value& v : fromNothing)
        v.objectAs<VDModelActionScriptAnimation>()->setOriginStateName(initial->name());
    for (const Value& v : toNothing)
        v.objectAs<VDModelActionScriptAnimation>()->setTargetStateName(initial->name());
    updateBackwardCompatibility();
    return true;
    VP_CATCH(false)
}

std::shared_ptr<VDModelActionScriptAnimation> VDModelView::backwardCompatibilityAnimation() const {
    return animationsFromState(nullptr).first().objectAs<VDModelActionScriptAnimation>();
}

void VDModelView::updateBackwardCompatibility() {
    VP_TRY
    // The component's entry: from no state into the default state, at once, on a timer.
    const auto target = defaultState();
    auto entry = backwardCompatibilityAnimation();
    if (entry) {
        entry->setTargetStateName(defaultStateName_);
    } else {
        entry = VDModelActionScriptAnimation::newScriptAnimationFromState(nullptr, target.get(), *this);
    }
    const auto only =
        entry->listeners().size() == 1 ? entry->listeners()[0].objectAs<VDModelEventListener>() : nullptr;
    if (!(only && only->event() == "timer")) {
        // A timer has no target: it belongs to the owner.
        entry->setListeners(Array::create());
        entry->addListenerWithTarget(std::nullopt, "timer");
    }
    Array actions = Array::create(actions_.size() + 1);
    actions.push_back(Value(entry));
    for (const Value& v : actions_) {
        if (v.objectPointer() != entry.get()) actions.push_back(v);
    }
    setActions(std::move(actions));
    entry->updateWithOriginState(nullptr, target.get(), *this, false);
    for (const Value& t : entry->timelines()) {
        const auto timeline = t.objectAs<VDModelAnimationTimeline>();
        if (!timeline) continue;
        for (const Value& k : timeline->animations()) {
            if (const auto keyframe = k.objectAs<VDModelAnimation>()) {
                keyframe->setDuration(0);
                keyframe->setDelay(0);
            }
        }
    }
    VP_CATCH()
}

void VDModelView::validateDefaultStateName() {
    if (defaultStateName_ && !defaultState()) {
        setDefaultStateName(nameOfFirstState(states_));
        return;
    }
    // An animation timeline always starts in its first state.
    if (timelineType_ == "animation" && defaultStateName_ != nameOfFirstState(states_))
        setDefaultStateName(nameOfFirstState(states_));
}

} // namespace velmo
