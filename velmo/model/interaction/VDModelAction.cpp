#include "velmo/model/interaction/VDModelAction.h"

#include <array>

#include "velmo/model/interaction/VDModelEventListener.h"

namespace velmo {

const VDModelClass& VDModelAction::classObject() {
    using C = VDModelAction;
    static const VDModelClass cls(
        "VDModelAction", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::trigger, &C::setTrigger>("trigger"),
            field<&C::delayFromTrigger, &C::setDelayFromTrigger>("delayFromTrigger"),
            field<&C::name, &C::setName>("name"),
            field<&C::listeners, &C::setListeners>("listeners"),
            field<&C::originStateName, &C::setOriginStateName>("originStateName"),
        },
        {.prefix = "Action"});
    return cls;
}

void VDModelAction::fillDefaultValues() {
    VDModel::fillDefaultValues();
    name_ = "untitled";
}

std::optional<std::string> VDModelAction::shortTitleForTrigger(std::int32_t trigger) {
    static constexpr std::array<std::string_view, 13> kTitles{
        "Never", "Appears", "Appeared",   "Disappear",   "Tap",      "Double-Tap", "Long-Tap",
        "Pinch", "Rotate",  "Swipe-Left", "Swipe-Right", "Swipe-Up", "Swipe-Down",
    };
    if (trigger < 0 || static_cast<std::size_t>(trigger) >= kTitles.size()) return std::nullopt;
    return std::string(kTitles[static_cast<std::size_t>(trigger)]);
}

std::optional<std::string> VDModelAction::layerTitle() const {
    return name_;
}

std::shared_ptr<VDModelEventListener>
VDModelAction::addListenerWithTarget(const std::optional<std::string>& target, const std::string& event) {
    auto listener = VDModelEventListener::create();
    listener->setTarget(target);
    listener->setEvent(event);
    for (const Value& v : listeners_) {
        if (v.isObject() && listener->isEqual(*v.object())) return nullptr;
    }
    appendListener(listener);
    return listener;
}

std::shared_ptr<VDModelEventListener> VDModelAction::addListenerWithTimer(double milliseconds) {
    auto listener = VDModelEventListener::create();
    listener->setTimerMS(milliseconds);
    listener->setEvent("timer");
    // No equality test: without a target a listener equals nothing, so timers pile up here and
    // the view's own rule keeps them on one action.
    appendListener(listener);
    return listener;
}

void VDModelAction::appendListener(const std::shared_ptr<VDModelEventListener>& listener) {
    Array next = listeners_.isNil() ? Array::create(1) : listeners_.copy();
    next.push_back(Value(listener));
    setListeners(std::move(next));
}

std::shared_ptr<VDModelEventListener> VDModelAction::listenerWithEvent(std::string_view event) const {
    for (const Value& v : listeners_) {
        auto listener = v.objectAs<VDModelEventListener>();
        if (listener && listener->event() == event) return listener;
    }
    return nullptr;
}

void VDModelAction::removeListenersWhere(const std::function<bool(const VDModelEventListener&)>& test) {
    Array kept = Array::create(listeners_.size());
    for (const Value& v : listeners_) {
        const auto listener = v.objectAs<VDModelEventListener>();
        if (!listener || !test(*listener)) kept.push_back(v);
    }
    if (kept.size() != listeners_.size()) setListeners(std::move(kept));
}

void VDModelAction::refactorPath(std::string_view oldPath, std::string_view newPath) {
    for (const Value& v : listeners_) {
        if (auto listener = v.objectAs<VDModelEventListener>()) listener->refactorPath(oldPath, newPath);
    }
}

bool VDModelAction::updateRelativePathsWithBlock(const PathBlock&) {
    return false;
}

void VDModelAction::refactorStateNameFrom(const std::string& oldName, const std::string& newName) {
    if (originStateName_ == oldName) setOriginStateName(newName);
}

} // namespace velmo
