#pragma once

#include "velmo/model/interaction/VDModelAction.h"

namespace velmo {

/// Closes the present screen or an overlay.
class VDModelActionDismissScreen : public VDModelAction {
    VD_MODEL_CLASS(VDModelActionDismissScreen)

    static std::string_view prettyName() { return "Close"; }
    std::string_view prettyNameOfClass() const override { return prettyName(); }

    /// The kind of closing.
    std::int32_t type() const { return type_; }
    void setType(std::int32_t v) { type_ = v; }
    bool isOverlay() const { return isOverlay_ != 0; }
    void setIsOverlay(bool v) { isOverlay_ = v ? 1 : 0; }
    /// Reachable by name but outside `fieldNames`: it survives neither encoding nor a copy.
    std::int32_t animation() const { return animation_; }
    void setAnimation(std::int32_t v) { animation_ = v; }
    /// The same.
    const std::optional<std::string>& customAnimationId() const { return customAnimationId_; }
    void setCustomAnimationId(std::optional<std::string> v) { customAnimationId_ = std::move(v); }

    /// "Tap: Close Screen".
    std::optional<std::string> layerTitle() const override;

private:
    std::int32_t type_ = 0;
    std::uint8_t isOverlay_ = 0;
    std::int32_t animation_ = 0;
    std::optional<std::string> customAnimationId_;
};

} // namespace velmo
