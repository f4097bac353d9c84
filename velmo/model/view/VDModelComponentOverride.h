#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// A value an instance of a component sets for one of the master's props. An array value is a
/// list of nested overrides, for a component inside a component.
class VDModelComponentOverride : public VDModel {
    VD_MODEL_CLASS(VDModelComponentOverride)

    bool needsModelID() const override { return false; }

    const std::optional<std::string>& targetId() const { return targetId_; }
    void setTargetId(std::optional<std::string> v) { targetId_ = std::move(v); }
    /// Name of the prop that is set.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }
    const std::optional<std::string>& path() const { return path_; }
    void setPath(std::optional<std::string> v) { path_ = std::move(v); }
    const Value& value() const { return value_; }
    void setValue(Value v) { value_ = std::move(v); }

    /// +locateOverrideByTargetId:overrides: — the override of the target, also inside nested
    /// lists, where a match counts only with a value.
    static std::shared_ptr<VDModelComponentOverride> locateOverrideByTargetId(std::string_view targetId,
                                                                              const Array& overrides);

private:
    std::optional<std::string> targetId_, name_, path_;
    Value value_;
};

} // namespace velmo
