#pragma once

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The settings of a screen change that animates automatically between the two screens.
class VDModelAutoAnimate : public VDModel {
    VD_MODEL_CLASS(VDModelAutoAnimate)

    /// Easing name.
    const std::optional<std::string>& easing() const { return easing_; }
    void setEasing(std::optional<std::string> v) { easing_ = std::move(v); }
    /// Length, as the number was given.
    const VDNumber& duration() const { return duration_; }
    void setDuration(VDNumber v) { duration_ = std::move(v); }

private:
    std::optional<std::string> easing_;
    VDNumber duration_;
};

} // namespace velmo
