#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/config/VDCodePrefConfigDropdownItem.h"
#include "velmo/model/core/VDBaseObject.h"

namespace velmo {

/// The kinds of code preference items. The numbers are stored; they don't follow the strings'
/// order ("dropdown" is 4, "checkbox" 3).
enum class VDCodePrefConfigItemType : std::uint32_t {
    Separator = 0,
    Title = 1,
    /// Accepted and kept, not shown.
    Switch = 2,
    Checkbox = 3,
    /// Accepted and kept, not shown.
    Dropdown = 4,
    /// Accepted and kept, not shown.
    Link = 5,
    Notification = 6,
};

/// One element of the configuration's "available_code_optimizations": a row of the code
/// preferences pop-up. Every field is optional in JSON; a missing one, or one of another kind than
/// text, reads as absent.
class VDCodePrefConfigItemObject : public VDBaseObject {
public:
    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// Writes the fields that are present; "type" always, as its string.
    Dictionary jsonMap() const override;
    void initWithSerializableObject(const Value& object) override;
    /// Every field, `values` deep.
    std::shared_ptr<VDBaseObject> copy() const override;

    /// typeFromString: — "title", "switch", "checkbox", "dropdown", "link", "notification"; any
    /// other string, the empty one included, is a separator.
    static std::uint32_t typeFromString(std::string_view string);
    /// stringFromType: — "" for 0 and for numbers past the known kinds.
    static std::string stringFromType(std::uint32_t type);

    /// True when a checkbox reads its `defaultValue` as on: text starting with Y, y, T, t or a
    /// digit 1 to 9, after blanks and leading zeros ("true", "1", "yes").
    bool defaultValueIsOn() const;

    /// "type", a `VDCodePrefConfigItemType` number; unknown kinds read as 0.
    std::uint32_t type = 0;
    /// "text": the label.
    std::optional<std::string> text;
    /// "value": what is sent to the service when the item is on.
    std::optional<std::string> value;
    /// "values": the choices of a drop-down.
    std::vector<std::shared_ptr<VDCodePrefConfigDropdownItem>> values;
    /// "default": the default state.
    std::optional<std::string> defaultValue;
    /// "badge_title": the badge of a notification.
    std::optional<std::string> badgeTitle;
    /// "link_title": the link text of a notification.
    std::optional<std::string> linkTitle;
    /// "link_url": the address the link opens.
    std::optional<std::string> linkURL;
    /// "notif_id": identifies a notification, for the badge.
    std::optional<std::string> notifID;
};

} // namespace velmo
