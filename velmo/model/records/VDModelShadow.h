#pragma once

#include "velmo/model/records/VDModelColor.h"

namespace velmo {

/// A drop or inner shadow as exported.
class VDModelShadow : public VDModel {
    VD_MODEL_CLASS(VDModelShadow)

    /// Shadows have no identifier: nothing of the base class runs.
    void fillDefaultValues() override {}
    bool needsModelID() const override { return false; }

    const std::shared_ptr<VDModelColor>& color() const { return color_; }
    void setColor(std::shared_ptr<VDModelColor> v) { color_ = std::move(v); }
    float xOffset() const { return xOffset_; }
    void setXOffset(float v) { xOffset_ = v; }
    float yOffset() const { return yOffset_; }
    void setYOffset(float v) { yOffset_ = v; }
    float spread() const { return spread_; }
    void setSpread(float v) { spread_ = v; }
    float blur() const { return blur_; }
    void setBlur(float v) { blur_ = v; }
    /// An inner shadow.
    bool inside() const { return inside_ != 0; }
    void setInside(bool v) { inside_ = v ? 1 : 0; }
    /// Outside `fieldNames`: neither encoded nor copied.
    float radius() const { return radius_; }
    void setRadius(float v) { radius_ = v; }

private:
    std::shared_ptr<VDModelColor> color_;
    float xOffset_ = 0;
    float yOffset_ = 0;
    float spread_ = 0;
    float blur_ = 0;
    std::uint8_t inside_ = 0;
    float radius_ = 0;
};

} // namespace velmo
