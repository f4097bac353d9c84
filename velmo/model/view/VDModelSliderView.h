#pragma once

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A slider control. It adds no fields; its height is the control's own.
class VDModelSliderView : public VDModelView {
    VD_MODEL_CLASS(VDModelSliderView)

    void fillDefaultValues() override;

    bool resizableHeight() const override { return false; }
};

} // namespace velmo
