#pragma once

#include <optional>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// The record of a component's master: which symbol of the design tool it is, and the props its
/// users may change.
///
/// "overrides" stands in this class's field list although only the instance record has the
/// field: decoding drops it here like any value that can't be set, and encoding a plain master
/// record fails on it with `std::invalid_argument`, as reading an unknown key does. Documents
/// have always been written with the name there, so it stays.
class VDModelComponentMasterData : public VDModel {
    VD_MODEL_CLASS(VDModelComponentMasterData)

    const std::optional<std::string>& masterSymbolID() const { return masterSymbolID_; }
    void setMasterSymbolID(std::optional<std::string> v) { masterSymbolID_ = std::move(v); }
    const std::optional<std::string>& masterName() const { return masterName_; }
    void setMasterName(std::optional<std::string> v) { masterName_ = std::move(v); }
    /// `VDModelProp` values.
    const Array& props() const { return props_; }
    void setProps(Array v) { props_ = std::move(v); }

private:
    std::optional<std::string> masterSymbolID_, masterName_;
    Array props_;
};

} // namespace velmo
