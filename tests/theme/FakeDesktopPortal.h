#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;

namespace velmo::test {

/// The settings of a desktop portal on a given bus: answers "Read" of the appearance's
/// "color-scheme" (wrapped twice, as portals before version 2 answer) and emits "SettingChanged".
/// Serves on a thread of its own.
class FakeDesktopPortal {
public:
    /// Throws `std::runtime_error` when the portal can't take its name on the bus.
    FakeDesktopPortal(const std::string& busAddress, std::uint32_t colorScheme);
    ~FakeDesktopPortal();
    FakeDesktopPortal(const FakeDesktopPortal&) = delete;
    FakeDesktopPortal& operator=(const FakeDesktopPortal&) = delete;

    /// Answers the new scheme from now on, and announces it.
    void setColorScheme(std::uint32_t colorScheme);
    /// Announces a setting, whatever it is.
    void emitSetting(const char* nameSpace, const char* key, std::uint32_t value);

private:
    void shutdown();

    std::atomic<std::uint32_t> colorScheme_;
    GDBusConnection* connection_ = nullptr;
    GMainContext* context_ = nullptr;
    GMainLoop* loop_ = nullptr;
    std::thread thread_;
};

} // namespace velmo::test
