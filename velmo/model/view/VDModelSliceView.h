#pragma once

#include "velmo/model/view/VDModelImageView.h"

namespace velmo {

/// An image cut from the design as it is drawn. It adds no fields.
class VDModelSliceView : public VDModelImageView {
    VD_MODEL_CLASS(VDModelSliceView)

    /// Named "Slice", then given the empty asset name, which renames it "Image": a new slice is
    /// called "Image", and documents made so far expect that.
    void fillDefaultValues() override;
};

} // namespace velmo
