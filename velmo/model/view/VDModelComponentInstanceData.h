#pragma once

#include <memory>
#include <string>
#include <vector>

#include "velmo/model/view/VDModelComponentMasterData.h"

namespace velmo {

class VDModelView;

/// The record a view carries when it uses a component: the master's props and the overrides this
/// instance sets. After an export from the design tool props and overrides know only their
/// target's identifier; `fillOverridesAndPropsAfterExport` works out their paths and names.
class VDModelComponentInstanceData : public VDModelComponentMasterData {
    VD_MODEL_CLASS(VDModelComponentInstanceData)

    /// `VDModelComponentOverride` values.
    const Array& overrides() const { return overrides_; }
    void setOverrides(Array v) { overrides_ = std::move(v); }
    /// The view that carries the record; set by the view's export repair, never encoded.
    std::shared_ptr<VDModelView> owner() const { return owner_.lock(); }
    void setOwner(const std::shared_ptr<VDModelView>& owner) { owner_ = owner; }

    void fixAfterSketchExport() { fillOverridesAndPropsAfterExport(); }
    /// Does nothing when the export was handled already: props with a path and overrides that
    /// are empty or have one.
    void fillOverridesAndPropsAfterExport();
    /// fillProprsAndOverridesPath: — paths and names of the props, then of the overrides in the
    /// list, from the owner's tree.
    void fillProprsAndOverridesPath(const Array& list);
    /// uniquePropNameWithSuggested:taken: — the legal form of the suggestion ("prop" when empty),
    /// numbered from 1 while its lower-case form is among `taken`, whose entries keep their case.
    static std::string uniquePropNameWithSuggested(const std::optional<std::string>& suggestion,
                                                   const std::vector<std::string>& taken);
    /// subviewPathByIds:iterator:pathComponents:res: — the paths below the owner of the views
    /// whose `importedID` or `modelID` is in `ids`, depth first, stopping when all are found.
    static void subviewPathByIds(const std::vector<std::string>& ids, const VDModelView& view,
                                 std::vector<std::string> components, Dictionary& res);

private:
    Array overrides_;
    std::weak_ptr<VDModelView> owner_;
};

} // namespace velmo
