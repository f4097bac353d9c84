#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "velmo/config/VDCodePrefConfigItemObject.h"
#include "velmo/config/VPCodePrefRowViewModel.h"
#include "velmo/runtime/VPObservableObject.h"

namespace velmo {

/// Width of the code preferences pop-up.
inline constexpr double kVPCodePreferencesViewWidth = 377;

/// The code preferences pop-up: its rows, with a separator before each section title but the
/// first two items, and the set of items held as on. Made once per preview window; the rows keep
/// their state over openings of the pop-up. For the main thread.
///
/// Every checkbox's item starts in the set, one that is off included (the set is filled by the
/// presence of a state, not its truth), so the first change of any checkbox reports all other
/// checkboxes as on, except those turned off since. Whoever keeps the user's choice subscribes to
/// `enabledCodePrefsItems` and stores `enabledCodePrefValues`.
class VPCodePrefTableViewModel : public VPObservableObject {
public:
    /// initWithModel: — the configuration's `codePrefItems`.
    static std::shared_ptr<VPCodePrefTableViewModel>
    make(const std::vector<std::shared_ptr<VDCodePrefConfigItemObject>>& codePrefItems);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// The rows, separators included.
    const std::vector<std::shared_ptr<VPCodePrefRowViewModel>>& rows() const { return rows_; }
    std::size_t numOfRows() const { return rows_.size(); }
    /// The row, or nullptr past the end.
    /// rowAtIndex:
    std::shared_ptr<VPCodePrefRowViewModel> rowAtIndex(std::size_t index) const;

    /// The items held as on, in the order they were added.
    const std::vector<std::shared_ptr<VDCodePrefConfigItemObject>>& enabledCodePrefsSet() const {
        return enabledCodePrefsSet_;
    }
    /// Observable: an array of the items of the set after the last change; nil until then.
    Value enabledCodePrefsItems() const { return enabledCodePrefsItems_; }
    void setEnabledCodePrefsItems(Value items);
    /// The values of `enabledCodePrefsItems`, for the user's stored `enabledCodePrefValues`: items
    /// without a value are left out.
    Array enabledCodePrefValues() const;

    /// Space between rows: 8.
    double cellSpacing() const { return 8; }
    /// The rows' heights, the spacing after each row and 40 more, at most 260: rows past that
    /// scroll.
    double tableHeight() const;
    /// The pop-up's height: the table's and 40 for its margins.
    double viewHeight() const { return tableHeight() + 40; }

    /// Opening the pop-up counts as having seen the configuration's notification: stores its id
    /// as the last one seen, which turns the badge off.
    void markNotificationSeen() const;

    VPCodePrefTableViewModel(const VPCodePrefTableViewModel&) = delete;
    VPCodePrefTableViewModel& operator=(const VPCodePrefTableViewModel&) = delete;

private:
    VPCodePrefTableViewModel() = default;

    /// rowsFromModel:
    static std::vector<std::shared_ptr<VPCodePrefRowViewModel>>
    rowsFromModel(const std::vector<std::shared_ptr<VDCodePrefConfigItemObject>>& items);
    /// subsribeOnCodePrefChanges
    void subsribeOnCodePrefChanges();
    void rowDidChange(const VPCodePrefRowViewModel& row);

    std::vector<std::shared_ptr<VPCodePrefRowViewModel>> rows_;
    std::vector<std::shared_ptr<VDCodePrefConfigItemObject>> enabledCodePrefsSet_;
    Value enabledCodePrefsItems_;
};

} // namespace velmo
