#pragma once

#include "velmo/model/core/VDModel.h"
#include "velmo/model/records/VDModelTextFields.h"

namespace velmo {

/// One styled run of a label's text. It sets no defaults of its own: a property it leaves nil or
/// 0 is the label's. It has no number of lines.
class VDModelSpan : public VDModelTextFields<VDModel> {
    VD_MODEL_CLASS(VDModelSpan)

    /// Set by the host and carried; nothing here reads it.
    bool isEqualToParent() const { return isEqualToParent_ != 0; }
    void setIsEqualToParent(bool v) { isEqualToParent_ = v ? 1 : 0; }

    bool hasUnderline() const { return hasUnderline_ != 0; }
    void setHasUnderline(bool v) { hasUnderline_ = v ? 1 : 0; }
    bool hasStrike() const { return hasStrike_ != 0; }
    void setHasStrike(bool v) { hasStrike_ = v ? 1 : 0; }

private:
    std::uint8_t isEqualToParent_ = 0;
    std::uint8_t hasUnderline_ = 0;
    std::uint8_t hasStrike_ = 0;
};

} // namespace velmo
