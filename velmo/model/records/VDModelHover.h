#pragma once

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The hover effect of a view: a timing curve, a duration and the style of the hovered state.
class VDModelHover : public VDModel {
    VD_MODEL_CLASS(VDModelHover)

    bool needsModelID() const override { return false; }

    /// Timing curve name.
    const std::optional<std::string>& curve() const { return curve_; }
    void setCurve(std::optional<std::string> v) { curve_ = std::move(v); }
    /// Seconds.
    float duration() const { return duration_; }
    void setDuration(float v) { duration_ = v; }
    /// Style text of the hovered state.
    const std::optional<std::string>& css() const { return css_; }
    void setCss(std::optional<std::string> v) { css_ = std::move(v); }

private:
    std::optional<std::string> curve_;
    float duration_ = 0;
    std::optional<std::string> css_;
};

} // namespace velmo
