#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "velmo/theme/VPAppearanceSource.h"

namespace velmo {

/// The desktop's appearance on Linux: the colour-scheme preference of the XDG desktop portal's
/// settings ("org.freedesktop.appearance", "color-scheme") on the session bus, followed through the
/// portal's change signal. Where the portal gives no answer (no session bus, no portal, no
/// preference), `VELMO_APPEARANCE` decides: "dark", or "light" and "bright"; anything else is
/// bright.
///
/// The bus is never started for this: without `DBUS_SESSION_BUS_ADDRESS` or the session's
/// "$XDG_RUNTIME_DIR/bus", there is none. Changes are watched on a thread of the source's own and
/// reported on the main queue.
class VPDesktopAppearance : public VPAppearanceSource {
public:
    /// What decided the appearance.
    enum class Origin { Portal, Environment, Default };

    /// Asks the portal, waiting at most `kPortalTimeoutMs` for an answer, and watches it when it
    /// answered.
    static std::shared_ptr<VPDesktopAppearance> create();
    ~VPDesktopAppearance() override;
    VPDesktopAppearance(const VPDesktopAppearance&) = delete;
    VPDesktopAppearance& operator=(const VPDesktopAppearance&) = delete;

    bool isDark() const override;
    void watch(std::function<void()> onChange) override;

    Origin origin() const;
    /// True while connected to a portal that answered.
    bool isWatchingPortal() const;

    /// The portal's "color-scheme": 1 prefers dark, 2 prefers light, 0 (or anything else) has no
    /// preference.
    static std::optional<bool> darkFromColorScheme(std::uint32_t colorScheme);
    /// `VELMO_APPEARANCE`: true for "dark", false for "light" or "bright" (in any case), nothing
    /// otherwise.
    static std::optional<bool> darkFromEnvironment();

    static constexpr int kPortalTimeoutMs = 2000;

private:
    struct Portal;
    struct State;
    VPDesktopAppearance();

    // In this order: the portal's thread is ended before the state it writes goes.
    std::shared_ptr<State> state_;
    std::unique_ptr<Portal> portal_;
};

} // namespace velmo
