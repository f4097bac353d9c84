#pragma once

#include <cstdint>

#include "velmo/model/records/VDModelPoint.h"

namespace velmo {

/// A gradient as the design tool exported it; the library carries `gradientType` and
/// `elipseLength` unchanged.
class VDModelGradient : public VDModel {
    VD_MODEL_CLASS(VDModelGradient)

    /// `VDModelGradientStop` values in document order.
    const Array& stops() const { return stops_; }
    void setStops(Array v) { stops_ = std::move(v); }
    const std::shared_ptr<VDModelPoint>& to() const { return to_; }
    void setTo(std::shared_ptr<VDModelPoint> v) { to_ = std::move(v); }
    const std::shared_ptr<VDModelPoint>& from() const { return from_; }
    void setFrom(std::shared_ptr<VDModelPoint> v) { from_ = std::move(v); }
    std::int64_t gradientType() const { return gradientType_; }
    void setGradientType(std::int64_t v) { gradientType_ = v; }
    /// Spelled so.
    double elipseLength() const { return elipseLength_; }
    void setElipseLength(double v) { elipseLength_ = v; }

private:
    Array stops_;
    std::shared_ptr<VDModelPoint> to_;
    std::shared_ptr<VDModelPoint> from_;
    std::int64_t gradientType_ = 0;
    double elipseLength_ = 0;
};

} // namespace velmo
