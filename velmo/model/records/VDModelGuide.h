#pragma once

#include <cstdint>

#include "velmo/model/records/VDModelConstraint.h"

namespace velmo {

/// A layout guide held in memory only: it adds nothing to `fieldNames`, so none of its fields
/// reach the JSON and a copy loses them.
class VDModelGuide : public VDModel {
    VD_MODEL_CLASS(VDModelGuide)

    std::int32_t type() const { return type_; }
    void setType(std::int32_t v) { type_ = v; }
    const std::shared_ptr<VDModelConstraint>& top() const { return top_; }
    void setTop(std::shared_ptr<VDModelConstraint> v) { top_ = std::move(v); }
    const std::shared_ptr<VDModelConstraint>& bottom() const { return bottom_; }
    void setBottom(std::shared_ptr<VDModelConstraint> v) { bottom_ = std::move(v); }
    const std::shared_ptr<VDModelConstraint>& centerVertically() const { return centerVertically_; }
    void setCenterVertically(std::shared_ptr<VDModelConstraint> v) { centerVertically_ = std::move(v); }
    const std::shared_ptr<VDModelConstraint>& left() const { return left_; }
    void setLeft(std::shared_ptr<VDModelConstraint> v) { left_ = std::move(v); }
    const std::shared_ptr<VDModelConstraint>& right() const { return right_; }
    void setRight(std::shared_ptr<VDModelConstraint> v) { right_ = std::move(v); }
    const std::shared_ptr<VDModelConstraint>& centerHorizontally() const { return centerHorizontally_; }
    void setCenterHorizontally(std::shared_ptr<VDModelConstraint> v) { centerHorizontally_ = std::move(v); }

private:
    std::int32_t type_ = 0;
    std::shared_ptr<VDModelConstraint> top_, bottom_, centerVertically_, left_, right_, centerHorizontally_;
};

} // namespace velmo
