#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "FakeDesktopPortal.h"
#include "PrivateSessionBus.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/theme/VPDesktopAppearance.h"
#include "velmo/theme/VPUITheme.h"

namespace velmo {
namespace {

using namespace std::chrono_literals;
using Origin = VPDesktopAppearance::Origin;

// Sets or clears environment variables for one test and restores them after.
class ScopedEnvironment {
public:
    ~ScopedEnvironment() {
        for (auto it = saved_.rbegin(); it != saved_.rend(); ++it)
            apply(it->first, it->second);
    }
    void set(const std::string& name, std::optional<std::string> value) {
        const char* old = std::getenv(name.c_str());
        saved_.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
        apply(name, value);
    }

private:
    static void apply(const std::string& name, const std::optional<std::string>& value) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

std::unique_ptr<test::PrivateSessionBus> startBus() {
    return std::make_unique<test::PrivateSessionBus>(VELMO_DBUS_DAEMON);
}

TEST(VPDesktopAppearance, WithoutABusOrAPortalTheEnvironmentDecides) {
    const auto runtime = Files::makeTemporaryDirectory("velmo-runtime"); // a session folder without a bus
    const auto bus = startBus();
    struct Case {
        std::optional<std::string> appearance;
        bool dark;
        Origin origin;
    };
    const Case cases[] = {
        {"dark", true, Origin::Environment},    {"Light", false, Origin::Environment},
        {"bright", false, Origin::Environment}, {"purple", false, Origin::Default},
        {std::nullopt, false, Origin::Default},
    };
    for (const std::optional<std::string>& address :
         {std::optional<std::string>(), std::optional(bus->address())}) {
        for (const auto& c : cases) {
            SCOPED_TRACE((address ? "a bus without a portal, " : "no bus, ") +
                         c.appearance.value_or("(unset)"));
            ScopedEnvironment environment;
            environment.set("DBUS_SESSION_BUS_ADDRESS", address);
            environment.set("XDG_RUNTIME_DIR", runtime.string());
            environment.set("VELMO_APPEARANCE", c.appearance);
            const auto started = std::chrono::steady_clock::now();
            const auto appearance = VPDesktopAppearance::create();
            EXPECT_LT(std::chrono::steady_clock::now() - started, 1s) << "an absent portal answers at once";
            EXPECT_EQ(appearance->isDark(), c.dark);
            EXPECT_EQ(appearance->origin(), c.origin);
            EXPECT_FALSE(appearance->isWatchingPortal());
        }
    }
    std::filesystem::remove_all(runtime);
}

TEST(VPDesktopAppearance, ThePortalsColorSchemeWinsAndIsFollowedUntilItHasNoPreference) {
    const auto bus = startBus();
    test::FakeDesktopPortal portal(bus->address(), 2);
    ScopedEnvironment environment;
    environment.set("DBUS_SESSION_BUS_ADDRESS", bus->address());
    environment.set("VELMO_APPEARANCE", "dark");

    const auto appearance = VPDesktopAppearance::create();
    ASSERT_TRUE(appearance->isWatchingPortal());
    EXPECT_FALSE(appearance->isDark()) << "the portal prefers light over the environment's dark";
    EXPECT_EQ(appearance->origin(), Origin::Portal);

    const auto theme = VPUITheme::make(appearance);
    int notifications = 0;
    ScopedObserver observer(
        NotificationCenter::defaultCenter(),
        NotificationCenter::defaultCenter().addObserver(kVPUIThemeUpdatedNotification, nullptr,
                                                        [&](const Notification&) { ++notifications; }));

    // Other settings are not the appearance; the same scheme again changes nothing. Then no
    // preference leaves it to the environment: dark, one notification for the lot.
    portal.emitSetting("org.freedesktop.other", "color-scheme", 1);
    portal.setColorScheme(2);
    portal.setColorScheme(0);
    ASSERT_TRUE(runMainLoopUntil([&] { return appearance->origin() == Origin::Environment; }, 5s));
    runMainLoopUntil([] { return false; }, 100ms);
    EXPECT_EQ(theme->type(), VPUITheme::Dark);
    EXPECT_EQ(notifications, 1);

    portal.setColorScheme(2);
    ASSERT_TRUE(runMainLoopUntil([&] { return theme->type() == VPUITheme::Bright; }, 5s));
    EXPECT_EQ(notifications, 2);
}

} // namespace
} // namespace velmo
