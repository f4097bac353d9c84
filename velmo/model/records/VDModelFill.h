#pragma once

#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelGradient.h"

namespace velmo {

/// A fill: a colour or a gradient.
class VDModelFill : public VDModel {
    VD_MODEL_CLASS(VDModelFill)

    const std::shared_ptr<VDModelColor>& color() const { return color_; }
    void setColor(std::shared_ptr<VDModelColor> v) { color_ = std::move(v); }
    const std::shared_ptr<VDModelGradient>& gradient() const { return gradient_; }
    void setGradient(std::shared_ptr<VDModelGradient> v) { gradient_ = std::move(v); }

private:
    std::shared_ptr<VDModelColor> color_;
    std::shared_ptr<VDModelGradient> gradient_;
};

} // namespace velmo
