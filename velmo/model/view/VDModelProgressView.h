#pragma once

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A progress bar. It adds no fields; its height is the bar's own.
class VDModelProgressView : public VDModelView {
    VD_MODEL_CLASS(VDModelProgressView)

    void fillDefaultValues() override;

    bool resizableHeight() const override { return false; }
};

} // namespace velmo
