#pragma once

#include <cstdint>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// An on/off switch; its size is the control's own.
class VDModelSwitchView : public VDModelView {
    VD_MODEL_CLASS(VDModelSwitchView)

    /// On by default.
    void fillDefaultValues() override;

    bool defaultValue() const { return defaultValue_ != 0; }
    void setDefaultValue(bool v) { defaultValue_ = v ? 1 : 0; }

    bool resizableWidth() const override { return false; }
    bool resizableHeight() const override { return false; }

private:
    std::uint8_t defaultValue_ = 0;
};

} // namespace velmo
