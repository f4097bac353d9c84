#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// A web-style event that starts an action: an event name ("click", "mouseenter", "mouseleave",
/// "timer", "animationend") on a view given by a path relative to the action's owner.
class VDModelEventListener : public VDModel {
    VD_MODEL_CLASS(VDModelEventListener)

    /// Free text; nothing here checks it.
    const std::optional<std::string>& event() const { return event_; }
    void setEvent(std::optional<std::string> v) { event_ = std::move(v); }
    /// "this" for the owner. Old documents joined the path with ".": every "." becomes ";".
    const std::optional<std::string>& target() const { return target_; }
    void setTarget(std::optional<std::string> v);
    /// Milliseconds before a timer fires.
    double timerMS() const { return timerMS_; }
    void setTimerMS(double v) { timerMS_ = v; }
    /// For "animationend": the `name` of the transition whose end is awaited.
    const std::optional<std::string>& animationName() const { return animationName_; }
    void setAnimationName(std::optional<std::string> v) { animationName_ = std::move(v); }

    /// The same event on the same target with the same timer. A listener without a target or
    /// an event equals nothing, not even itself: a timer is never equal to another timer.
    bool isEqual(const Object& other) const override;
    /// "Click", "Mouse enter", "Mouse leave", "Timer"; nothing for other events.
    std::optional<std::string> prettyEventName() const;
    /// refactorPath:to: — a target equal to `oldPath` or below it moves to `newPath`.
    void refactorPath(std::string_view oldPath, std::string_view newPath);

private:
    std::optional<std::string> event_;
    std::optional<std::string> target_;
    double timerMS_ = 0;
    std::optional<std::string> animationName_;
};

} // namespace velmo
