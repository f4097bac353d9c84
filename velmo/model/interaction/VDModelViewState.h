#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/model/core/VDModel.h"

namespace velmo {

class VDModelView;

/// Posted by `addState` with the view as object and no user info.
inline constexpr const char* kTimelineStateAdded = "kTimelineStateAdded";

/// A named look of a view's subtree, kept as a change set rather than a second tree: for each
/// descendant that differs, the fields that differ and their values in the state. Keys are paths
/// relative to the view that owns the state ("this;header;title"); the owner's own fields are
/// never part of it. Transitions are computed from two change sets.
class VDModelViewState : public VDModel {
    VD_MODEL_CLASS(VDModelViewState)

    /// A state has no identifier.
    bool needsModelID() const override { return false; }
    /// Decodes, then turns an old document's "." delimiters into ";".
    void initWithDictionary(const Dictionary& dictionary) override;

    /// Unique among the owner's states by construction; compared case-sensitively.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> v) { name_ = std::move(v); }
    /// Relative path to a dictionary of field names and their values in the state.
    const Dictionary& overrides() const { return overrides_; }
    void setOverrides(Dictionary v) { overrides_ = std::move(v); }

    /// updateWithOriginalModel:withState: — replaces `overrides` with the complete change set
    /// between the view as it is in the document and the same view as it looks in the state.
    void updateWithOriginalModel(VDModelView& original, VDModelView& stateView);
    /// updateWithOriginalModel:withState:changedModel: — updates `overrides` for one changed view
    /// inside `stateView`. Entries of other views stay; the changed view's subtree is examined
    /// again only when its recorded size changed.
    void updateWithOriginalModel(VDModelView& original, VDModelView& stateView, VDModelView& changed);
    /// recordChangesetOfModel:withState:path:res:isIncremental: — the recursive step of both
    /// updates; `res` is changed in place.
    static void recordChangesetOfModel(VDModelView& model, VDModelView& state, const std::string& path,
                                       Dictionary& res, bool incremental);
    /// reversedOverridesWithModel: — the way back from the state to the view as it is now: for
    /// each path that finds a view, the view's values of the fields the state changes.
    Dictionary reversedOverridesWithModel(VDModelView& view) const;
    /// refactorPath:to: — keys equal to `oldPath` or below it move to `newPath`.
    void refactorPath(std::string_view oldPath, std::string_view newPath);
    /// Old documents joined override keys with "."; only the first key decides, as it always has.
    void fixLegacyDelimiter();
    /// The keys were turned over by `fixLegacyDelimiter` since the state was made; never encoded.
    bool fixedLegacyDelimiter() const { return fixedLegacyDelimiter_; }

    /// "[%p] <%@> %@": address, class name, `name`.
    std::string description() const override;

private:
    std::optional<std::string> name_;
    Dictionary overrides_;
    bool fixedLegacyDelimiter_ = false;
};

} // namespace velmo
