#pragma once

#include "velmo/model/interaction/VDModelAction.h"

namespace velmo {

/// Starts other actions, named by `VDModelActionReference`s.
class VDModelActionCallAction : public VDModelAction {
    VD_MODEL_CLASS(VDModelActionCallAction)

    void fillDefaultValues() override;
    static std::string_view prettyName() { return "Play Animation"; }
    std::string_view prettyNameOfClass() const override { return prettyName(); }

    /// `VDModelActionReference` values; an empty list at first.
    const Array& actionRefs() const { return actionRefs_; }
    void setActionRefs(Array v) { actionRefs_ = std::move(v); }

    /// "Tap: open, close"; "Tap: -" without references.
    std::optional<std::string> layerTitle() const override;
    /// Each reference's `viewModelPath` follows a moved view.
    bool updateRelativePathsWithBlock(const PathBlock& block) override;

private:
    Array actionRefs_;
};

} // namespace velmo
