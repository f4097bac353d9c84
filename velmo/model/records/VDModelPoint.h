#pragma once

#include <optional>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// A point of number objects.
class VDModelPoint : public VDModel {
    VD_MODEL_CLASS(VDModelPoint)

    /// initWithPoint: — plain creation, then both coordinates as number objects.
    static std::shared_ptr<VDModelPoint> createWithPoint(double x, double y);

    const VDNumber& x() const { return x_; }
    void setX(VDNumber v) { x_ = v; }
    const VDNumber& y() const { return y_; }
    void setY(VDNumber v) { y_ = v; }

private:
    VDNumber x_, y_;
};

} // namespace velmo
