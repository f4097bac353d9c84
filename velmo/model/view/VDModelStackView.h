#pragma once

#include <cstdint>

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A container that lays its subviews out in a row or a column. The kind and the alignment are
/// numbers that the code generator reads as they stand.
class VDModelStackView : public VDModelView {
    VD_MODEL_CLASS(VDModelStackView)

    void fillDefaultValues() override;

    /// Another name of `stackType`: both reach one value, and both keys are written. On reading,
    /// "stackType" comes later in the list and wins.
    std::int32_t type() const { return stackType_; }
    void setType(std::int32_t v) { stackType_ = v; }
    std::int32_t stackType() const { return stackType_; }
    void setStackType(std::int32_t v) { stackType_ = v; }
    std::int32_t align() const { return align_; }
    void setAlign(std::int32_t v) { align_ = v; }
    float spacing() const { return spacing_; }
    void setSpacing(float v) { spacing_ = v; }
    bool resizesContainer() const { return resizesContainer_ != 0; }
    void setResizesContainer(bool v) { resizesContainer_ = v ? 1 : 0; }

private:
    std::int32_t stackType_ = 0;
    std::int32_t align_ = 0;
    float spacing_ = 0;
    std::uint8_t resizesContainer_ = 0;
};

} // namespace velmo
