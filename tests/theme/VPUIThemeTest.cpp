#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "velmo/foundation/NotificationCenter.h"
#include "velmo/theme/VPUITheme.h"

namespace velmo {
namespace {

// An appearance the test switches.
class SwitchedAppearance : public VPAppearanceSource {
public:
    bool isDark() const override { return dark_; }
    void watch(std::function<void()> onChange) override { onChange_ = std::move(onChange); }
    void set(bool dark) {
        dark_ = dark;
        if (onChange_) onChange_();
    }

private:
    bool dark_ = false;
    std::function<void()> onChange_;
};

using Color = std::optional<PlatformColor>;

Color rgb(int r, int g, int b, double a = 1) {
    return PlatformColor::rgb(r / 255.0, g / 255.0, b / 255.0, a);
}
Color white(int level) {
    return PlatformColor::gray(level / 255.0, 1);
}
const Color kClear = PlatformColor::clear();

// Counts the theme's notifications while alive.
class ThemeNotifications {
public:
    ThemeNotifications()
        : observer_(NotificationCenter::defaultCenter(),
                    NotificationCenter::defaultCenter().addObserver(kVPUIThemeUpdatedNotification, nullptr,
                                                                    [this](const Notification& n) {
                                                                        EXPECT_FALSE(n.object);
                                                                        ++count;
                                                                    })) {}
    int count = 0;

private:
    ScopedObserver observer_;
};

TEST(VPUITheme, VariantsLoadOverTheBaseInTheTablesOrder) {
    struct Case {
        const char* name;
        Color bright;
        Color dark;
    };
    const Case cases[] = {
        {"panelBorder", white(217), rgb(67, 67, 67)},
        // Copies take the value the other colour has at that moment of the load.
        {"panelSelectedTab", kClear, rgb(67, 67, 67)},
        {"panelTopBar", white(255), rgb(67, 67, 67)},
        {"panelSemiBoldContent", rgb(81, 81, 81), rgb(177, 177, 177)},
        {"panelUnselectedTab", rgb(246, 246, 246), rgb(47, 47, 47)},
        {"sketchBarsBorderColor", rgb(184, 184, 184), rgb(0, 0, 0)},
        {"textPropertyBackground", rgb(255, 255, 255), std::nullopt},
        {"hoverFillColor", rgb(69, 192, 255, 0.3), rgb(69, 192, 255, 0.3)},
        {"barsBorderColor", rgb(216, 217, 220, 0), rgb(216, 217, 220, 0)},
        {"defaultColor", white(242), rgb(47, 47, 47)},
    };
    const auto theme = VPUITheme::make(nullptr);
    EXPECT_EQ(theme->type(), VPUITheme::Bright);
    for (const auto& c : cases)
        EXPECT_EQ(theme->colorForName(c.name), c.bright) << c.name;
    theme->setType(VPUITheme::Dark);
    for (const auto& c : cases)
        EXPECT_EQ(theme->colorForName(c.name), c.dark) << c.name;

    // The bright load leaves alone what its column doesn't name; only a reload of the base puts it back.
    theme->setType(VPUITheme::Bright);
    EXPECT_EQ(theme->colorForName("previewSettingsColor"), rgb(59, 59, 59));
    EXPECT_EQ(theme->colorForName("textPropertyBackground"), rgb(255, 255, 255));
    theme->updateAccordingToApp();
    EXPECT_EQ(theme->colorForName("previewSettingsColor"), kClear);

    EXPECT_EQ(theme->colorForName(std::nullopt), white(242));
    EXPECT_EQ(theme->colorForName("notAColour"), white(242));
    const auto& names = VPUITheme::colorNames();
    EXPECT_EQ(std::set<std::string_view>(names.begin(), names.end()).size(), 48u);
    for (const auto name : names)
        EXPECT_TRUE(theme->colorForName(name)) << name << " is set in the bright variant";
}

TEST(VPUITheme, FollowsItsAppearanceInPlaceWithOneNotificationPerChange) {
    const auto appearance = std::make_shared<SwitchedAppearance>();
    const auto theme = VPUITheme::make(appearance);
    ThemeNotifications notifications;

    struct Step {
        bool dark;
        std::int32_t type;
        int notifications;
        Color previewSettings;
    };
    const Step steps[] = {
        {true, VPUITheme::Dark, 1, rgb(59, 59, 59)},
        {true, VPUITheme::Dark, 1, rgb(59, 59, 59)}, // the same variant: nothing to say
        {false, VPUITheme::Bright, 2, kClear},
        {false, VPUITheme::Bright, 2, kClear},
    };
    for (const auto& step : steps) {
        appearance->set(step.dark);
        EXPECT_EQ(theme->type(), step.type);
        EXPECT_EQ(notifications.count, step.notifications);
        EXPECT_EQ(theme->colorForName("previewSettingsColor"), step.previewSettings);
    }
    // Forcing the variant loads it and says nothing.
    theme->setType(VPUITheme::Dark);
    EXPECT_EQ(theme->colorForName("panelBorder"), rgb(67, 67, 67));
    EXPECT_EQ(notifications.count, 2);
}

} // namespace
} // namespace velmo
