#pragma once

#include "velmo/model/interaction/VDModelAction.h"

namespace velmo {

/// Selects a tab of a tab bar.
class VDModelActionSelectTab : public VDModelAction {
    VD_MODEL_CLASS(VDModelActionSelectTab)

    static std::string_view prettyName() { return "Select Tab"; }
    std::string_view prettyNameOfClass() const override { return prettyName(); }

    std::int32_t tabIndex() const { return tabIndex_; }
    void setTabIndex(std::int32_t v) { tabIndex_ = v; }

    /// "Tap: Select Tab 2".
    std::optional<std::string> layerTitle() const override;

private:
    std::int32_t tabIndex_ = 0;
};

} // namespace velmo
