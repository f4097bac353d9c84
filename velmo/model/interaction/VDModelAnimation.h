#pragma once

#include <optional>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// A keyframe of a timeline: from `delay` on, during `duration`, along the curve, the target
/// goes to the fields of `state`, which is the value reached at the keyframe's end.
class VDModelAnimation : public VDModel {
    VD_MODEL_CLASS(VDModelAnimation)

    /// Delay 0, duration 0.2, the curve "ease-in-out" (which also sets `cubicBezier`), no state.
    void fillDefaultValues() override;

    /// Start, from the start of the transition.
    float delay() const { return delay_; }
    void setDelay(float v) { delay_ = v; }
    float duration() const { return duration_; }
    void setDuration(float v) { duration_ = v; }
    /// Name of the easing curve, or "custom".
    const std::optional<std::string>& curve() const { return curve_; }
    /// Stores the name; a name of the table of curves also sets `cubicBezier`, any other name
    /// leaves it as it was. `curve` comes before `cubicBezier` in the field table, so a decoded
    /// `cubicBezier` overwrites what this wrote.
    void setCurve(std::optional<std::string> v);
    /// The four control values of the curve, joined by ";".
    const std::optional<std::string>& cubicBezier() const { return cubicBezier_; }
    void setCubicBezier(std::optional<std::string> v) { cubicBezier_ = std::move(v); }
    /// Field name to value at the end of the keyframe; stored as given.
    const Dictionary& state() const { return state_; }
    void setState(Dictionary v) { state_ = std::move(v); }

    /// Names `curve` after `cubicBezier`: the first row of the table whose four numbers equal
    /// it, compared as numbers ("0.42;0;1;1" is "ease-in"), else "custom". `cubicBezier` stays
    /// as it is.
    void updateCurveFromCubic();
    /// `delay` + `duration`.
    float end() const { return delay_ + duration_; }
    /// "delay", "duration", "curve", "cubicBezier", "state".
    NameList undoAffectedFields() const;

private:
    float delay_ = 0;
    float duration_ = 0.2f;
    std::optional<std::string> curve_;
    std::optional<std::string> cubicBezier_;
    Dictionary state_;
};

} // namespace velmo
