#pragma once

#include <memory>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A box filled with a gradient between two colours: by default from clear black to black at
/// half opacity.
class VDModelGradientView : public VDModelView {
    VD_MODEL_CLASS(VDModelGradientView)

    void fillDefaultValues() override;

    const std::shared_ptr<VDModelColor>& color1() const { return color1_; }
    void setColor1(std::shared_ptr<VDModelColor> v) { color1_ = std::move(v); }
    const std::shared_ptr<VDModelColor>& color2() const { return color2_; }
    void setColor2(std::shared_ptr<VDModelColor> v) { color2_ = std::move(v); }

private:
    std::shared_ptr<VDModelColor> color1_;
    std::shared_ptr<VDModelColor> color2_;
};

} // namespace velmo
