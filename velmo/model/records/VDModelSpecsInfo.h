#pragma once

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The exported design specification of a view: borders, shadows, fills and assets.
class VDModelSpecsInfo : public VDModel {
    VD_MODEL_CLASS(VDModelSpecsInfo)

    /// Nothing of the base class runs: the record has no identifier.
    void fillDefaultValues() override {}
    bool needsModelID() const override { return false; }

    const Array& borders() const { return borders_; }
    void setBorders(Array v) { borders_ = std::move(v); }
    const Array& shadows() const { return shadows_; }
    void setShadows(Array v) { shadows_ = std::move(v); }
    const Array& innerShadows() const { return innerShadows_; }
    void setInnerShadows(Array v) { innerShadows_ = std::move(v); }
    const Array& fills() const { return fills_; }
    void setFills(Array v) { fills_ = std::move(v); }
    const Dictionary& assets() const { return assets_; }
    void setAssets(Dictionary v) { assets_ = std::move(v); }

    /// All five hold no elements; nil counts as none.
    bool isEmpty() const;

private:
    Array borders_;
    Array shadows_;
    Array innerShadows_;
    Array fills_;
    Dictionary assets_;
};

} // namespace velmo
