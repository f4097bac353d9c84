#pragma once

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// An animation given in CSS text: what a view shows when it enters, or how a screen change
/// looks. The library only carries it to the code generator.
class VDModelAnimationWeb : public VDModel {
    VD_MODEL_CLASS(VDModelAnimationWeb)

    float delay() const { return delay_; }
    void setDelay(float v) { delay_ = v; }
    float duration() const { return duration_; }
    void setDuration(float v) { duration_ = v; }
    /// Curve name.
    const std::optional<std::string>& curveType() const { return curveType_; }
    void setCurveType(std::optional<std::string> v) { curveType_ = std::move(v); }
    /// CSS text at the start.
    const std::optional<std::string>& fromCSS() const { return fromCSS_; }
    void setFromCSS(std::optional<std::string> v) { fromCSS_ = std::move(v); }
    /// CSS text at the end.
    const std::optional<std::string>& toCSS() const { return toCSS_; }
    void setToCSS(std::optional<std::string> v) { toCSS_ = std::move(v); }
    /// Animation name.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }

private:
    float delay_ = 0;
    float duration_ = 0;
    std::optional<std::string> curveType_;
    std::optional<std::string> fromCSS_;
    std::optional<std::string> toCSS_;
    std::optional<std::string> name_;
};

} // namespace velmo
