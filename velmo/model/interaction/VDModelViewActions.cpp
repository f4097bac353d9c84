// The view's operations on its actions. They belong to VDModelView but live here, with the
// action family, so that the view layer needs nothing of the layer above it.
#include <stdexcept>
#include <unordered_map>

#include <fmt/format.h>

#include "velmo/foundation/SystemLog.h"

#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelSubmitAction.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"

namespace velmo {

std::shared_ptr<VDModelAction> VDModelView::actionWithName(std::string_view name) const {
    for (const Value& v : actions_) {
        auto action = v.objectAs<VDModelAction>();
        if (action && action->name() == name) return action;
    }
    return nullptr;
}

void VDModelView::enumerateActionsWithBlock(const std::function<void(VDModelView&, VDModelAction&)>& block) {
    enumerateModelsWithBlock([&](const std::shared_ptr<VDModel>& model) {
        auto* view = dynamic_cast<VDModelView*>(model.get());
        if (!view) return;
        // The list may be replaced by the callback; walk the one in force when the view is met.
        const Array actions = view->actions();
        for (const Value& action : actions) {
            if (auto a = action.objectAs<VDModelAction>()) block(*view, *a);
        }
    });
}

bool VDModelView::hasAutoAnimateAction() const {
    for (const Value& v : actions_) {
        const auto action = v.objectAs<VDModelAction>();
        if (action && action->hasAutoAnimate()) return true;
    }
    for (const Value& v : subviews()) {
        const auto sub = v.objectAs<VDModelView>();
        if (sub && sub->hasAutoAnimateAction()) return true;
    }
    return false;
}

void VDModelView::updateActionsRelativePathsRecursiveForModel(const VDModelView& movedView,
                                                              const std::string& oldAbsolutePath) {
    for (const Value& v : actions_) {
        if (auto action = v.objectAs<VDModelAction>()) {
            action->updateRelativePathsWithBlock(
                [&](const std::string& path) { return fixedRelativePath(path, oldAbsolutePath, movedView); });
        }
    }
    for (const Array& children : {subviews(), subviewsPrototypes()}) {
        for (const Value& v : children) {
            if (auto sub = v.objectAs<VDModelView>())
                sub->updateActionsRelativePathsRecursiveForModel(movedView, oldAbsolutePath);
        }
    }
}

void VDModelView::appendAction(const std::shared_ptr<VDModelAction>& action) {
    Array next = actions_.isNil() ? Array::create(1) : actions_.copy();
    next.push_back(Value(action));
    setActions(std::move(next));
}

namespace {

// The transitions of a list that a test picks, in order. The metaclass tells a transition
// apart without a cast of every action: each state edit pays for this scan of all actions.
template <class Test> Array transitionsWhere(const Array& actions, Test test) {
    const VDClass& transitionClass = VDModelActionScriptAnimation::classObject();
    Array out = Array::create();
    for (const Value& v : actions) {
        const Object* object = v.objectPointer();
        if (!object || !object->objectClass().isSubclassOf(transitionClass)) continue;
        if (test(static_cast<const VDModelActionScriptAnimation&>(*object))) out.push_back(v);
    }
    return out;
}

std::optional<std::string> nameOf(const VDModelViewState* state) {
    return state ? state->name() : std::nullopt;
}

} // namespace

Array VDModelView::animations() const {
    return transitionsWhere(
        actions_, [](const VDModelActionScriptAnimation& t) { return t.originStateName().has_value(); });
}

Array VDModelView::animationsFromState(const VDModelViewState* from, const VDModelViewState* to) const {
    const auto origin = nameOf(from), target = nameOf(to);
    return transitionsWhere(actions_, [&](const VDModelActionScriptAnimation& t) {
        return origin && target && t.originStateName() == origin && t.targetStateName() == target;
    });
}

Array VDModelView::animationsFromState(const VDModelViewState* state) const {
    const auto origin = nameOf(state);
    return transitionsWhere(
        actions_, [&](const VDModelActionScriptAnimation& t) { return t.originStateName() == origin; });
}

Array VDModelView::animationsToState(const VDModelViewState* state) const {
    const auto target = nameOf(state);
    return transitionsWhere(actions_, [&](const VDModelActionScriptAnimation& t) {
        return t.originStateName() && t.targetStateName() == target;
    });
}

void VDModelView::addAnimationToState(const VDModelViewState& state) {
    if (states_.empty()) throw std::out_of_range("addAnimationToState: the view has no states");
    const auto origin =
        states_.size() == 1 ? nullptr : states_[states_.size() - 2].objectAs<VDModelViewState>();
    addAnimationFromState(origin.get(), &state);
}

void VDModelView::addAnimationFromState(const VDModelViewState* from, const VDModelViewState* to) {
    SystemLog::log(
        fmt::format("Added from {} to {}", nameOf(from).value_or("(null)"), nameOf(to).value_or("(null)")));
    if (!to) return;
    const auto transition = VDModelActionScriptAnimation::newScriptAnimationFromState(from, to, *this);
    appendAction(transition);
    // Made as a timer, then turned into the end of the transition before it: the form a sequence
    // of states takes.
    const auto listener = transition->addListenerWithTimer(0.0);
    listener->setAnimationName(transition->name());
    listener->setEvent("animationend");
    postUpdateNotification();
}

std::shared_ptr<VDModelActionScriptAnimation>
VDModelView::addAnimationFrom(const VDModelViewState* from, const VDModelViewState* to,
                              const std::string& event, const VDModelView& listenerTarget) {
    if (from == to) return nullptr;
    const Array existing = animationsFromState(from, to);
    auto transition = existing.first().objectAs<VDModelActionScriptAnimation>();
    if (!transition) {
        transition = VDModelActionScriptAnimation::newScriptAnimationFromState(from, to, *this);
        appendAction(transition);
    }
    // A timer always belongs to the owner.
    const std::string path = listenerTarget.viewPath();
    const std::string target =
        !path.empty() && event != "timer" ? fmt::format("this{}{}", ';', path) : "this";
    if (const auto listener = transition->addListenerWithTarget(target, event)) {
        listener->postUpdateNotificationType(kModelUpdateTypeListenerAdded);
    } else {
        transition->postUpdateNotification();
    }
    removeConflictingListenersOf(*transition, event, target);
    removeActionsWithoutListeners();
    return transition;
}

void VDModelView::removeScriptAnimation(const VDModelActionScriptAnimation& transition) {
    Array kept = Array::create(actions_.size());
    for (const Value& v : actions_) {
        const auto object = v.object();
        if (!(object && (object.get() == &transition || object->isEqual(transition)))) kept.push_back(v);
    }
    setActions(std::move(kept));
}

void VDModelView::updateAllAnimations() {
    updateAnimations(animations());
}

void VDModelView::updateAllAnimationsForState(const VDModelViewState* state) {
    updateAnimations(animationsFromState(state));
    updateAnimations(animationsToState(state));
}

void VDModelView::updateAnimations(const Array& transitions) {
    for (const Value& v : transitions) {
        const auto transition = v.objectAs<VDModelActionScriptAnimation>();
        if (!transition) continue;
        const auto& originName = transition->originStateName();
        const auto& targetName = transition->targetStateName();
        const auto origin = originName ? stateNamed(*originName) : nullptr;
        const auto target = targetName ? stateNamed(*targetName) : nullptr;
        // Only a nil name stands for no state; a name that points nowhere leaves it be.
        if ((!origin && !target) || (originName && !origin) || (targetName && !target)) continue;
        transition->updateWithOriginState(origin.get(), target.get(), *this);
    }
}

void VDModelView::removeConflictingListenersOf(const VDModelActionScriptAnimation& mine,
                                               const std::string& event, const std::string& target) {
    for (const Value& v : animations()) {
        const auto other = v.objectAs<VDModelActionScriptAnimation>();
        if (other.get() == &mine || other->originStateName() != mine.originStateName()) continue;
        other->removeListenersWhere(
            [&](const VDModelEventListener& l) { return l.target() == target && l.event() == event; });
    }
}

void VDModelView::removeDuplicateTimersAfterAdding(const VDModelAction& mine) {
    if (!mine.listenerWithEvent("timer")) return;
    const auto isTimer = [](const VDModelEventListener& l) { return l.event() == "timer"; };
    Array kept = Array::create(actions_.size());
    for (const Value& v : actions_) {
        const auto action = v.objectAs<VDModelAction>();
        if (action && action.get() != &mine && action->listenerWithEvent("timer")) {
            action->removeListenersWhere(isTimer);
            if (action->listeners().empty()) continue; // it had timers alone
        }
        kept.push_back(v);
    }
    if (kept.size() != actions_.size()) setActions(std::move(kept));
}

void VDModelView::removeActionsWithoutListeners() {
    Array kept = Array::create(actions_.size());
    for (const Value& v : actions_) {
        const auto action = v.objectAs<VDModelAction>();
        if (!action || !action->listeners().empty()) kept.push_back(v);
    }
    if (kept.size() != actions_.size()) setActions(std::move(kept));
}

// ---------------------------------------------------------------- forms

namespace {

bool holdsSubmitAction(const VDModelView& view) {
    for (const Value& v : view.actions()) {
        if (v.objectAs<VDModelSubmitAction>()) return true;
    }
    return false;
}

// How many views of each subtree hold a submit action, counted up to 2: enough to answer
// `hasMoreThanOneSubmitButton` for every container in one walk, where asking each container
// walks its subtree again.
std::size_t countSubmitButtons(const VDModelView& view,
                               std::unordered_map<const VDModelView*, std::size_t>& counts) {
    std::size_t count = holdsSubmitAction(view) ? 1 : 0;
    for (const Value& v : view.subviews()) {
        if (const auto sub = v.objectAs<VDModelView>()) count += countSubmitButtons(*sub, counts);
    }
    count = std::min<std::size_t>(count, 2);
    counts[&view] = count;
    return count;
}

} // namespace

void VDModelView::clearFormFlagsAndCollectSubmitButtons(
    std::vector<FormCandidate>& list, const std::vector<std::shared_ptr<VDModelView>>& hierarchy) {
    setIsForm(false);
    // The test is on the list's existence, not on a submit action in it: every view with an
    // `actions` list becomes a candidate, and the flags that generated code reads come from that.
    if (!actions_.isNil())
        list.emplace_back(std::static_pointer_cast<VDModelView>(sharedFromThis()), hierarchy);
    std::vector<std::shared_ptr<VDModelView>> below = hierarchy;
    below.push_back(std::static_pointer_cast<VDModelView>(sharedFromThis()));
    for (const Value& v : subviews()) {
        if (const auto sub = v.objectAs<VDModelView>())
            sub->clearFormFlagsAndCollectSubmitButtons(list, below);
    }
}

bool VDModelView::hasMoreThanOneSubmitButton() const {
    std::vector<const VDModelView*> found;
    return hasMoreThanOneSubmitButton(found);
}

bool VDModelView::hasMoreThanOneSubmitButton(std::vector<const VDModelView*>& found) const {
    if (holdsSubmitAction(*this)) {
        if (!found.empty()) return true;
        found.push_back(this);
    }
    for (const Value& v : subviews()) {
        const auto sub = v.objectAs<VDModelView>();
        if (sub && sub->hasMoreThanOneSubmitButton(found)) return true;
    }
    return false;
}

void VDModelView::markFormsAccordingToSubmitButtons() {
    std::vector<FormCandidate> list;
    clearFormFlagsAndCollectSubmitButtons(list, {});
    std::unordered_map<const VDModelView*, std::size_t> counts;
    countSubmitButtons(*this, counts);
    for (const auto& [view, hierarchy] : list) {
        if (hierarchy.empty()) continue;
        // The largest container around the view that takes in no second button; the parent
        // when the parent itself holds two.
        std::shared_ptr<VDModelView> form = hierarchy.back();
        for (auto ancestor = hierarchy.rbegin(); ancestor != hierarchy.rend(); ++ancestor) {
            if (counts[ancestor->get()] > 1) break;
            form = *ancestor;
        }
        form->setIsForm(true);
    }
}

} // namespace velmo
