#pragma once

#include <optional>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo {

/// Names an action of another view: the path to that view, relative to the view that holds the
/// reference, and the action's `name`.
class VDModelActionReference : public VDModel {
    VD_MODEL_CLASS(VDModelActionReference)

    /// Both names start empty.
    void fillDefaultValues() override;

    const std::optional<std::string>& viewModelPath() const { return viewModelPath_; }
    void setViewModelPath(std::optional<std::string> v) { viewModelPath_ = std::move(v); }
    const std::optional<std::string>& actionName() const { return actionName_; }
    void setActionName(std::optional<std::string> v) { actionName_ = std::move(v); }

private:
    std::optional<std::string> viewModelPath_;
    std::optional<std::string> actionName_;
};

} // namespace velmo
