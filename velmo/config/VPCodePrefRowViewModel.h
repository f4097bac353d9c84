#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "velmo/config/VDCodePrefConfigItemObject.h"
#include "velmo/runtime/VPObservableObject.h"

namespace velmo {

// Cell identifiers of the code preferences table, by kind of row.
inline constexpr const char* kVPCodePrefSeparatorCellID = "CodePrefSeparatorCellID";
inline constexpr const char* kVPCodePrefTitleCellID = "CodePrefTitleCellID";
inline constexpr const char* kVPCodePrefCheckBoxCellID = "CodePrefCheckBoxCellID";
inline constexpr const char* kVPCodePrefNotifCellID = "CodePrefNotifCellID";

/// One row of the code preferences pop-up: a separator, a section title, a checkbox or a
/// notification with its badge and link. The kinds that aren't shown (switch, drop-down, link)
/// get height 0. A checkbox starts on when the user's stored values hold its value, else as its
/// default reads.
class VPCodePrefRowViewModel : public VPObservableObject {
public:
    /// initWithModel: — nullptr makes a separator.
    explicit VPCodePrefRowViewModel(std::shared_ptr<VDCodePrefConfigItemObject> model);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// The row's height in the table, by kind: separator 1, title 30, checkbox 30, notification
    /// 40; 0 for the kinds that aren't shown and for unknown numbers.
    static double rowHeightForType(std::uint32_t type);
    /// The cell the row is shown in, by kind.
    static const char* cellIdentifierForType(std::uint32_t type);

    /// The item; nullptr for a separator.
    const std::shared_ptr<VDCodePrefConfigItemObject>& model() const { return model_; }
    std::uint32_t type() const { return type_; }
    /// The item's text.
    const std::optional<std::string>& title() const { return title_; }
    /// Notifications only.
    const std::optional<std::string>& badgeTitle() const { return badgeTitle_; }
    /// Notifications only.
    const std::optional<std::string>& linkTitle() const { return linkTitle_; }
    /// Never set; kept for the views that read it.
    const std::optional<std::string>& value() const { return value_; }
    double rowHeight() const { return rowHeightForType(type_); }
    const char* cellIdentifier() const { return cellIdentifierForType(type_); }

    /// Observable: a number holding a boolean for checkboxes, nil for other kinds.
    Value enabled() const { return enabled_; }
    /// The checkbox's state, as a number; subscribers hear of every set.
    void setEnabled(Value enabled);
    /// Whether `enabled` reads true.
    bool isOn() const { return enabled_.boolValue(); }

private:
    std::shared_ptr<VDCodePrefConfigItemObject> model_;
    std::uint32_t type_ = 0;
    std::optional<std::string> title_;
    std::optional<std::string> badgeTitle_;
    std::optional<std::string> linkTitle_;
    std::optional<std::string> value_;
    Value enabled_;
};

} // namespace velmo
