#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "velmo/foundation/DateFormatter.h"
#include "velmo/foundation/Value.h"
#include "velmo/runtime/VPLogSender.h"

namespace velmo {

class VPError;

/// How long a throttled analytics event is held back after it was sent: 5 hours.
inline constexpr std::chrono::seconds kVPLoggingThrottleInterval{18000};

/// Error and debug records to "<logsURL>/events/", analytics events to "<logsURL>/mixpanel", with
/// the context of the client and the machine. Every post is fire-and-forget: no call waits for the
/// network, retries, or reports a failure, and logging swallows its own failures, since it is the
/// last stop of error reporting. `logsURL` comes from the bound client configuration at each post;
/// without one, nothing is sent.
class VPLogging {
public:
    using Clock = std::function<Date()>;

    struct Options {
        std::filesystem::path osReleasePath = "/etc/os-release";
        std::filesystem::path machineIdPath = "/etc/machine-id";
        /// Time for throttling; the system clock when empty.
        Clock clock;
        VPLogSender::Limits limits;
    };

    /// The one instance, made on first use, also under concurrent first calls. Its context is read
    /// then, so a host binds its client configuration first.
    static VPLogging& shared();

    VPLogging();
    explicit VPLogging(Options options);
    VPLogging(const VPLogging&) = delete;
    VPLogging& operator=(const VPLogging&) = delete;

    /// Fields common to all records, computed when the instance was made; empty when any of them
    /// couldn't be had.
    const Dictionary& contextDict() const { return contextDict_; }
    /// "plugin_version" (the client's version, or "Unknown"), "plugin_name" (the client's name),
    /// "system_version" (the system's version) and "sketch_version" (the host application's
    /// version); an empty dictionary when any of the last three is missing.
    static Dictionary generateContextDict(const std::filesystem::path& osReleasePath = "/etc/os-release");

    /// Posts "[ERROR] <message>". Any thread.
    void logError(std::string_view message);
    /// Posts "[DEBUG] <message>". Any thread.
    void logDebug(std::string_view message);
    /// Posts "[<level>] <message>" under "text", with the context.
    /// logMessage:level:
    void logMessage(std::string_view message, std::string_view level);
    /// `logError` with "<lineInfo> <description> <user info>".
    /// logErrorWithNSError:lineInfo:
    void logErrorWithNSError(const std::shared_ptr<VPError>& error, std::string_view lineInfo);
    /// `logError` with the three texts of a script error.
    /// logJSError:stack:originalStack:
    void logJSError(std::string_view error, std::string_view stack, std::string_view originalStack);

    void logMixpanelEvent(std::string_view event);
    /// logMixpanelEvent:properties:
    void logMixpanelEvent(std::string_view event, Dictionary properties);
    /// Posts the event with its properties, "event", "mac_serial_number" and the context (which
    /// wins over properties of the same name). Throttled, the event goes out at most once in
    /// `kVPLoggingThrottleInterval`; the time counts from the attempt, sent or not. Properties that
    /// JSON can't hold make the event vanish.
    /// logMixpanelEvent:properties:throttle:
    void logMixpanelEvent(std::string_view event, Dictionary properties, bool throttle);

    /// The machine's identifier (a stand-in for a serial number), or empty when it has none.
    std::string serialNumber() const;

    /// When each throttled event was last let through.
    std::map<std::string, Date> throttleDict() const;

    /// The catch-all guard's handler: logs the exception being handled as
    /// "<function> [Line <line>] Exception: <description>" through `shared().logError`. Never throws.
    static void logCaughtException(const char* function, int line) noexcept;
    /// That line, for the exception being handled.
    static std::string caughtExceptionLine(const char* function, int line);

private:
    void post(std::string_view path, const Value& body, std::vector<std::string> headers);
    /// True when the throttled event may go now; notes the time if so.
    bool passThrottle(std::string_view event);

    Options options_;
    Dictionary contextDict_;
    mutable std::mutex mutex_;
    std::map<std::string, Date, std::less<>> throttleDict_;
    mutable std::string serialNumber_;
    VPLogSender sender_;
};

} // namespace velmo

/// The catch-all guard around bodies that touch dictionaries, the model or a service:
///
///     VP_TRY
///         ... body ...
///     VP_CATCH(emptyResult)        // VP_CATCH() in a function that returns nothing
///
/// Anything thrown is logged through `logError` as "<function> [Line <line>] Exception: <what>",
/// and the function returns the empty result. A callback handed to the function isn't called then.
#define VP_TRY try {
#define VP_CATCH(...)                                                                                        \
    }                                                                                                        \
    catch (...) {                                                                                            \
        ::velmo::VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);                               \
        return __VA_ARGS__;                                                                                  \
    }
