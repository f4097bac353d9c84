#pragma once

#include "velmo/model/records/VDModelColor.h"

namespace velmo {

/// A colour at a position of a gradient.
class VDModelGradientStop : public VDModel {
    VD_MODEL_CLASS(VDModelGradientStop)

    const std::shared_ptr<VDModelColor>& color() const { return color_; }
    void setColor(std::shared_ptr<VDModelColor> v) { color_ = std::move(v); }
    double position() const { return position_; }
    void setPosition(double v) { position_ = v; }

private:
    std::shared_ptr<VDModelColor> color_;
    double position_ = 0;
};

} // namespace velmo
