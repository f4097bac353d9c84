#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// What a user of a component may change: a named property of a view below the master.
class VDModelProp : public VDModel {
    VD_MODEL_CLASS(VDModelProp)

    bool needsModelID() const override { return false; }

    /// Name in generated code.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }
    const std::optional<std::string>& type() const { return type_; }
    void setType(std::optional<std::string> v) { type_ = std::move(v); }
    const std::optional<std::string>& defaultValue() const { return defaultValue_; }
    void setDefaultValue(std::optional<std::string> v) { defaultValue_ = std::move(v); }
    /// Variable names below the owner joined by ";", without a leading "this".
    const std::optional<std::string>& path() const { return path_; }
    void setPath(std::optional<std::string> v) { path_ = std::move(v); }
    /// The target's `importedID` or `modelID`.
    const std::optional<std::string>& targetId() const { return targetId_; }
    void setTargetId(std::optional<std::string> v) { targetId_ = std::move(v); }

    /// +locatePropByTargetId:props: — the first prop with the target.
    static std::shared_ptr<VDModelProp> locatePropByTargetId(std::string_view targetId, const Array& props);

private:
    std::optional<std::string> name_, type_, defaultValue_, path_, targetId_;
};

} // namespace velmo
