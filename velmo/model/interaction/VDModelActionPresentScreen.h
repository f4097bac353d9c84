#pragma once

#include "velmo/model/interaction/VDModelAction.h"
#include "velmo/model/records/VDModelAnimationWeb.h"
#include "velmo/model/records/VDModelAutoAnimate.h"

namespace velmo {

/// Opens a screen (or an address), over the present one or in its place.
class VDModelActionPresentScreen : public VDModelAction {
    VD_MODEL_CLASS(VDModelActionPresentScreen)

    void fillDefaultValues() override;
    static std::string_view prettyName() { return "Open"; }
    std::string_view prettyNameOfClass() const override { return prettyName(); }

    const std::optional<std::string>& customURL() const { return customURL_; }
    void setCustomURL(std::optional<std::string> v) { customURL_ = std::move(v); }
    const std::optional<std::string>& customURLOpenIn() const { return customURLOpenIn_; }
    void setCustomURLOpenIn(std::optional<std::string> v) { customURLOpenIn_ = std::move(v); }
    /// Variable name or identifier of the target screen, as the host stores it.
    const std::optional<std::string>& screenId() const { return screenId_; }
    void setScreenId(std::optional<std::string> v) { screenId_ = std::move(v); }
    /// The kind of screen change, passed on to code generation.
    std::int32_t animation() const { return animation_; }
    void setAnimation(std::int32_t v) { animation_ = v; }
    const std::optional<std::string>& anchorTargetId() const { return anchorTargetId_; }
    void setAnchorTargetId(std::optional<std::string> v) { anchorTargetId_ = std::move(v); }
    /// 1 is a push.
    std::int32_t presentationType() const { return presentationType_; }
    void setPresentationType(std::int32_t v) { presentationType_ = v; }
    const std::optional<std::string>& customAnimationId() const { return customAnimationId_; }
    void setCustomAnimationId(std::optional<std::string> v) { customAnimationId_ = std::move(v); }
    bool isOverlay() const { return isOverlay_ != 0; }
    void setIsOverlay(bool v) { isOverlay_ = v ? 1 : 0; }
    const std::shared_ptr<VDModelAnimationWeb>& webAnimation() const { return webAnimation_; }
    void setWebAnimation(std::shared_ptr<VDModelAnimationWeb> v) { webAnimation_ = std::move(v); }
    const std::shared_ptr<VDModelAutoAnimate>& autoAnimate() const { return autoAnimate_; }
    void setAutoAnimate(std::shared_ptr<VDModelAutoAnimate> v) { autoAnimate_ = std::move(v); }

    /// "Tap: Open login"; "-" for a nil screen.
    std::optional<std::string> layerTitle() const override;
    /// The screen, even when it is the empty default; nil when it is nil.
    Array linkedScreenIDs() const override;
    bool hasAutoAnimate() const override { return autoAnimate_ != nullptr; }

private:
    std::optional<std::string> customURL_;
    std::optional<std::string> customURLOpenIn_;
    std::optional<std::string> screenId_;
    std::int32_t animation_ = 0;
    std::optional<std::string> anchorTargetId_;
    std::int32_t presentationType_ = 0;
    std::optional<std::string> customAnimationId_;
    std::uint8_t isOverlay_ = 0;
    std::shared_ptr<VDModelAnimationWeb> webAnimation_;
    std::shared_ptr<VDModelAutoAnimate> autoAnimate_;
};

} // namespace velmo
