#pragma once

#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelGradient.h"

namespace velmo {

/// A border as exported: colour or gradient, where it sits, its width and dash pattern.
class VDModelBorder : public VDModel {
    VD_MODEL_CLASS(VDModelBorder)

    /// Borders have no identifier: nothing of the base class runs.
    void fillDefaultValues() override {}
    bool needsModelID() const override { return false; }

    const std::shared_ptr<VDModelColor>& color() const { return color_; }
    void setColor(std::shared_ptr<VDModelColor> v) { color_ = std::move(v); }
    const std::shared_ptr<VDModelGradient>& gradient() const { return gradient_; }
    void setGradient(std::shared_ptr<VDModelGradient> v) { gradient_ = std::move(v); }
    /// "inside", "center" or another word of the exporter.
    const std::optional<std::string>& position() const { return position_; }
    void setPosition(std::optional<std::string> v) { position_ = std::move(v); }
    float width() const { return width_; }
    void setWidth(float v) { width_ = v; }
    float dash() const { return dash_; }
    void setDash(float v) { dash_ = v; }
    float gap() const { return gap_; }
    void setGap(float v) { gap_ = v; }

private:
    std::shared_ptr<VDModelColor> color_;
    std::shared_ptr<VDModelGradient> gradient_;
    std::optional<std::string> position_;
    float width_ = 0;
    float dash_ = 0;
    float gap_ = 0;
};

} // namespace velmo
