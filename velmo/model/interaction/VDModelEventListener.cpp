#include "velmo/model/interaction/VDModelEventListener.h"

#include <algorithm>
#include <array>
#include <utility>

#include "velmo/model/values/StringExtensions.h"

namespace velmo {

const VDModelClass& VDModelEventListener::classObject() {
    using C = VDModelEventListener;
    static const VDModelClass cls("VDModelEventListener", &VDModel::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); },
                                  {
                                      field<&C::event, &C::setEvent>("event"),
                                      field<&C::target, &C::setTarget>("target"),
                                      field<&C::timerMS, &C::setTimerMS>("timerMS"),
                                      field<&C::animationName, &C::setAnimationName>("animationName"),
                                  });
    return cls;
}

void VDModelEventListener::setTarget(std::optional<std::string> v) {
    if (v && !v->empty()) std::replace(v->begin(), v->end(), '.', ';');
    target_ = std::move(v);
}

bool VDModelEventListener::isEqual(const Object& other) const {
    const auto* listener = dynamic_cast<const VDModelEventListener*>(&other);
    return listener && listener->event_ && listener->event_ == event_ && listener->target_ &&
           listener->target_ == target_ && listener->timerMS_ == timerMS_;
}

std::optional<std::string> VDModelEventListener::prettyEventName() const {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kNames{{
        {"click", "Click"},
        {"mouseenter", "Mouse enter"},
        {"mouseleave", "Mouse leave"},
        {"timer", "Timer"},
    }};
    if (!event_) return std::nullopt;
    for (const auto& [event, pretty] : kNames) {
        if (event == *event_) return std::string(pretty);
    }
    return std::nullopt;
}

void VDModelEventListener::refactorPath(std::string_view oldPath, std::string_view newPath) {
    if (!target_) return;
    if (auto moved = pathMovedFrom(*target_, oldPath, newPath)) setTarget(std::move(moved));
}

} // namespace velmo
