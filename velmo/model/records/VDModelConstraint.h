#pragma once

#include <cstdint>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// One layout rule: a switch, a multiplier and a constant. The library doesn't solve layout; it
/// stores the rules, compares them and scales them.
class VDModelConstraint : public VDModel {
    VD_MODEL_CLASS(VDModelConstraint)

    bool needsModelID() const override { return false; }

    bool enabled() const { return enabled_ != 0; }
    void setEnabled(bool v) { enabled_ = v ? 1 : 0; }
    float multiplier() const { return multiplier_; }
    void setMultiplier(float v) { multiplier_ = v; }
    float constant() const { return constant_; }
    void setConstant(float v) { constant_ = v; }

    /// `multiplier` × 10000 + `constant` in single precision, truncated to an unsigned 64-bit
    /// integer. True to `isEqual` for enabled rules only: disabled rules are equal whatever their
    /// numbers, yet hash by them.
    std::size_t hash() const override;
    /// Same object; or one of this class or a subclass and both disabled, or with equal
    /// switches and exactly equal numbers.
    bool isEqual(const Object& other) const override;
    /// Both disabled; or both enabled with multipliers less than 0.05 apart and constants less
    /// than 10 apart.
    bool isSimilar(const VDModelConstraint& other) const;
    /// applyScaleFactor: — `constant` times the factor, worked in double precision.
    void applyScaleFactor(double factor);

private:
    std::uint8_t enabled_ = 0;
    float multiplier_ = 0;
    float constant_ = 0;
};

} // namespace velmo
