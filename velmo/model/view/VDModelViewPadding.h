#pragma once

#include <cstdint>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The inner padding of a container view.
class VDModelViewPadding : public VDModel {
    VD_MODEL_CLASS(VDModelViewPadding)

    float top() const { return top_; }
    void setTop(float v) { top_ = v; }
    float right() const { return right_; }
    void setRight(float v) { right_ = v; }
    float bottom() const { return bottom_; }
    void setBottom(float v) { bottom_ = v; }
    float left() const { return left_; }
    void setLeft(float v) { left_ = v; }
    /// Outside `fieldNames`: neither encoded nor copied.
    std::int32_t userInputs() const { return userInputs_; }
    void setUserInputs(std::int32_t v) { userInputs_ = v; }

private:
    float top_ = 0;
    float right_ = 0;
    float bottom_ = 0;
    float left_ = 0;
    std::int32_t userInputs_ = 0;
};

} // namespace velmo
