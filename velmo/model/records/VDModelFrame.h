#pragma once

#include <optional>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// A rectangle of number objects. Each side stays out of the JSON until set.
class VDModelFrame : public VDModel {
    VD_MODEL_CLASS(VDModelFrame)

    bool needsModelID() const override { return false; }

    const VDNumber& x() const { return x_; }
    void setX(VDNumber v) { x_ = v; }
    const VDNumber& y() const { return y_; }
    void setY(VDNumber v) { y_ = v; }
    const VDNumber& width() const { return width_; }
    void setWidth(VDNumber v) { width_ = v; }
    const VDNumber& height() const { return height_; }
    void setHeight(VDNumber v) { height_ = v; }

    /// Same object, or one of this class or a subclass whose four numbers are equal. A nil side
    /// never compares equal, so two frames with a nil side are unequal.
    bool isEqual(const Object& other) const override;
    /// The sum of the four numbers' hashes.
    std::size_t hash() const override;

private:
    VDNumber x_, y_, width_, height_;
};

} // namespace velmo
