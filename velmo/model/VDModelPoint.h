#pragma once

#include <optional>

#include "velmo/model/VDModel.h"

namespace velmo {

/// A point of number objects.
class VDModelPoint : public VDModel {
    VD_MODEL_CLASS(VDModelPoint)

    /// initWithPoint: — plain creation, then both coordinates as number objects.
    static std::shared_ptr<VDModelPoint> createWithPoint(double x, double y);

    const std::optional<double>& x() const { return x_; }
    void setX(std::optional<double> v) { x_ = v; }
    const std::optional<double>& y() const { return y_; }
    void setY(std::optional<double> v) { y_ = v; }

private:
    std::optional<double> x_, y_;
};

} // namespace velmo
