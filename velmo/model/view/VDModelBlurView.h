#pragma once

#include <cstdint>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A box that blurs what lies behind it, in a light or a dark tone.
class VDModelBlurView : public VDModelView {
    VD_MODEL_CLASS(VDModelBlurView)

    void fillDefaultValues() override;

    bool isDark() const { return isDark_ != 0; }
    void setIsDark(bool v) { isDark_ = v ? 1 : 0; }

private:
    std::uint8_t isDark_ = 0;
};

} // namespace velmo
