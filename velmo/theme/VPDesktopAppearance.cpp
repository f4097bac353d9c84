#include "velmo/theme/VPDesktopAppearance.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <strings.h>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <gio/gio.h>

#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/SystemLog.h"

namespace velmo {

namespace {

constexpr const char* kPortalBusName = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalObjectPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSettingsInterface = "org.freedesktop.portal.Settings";
constexpr const char* kAppearanceNamespace = "org.freedesktop.appearance";
constexpr const char* kColorSchemeKey = "color-scheme";
constexpr std::int64_t kNoAnswer = -1;

struct ObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct VariantUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using ConnectionPtr = std::unique_ptr<GDBusConnection, ObjectUnref>;
using VariantPtr = std::unique_ptr<GVariant, VariantUnref>;

// The colour scheme in a setting's value. Portals before version 2 wrap the value in a second
// variant, so every layer of variant is taken off.
std::int64_t colorSchemeOf(GVariant* value) {
    VariantPtr current(g_variant_ref(value));
    while (g_variant_is_of_type(current.get(), G_VARIANT_TYPE_VARIANT))
        current.reset(g_variant_get_variant(current.get()));
    if (!g_variant_is_of_type(current.get(), G_VARIANT_TYPE_UINT32)) return kNoAnswer;
    return g_variant_get_uint32(current.get());
}

// Only a bus that runs is used: resolving the address of none would have GIO start one.
bool sessionBusExists() {
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address) return true;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    std::error_code ec;
    return runtime && *runtime && std::filesystem::is_socket(std::filesystem::path(runtime) / "bus", ec);
}

} // namespace

// What the watching thread and the main queue share with the source.
struct VPDesktopAppearance::State : std::enable_shared_from_this<State> {
    std::atomic<std::int64_t> colorScheme{kNoAnswer};
    std::optional<bool> environment;
    std::mutex mutex;
    std::function<void()> onChange;
};

// The connection to the portal and the thread that hears its signal.
struct VPDesktopAppearance::Portal {
    ConnectionPtr connection;
    GMainContext* context = nullptr;
    GMainLoop* loop = nullptr;
    guint subscription = 0;
    std::thread thread;

    ~Portal() {
        if (subscription) g_dbus_connection_signal_unsubscribe(connection.get(), subscription);
        if (thread.joinable()) {
            // Quit from inside the loop: a quit that came before the loop ran would be forgotten.
            GSource* quit = g_idle_source_new();
            g_source_set_callback(
                quit,
                [](gpointer loop) {
                    g_main_loop_quit(static_cast<GMainLoop*>(loop));
                    return G_SOURCE_REMOVE;
                },
                loop, nullptr);
            g_source_attach(quit, context);
            g_source_unref(quit);
            thread.join();
        }
        if (connection.get()) g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
        if (loop) g_main_loop_unref(loop);
        if (context) g_main_context_unref(context);
    }

    static void settingChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                               GVariant* parameters, gpointer data) {
        const gchar* nameSpace = nullptr;
        const gchar* key = nullptr;
        GVariant* value = nullptr;
        if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)"))) return;
        g_variant_get(parameters, "(&s&sv)", &nameSpace, &key, &value);
        VariantPtr held(value);
        if (std::string_view(nameSpace) != kAppearanceNamespace || std::string_view(key) != kColorSchemeKey)
            return;
        // The state outlives the subscription: the source ends the thread that calls this first.
        auto* state = static_cast<State*>(data);
        state->colorScheme = colorSchemeOf(value);
        DispatchQueue::main().async([weak = state->weak_from_this()] {
            const auto state = weak.lock();
            if (!state) return;
            std::function<void()> onChange;
            {
                std::lock_guard lock(state->mutex);
                onChange = state->onChange;
            }
            if (onChange) onChange();
        });
    }
};

VPDesktopAppearance::VPDesktopAppearance() : state_(std::make_shared<State>()) {
    state_->environment = darkFromEnvironment();
}

VPDesktopAppearance::~VPDesktopAppearance() = default;

std::shared_ptr<VPDesktopAppearance> VPDesktopAppearance::create() {
    std::shared_ptr<VPDesktopAppearance> made(new VPDesktopAppearance());
    if (!sessionBusExists()) return made;

    auto portal = std::make_unique<Portal>();
    GError* error = nullptr;
    gchar* address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (address) {
        portal->connection = ConnectionPtr(g_dbus_connection_new_for_address_sync(
            address,
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error));
        g_free(address);
    }
    if (!portal->connection.get()) {
        SystemLog::log(fmt::format("No session bus for the desktop's appearance: {}",
                                   error ? error->message : "no address"));
        if (error) g_error_free(error);
        return made;
    }

    // Subscribed before the first read, so that no change falls between the two. The signal is
    // delivered to the context that is the thread's default while subscribing: the watcher's.
    portal->context = g_main_context_new();
    portal->loop = g_main_loop_new(portal->context, FALSE);
    g_main_context_push_thread_default(portal->context);
    portal->subscription = g_dbus_connection_signal_subscribe(
        portal->connection.get(), kPortalBusName, kSettingsInterface, "SettingChanged", kPortalObjectPath,
        kAppearanceNamespace, G_DBUS_SIGNAL_FLAGS_NONE, &Portal::settingChanged, made->state_.get(), nullptr);
    g_main_context_pop_thread_default(portal->context);

    VariantPtr reply(g_dbus_connection_call_sync(
        portal->connection.get(), kPortalBusName, kPortalObjectPath, kSettingsInterface, "Read",
        g_variant_new("(ss)", kAppearanceNamespace, kColorSchemeKey), G_VARIANT_TYPE("(v)"),
        G_DBUS_CALL_FLAGS_NONE, kPortalTimeoutMs, nullptr, &error));
    if (!reply.get()) {
        // No portal, or one without the setting: nothing will ever change.
        SystemLog::log(fmt::format("No desktop portal for the appearance: {}", error ? error->message : "?"));
        if (error) g_error_free(error);
        return made;
    }
    VariantPtr value(g_variant_get_child_value(reply.get(), 0));
    made->state_->colorScheme = colorSchemeOf(value.get());

    GMainContext* context = portal->context;
    GMainLoop* loop = portal->loop;
    portal->thread = std::thread([context, loop] {
        g_main_context_push_thread_default(context);
        g_main_loop_run(loop);
        g_main_context_pop_thread_default(context);
    });
    made->portal_ = std::move(portal);
    return made;
}

std::optional<bool> VPDesktopAppearance::darkFromColorScheme(std::uint32_t colorScheme) {
    if (colorScheme == 1) return true;
    if (colorScheme == 2) return false;
    return std::nullopt;
}

std::optional<bool> VPDesktopAppearance::darkFromEnvironment() {
    const char* value = std::getenv("VELMO_APPEARANCE");
    if (!value) return std::nullopt;
    if (::strcasecmp(value, "dark") == 0) return true;
    if (::strcasecmp(value, "light") == 0 || ::strcasecmp(value, "bright") == 0) return false;
    return std::nullopt;
}

bool VPDesktopAppearance::isDark() const {
    const std::int64_t scheme = state_->colorScheme;
    if (scheme >= 0) {
        if (const auto dark = darkFromColorScheme(static_cast<std::uint32_t>(scheme))) return *dark;
    }
    return state_->environment.value_or(false);
}

VPDesktopAppearance::Origin VPDesktopAppearance::origin() const {
    const std::int64_t scheme = state_->colorScheme;
    if (scheme >= 0 && darkFromColorScheme(static_cast<std::uint32_t>(scheme))) return Origin::Portal;
    return state_->environment ? Origin::Environment : Origin::Default;
}

bool VPDesktopAppearance::isWatchingPortal() const {
    return portal_ != nullptr;
}

void VPDesktopAppearance::watch(std::function<void()> onChange) {
    std::lock_guard lock(state_->mutex);
    state_->onChange = std::move(onChange);
}

} // namespace velmo
