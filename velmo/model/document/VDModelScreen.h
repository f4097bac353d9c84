#pragma once

#include "velmo/model/view/VDModelView.h"

namespace velmo {

/// A view at the top of a page of the prototype: its navigation bar, its home-page mark, and the
/// breakpoints the editor switched on.
class VDModelScreen : public VDModelView {
    VD_MODEL_CLASS(VDModelScreen)

    /// A phone-sized screen named "Screen".
    void fillDefaultValues() override;

    const std::optional<std::string>& title() const { return title_; }
    /// Also names the screen "Screen: <title>" unless a person named it, or the title is empty.
    void setTitle(std::optional<std::string> v);
    bool isAppRoot() const { return isAppRoot_ != 0; }
    void setIsAppRoot(bool v) { isAppRoot_ = v ? 1 : 0; }
    bool isSelectedInEditor() const { return isSelectedInEditor_ != 0; }
    void setIsSelectedInEditor(bool v) { isSelectedInEditor_ = v ? 1 : 0; }
    std::int32_t statusBarType() const { return statusBarType_; }
    void setStatusBarType(std::int32_t v) { statusBarType_ = v; }
    /// 1: the navigation bar is always shown; 2: never; otherwise when the screen holds a push.
    std::int32_t navBehaviour() const { return navBehaviour_; }
    void setNavBehaviour(std::int32_t v) { navBehaviour_ = v; }
    std::int32_t selectedBreakpoint() const { return selectedBreakpoint_; }
    void setSelectedBreakpoint(std::int32_t v) { selectedBreakpoint_ = v; }
    const Array& enabledBreakpoints() const { return enabledBreakpoints_; }
    void setEnabledBreakpoints(Array v) { enabledBreakpoints_ = std::move(v); }
    const std::optional<std::string>& exportCacheKey() const { return exportCacheKey_; }
    void setExportCacheKey(std::optional<std::string> v) { exportCacheKey_ = std::move(v); }
    const Array& imageFilenames() const { return imageFilenames_; }
    void setImageFilenames(Array v) { imageFilenames_ = std::move(v); }

    bool requiresNavController() const;
    bool showsNavBar() const;
    /// checkForPushActionsRecursive: — a present-screen action with `presentationType` 1 (a push)
    /// on the view, its subviews or its prototypes.
    static bool checkForPushActionsRecursive(const VDModelView& view);
    /// The screens this one opens as overlays or with automatic animation, duplicates kept: the
    /// pages a preview needs at once.
    Array linkedScreensIds() const;
    /// linkedScreensIdsForView:accumulater:
    static void linkedScreensIdsForView(const VDModelView& view, Array& accumulater);
    /// The view's removal, then, when recursive, the breakpoint leaves `enabledBreakpoints` too.
    void removeBreakpoint(std::string_view key, bool recursive) override;
    /// Asks the document whether the name is free among its screens; a clash keeps the old name.
    void updateVarIdFromName() override;

private:
    std::optional<std::string> title_;
    std::uint8_t isAppRoot_ = 0;
    std::uint8_t isSelectedInEditor_ = 0;
    std::int32_t statusBarType_ = 0;
    std::int32_t navBehaviour_ = 2;
    std::int32_t selectedBreakpoint_ = 0;
    Array enabledBreakpoints_;
    std::optional<std::string> exportCacheKey_;
    Array imageFilenames_;
};

} // namespace velmo
