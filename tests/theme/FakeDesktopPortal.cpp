#include "FakeDesktopPortal.h"

#include <future>
#include <stdexcept>
#include <string_view>

#include <gio/gio.h>

namespace velmo::test {

namespace {

constexpr const char* kIntrospection = R"(<node>
  <interface name="org.freedesktop.portal.Settings">
    <method name="Read">
      <arg type="s" name="namespace" direction="in"/>
      <arg type="s" name="key" direction="in"/>
      <arg type="v" name="value" direction="out"/>
    </method>
    <signal name="SettingChanged">
      <arg type="s" name="namespace"/>
      <arg type="s" name="key"/>
      <arg type="v" name="value"/>
    </signal>
  </interface>
</node>)";

void methodCall(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method,
                GVariant* parameters, GDBusMethodInvocation* invocation, gpointer data) {
    const gchar* nameSpace = nullptr;
    const gchar* key = nullptr;
    g_variant_get(parameters, "(&s&s)", &nameSpace, &key);
    if (std::string_view(method) != "Read" || std::string_view(nameSpace) != "org.freedesktop.appearance" ||
        std::string_view(key) != "color-scheme") {
        g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.portal.Error.NotFound",
                                                   "Requested setting not found");
        return;
    }
    const auto scheme = static_cast<std::atomic<std::uint32_t>*>(data)->load();
    g_dbus_method_invocation_return_value(
        invocation, g_variant_new("(v)", g_variant_new_variant(g_variant_new_uint32(scheme))));
}

const GDBusInterfaceVTable kVTable = {methodCall, nullptr, nullptr, {}};

} // namespace

FakeDesktopPortal::FakeDesktopPortal(const std::string& busAddress, std::uint32_t colorScheme)
    : colorScheme_(colorScheme) {
    context_ = g_main_context_new();
    loop_ = g_main_loop_new(context_, FALSE);
    std::promise<std::string> ready;
    auto started = ready.get_future();
    thread_ = std::thread([this, busAddress, &ready] {
        g_main_context_push_thread_default(context_);
        GError* error = nullptr;
        connection_ = g_dbus_connection_new_for_address_sync(
            busAddress.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error);
        GDBusNodeInfo* node = connection_ ? g_dbus_node_info_new_for_xml(kIntrospection, &error) : nullptr;
        if (node) {
            g_dbus_connection_register_object(connection_, "/org/freedesktop/portal/desktop",
                                              node->interfaces[0], &kVTable, &colorScheme_, nullptr, &error);
            g_dbus_node_info_unref(node);
        }
        GVariant* owned =
            error ? nullptr
                  : g_dbus_connection_call_sync(
                        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                        "RequestName", g_variant_new("(su)", "org.freedesktop.portal.Desktop", 4u),
                        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, &error);
        if (owned) g_variant_unref(owned);
        ready.set_value(error ? error->message : "");
        if (error) {
            g_error_free(error);
        } else {
            g_main_loop_run(loop_);
        }
        g_main_context_pop_thread_default(context_);
    });
    const std::string failure = started.get();
    if (!failure.empty()) {
        thread_.join();
        shutdown();
        throw std::runtime_error("the fake portal could not start: " + failure);
    }
}

FakeDesktopPortal::~FakeDesktopPortal() {
    shutdown();
}

void FakeDesktopPortal::shutdown() {
    if (thread_.joinable()) {
        GSource* quit = g_idle_source_new();
        g_source_set_callback(
            quit,
            [](gpointer loop) {
                g_main_loop_quit(static_cast<GMainLoop*>(loop));
                return G_SOURCE_REMOVE;
            },
            loop_, nullptr);
        g_source_attach(quit, context_);
        g_source_unref(quit);
        thread_.join();
    }
    if (connection_) {
        g_dbus_connection_close_sync(connection_, nullptr, nullptr);
        g_object_unref(connection_);
        connection_ = nullptr;
    }
    if (loop_) g_main_loop_unref(loop_);
    if (context_) g_main_context_unref(context_);
    loop_ = nullptr;
    context_ = nullptr;
}

void FakeDesktopPortal::setColorScheme(std::uint32_t colorScheme) {
    colorScheme_ = colorScheme;
    emitSetting("org.freedesktop.appearance", "color-scheme", colorScheme);
}

void FakeDesktopPortal::emitSetting(const char* nameSpace, const char* key, std::uint32_t value) {
    g_dbus_connection_emit_signal(
        connection_, nullptr, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
        "SettingChanged", g_variant_new("(ssv)", nameSpace, key, g_variant_new_uint32(value)), nullptr);
}

} // namespace velmo::test
