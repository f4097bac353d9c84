#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/PlatformColor.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/theme/VPAppearanceSource.h"

namespace velmo {

/// Posted, with no object, when the theme has switched between bright and dark.
inline constexpr const char* kVPUIThemeUpdatedNotification = "com.velmoapp.VPUIThemeUpdatedNotification";

/// The interface's colours by name, in a bright and a dark variant. The theme follows its
/// appearance source: a change of the appearance changes the colours in place and, when the
/// variant changed, posts "com.velmoapp.VPUIThemeUpdatedNotification". For the main thread.
///
/// Each load sets the colours in the order of the table, which matters where a colour takes the
/// value another has at that moment (the dark `panelTopBar` takes `panelSelectedTab`, which has
/// taken `panelBorder`). A load leaves alone what its column doesn't name, so `loadDefalut` runs
/// before each variant's load to put those colours back to their base values.
class VPUITheme : public Object {
public:
    /// The number of named colours.
    static constexpr std::size_t kColorCount = 48;
    enum Type : std::int32_t { Bright = 0, Dark = 1 };

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// The one theme, made at first use, following the desktop's appearance.
    static std::shared_ptr<VPUITheme> sharedInstance();
    /// A theme that follows `source`; without one, it stays bright until `setType`.
    static std::shared_ptr<VPUITheme> make(std::shared_ptr<VPAppearanceSource> source);

    /// The colour names, in the order of the loads.
    static const std::array<std::string_view, kColorCount>& colorNames();

    /// The colour of that name: `defaultColor` for no name, and also, with a line in the error
    /// log, for a name that isn't one of the colours. nullopt where the variant has no colour
    /// (the dark `textPropertyBackground`).
    /// colorForName:
    std::optional<PlatformColor> colorForName(std::optional<std::string_view> name) const;

    /// 0 bright, 1 dark.
    std::int32_t type() const { return type_; }
    /// Stores the variant and loads it: the dark colours for any value but 0. Posts nothing.
    void setType(std::int32_t type);
    /// Reads the appearance, loads the base colours, then the variant's.
    void updateAccordingToApp();

    void loadDefalut();
    void loadBrightTheme();
    void loadDarkTheme();

    VPUITheme(const VPUITheme&) = delete;
    VPUITheme& operator=(const VPUITheme&) = delete;

private:
    VPUITheme() = default;
    /// When the watched appearance changes: reloads, and posts when the variant changed.
    void appearanceDidChange();
    /// Applies one column of the table.
    void load(int column);

    std::shared_ptr<VPAppearanceSource> source_;
    std::int32_t type_ = Bright;
    std::array<std::optional<PlatformColor>, kColorCount> colors_{};
};

} // namespace velmo
