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

// Where records go, below the client's `logsURL`.
inline constexpr const char* kVPLoggingEventsPath = "/events/";
inline constexpr const char* kVPLoggingMixpanelPath = "/mixpanel";

// Levels of lines.
inline constexpr const char* kVPLoggingLevelError = "ERROR";
inline constexpr const char* kVPLoggingLevelDebug = "DEBUG";

// Keys of record bodies.
inline constexpr const char* kVPLoggingTextKey = "text";
inline constexpr const char* kVPLoggingEventKey = "event";
inline constexpr const char* kVPLoggingSerialNumberKey = "mac_serial_number";
inline constexpr const char* kVPLoggingPluginVersionKey = "plugin_version";
inline constexpr const char* kVPLoggingPluginNameKey = "plugin_name";
inline constexpr const char* kVPLoggingSystemVersionKey = "system_version";
inline constexpr const char* kVPLoggingSketchVersionKey = "sketch_version";
/// "plugin_version" when the client gives none.
inline constexpr const char* kVPLoggingUnknownVersion = "Unknown";
/// "mac_serial_number" of a machine that gives none.
inline constexpr const char* kVPLoggingNoSerialNumber = "None";

// Headers of posts.
inline constexpr const char* kVPLoggingContentTypeHeader = "Content-Type";
inline constexpr const char* kVPLoggingJsonContentType = "application/json";
inline constexpr const char* kVPLoggingClientIdHeader = "X-Client-Id";
inline constexpr const char* kVPLoggingUserIdHeader = "X-User-Id";
inline constexpr const char* kVPLoggingUserEmailHeader = "X-User-Email";

// The analytics events that the library raises.
inline constexpr const char* kVPEventExportCodePresented = "Export.Code.Presented";
inline constexpr const char* kVPEventExportCodePressed = "Export.Code.Pressed";
inline constexpr const char* kVPEventExportCodePrefChanged = "Export.CodePref.changed";
inline constexpr const char* kVPEventPreviewInBrowserVisible = "Export.Draft.Preview-in-browser.visible";
inline constexpr const char* kVPEventPreviewInBrowserError = "Export.Draft.Preview-in-browser.error";
inline constexpr const char* kVPEventPreviewInBrowserCancelled = "Export.Draft.Preview-in-browser.cancelled";
inline constexpr const char* kVPEventPreviewRatingPresented = "preview-rating.presented";
inline constexpr const char* kVPEventPreviewRatingDismissClicked = "preview-rating.dismiss-clicked";
inline constexpr const char* kVPEventPreviewRatingStarClicked = "preview-rating.star-clicked";
inline constexpr const char* kVPEventPreviewRatingCommentSent = "preview-rating.comment-sent";
inline constexpr const char* kVPEventProjectCreatePressed = "Prototype.Project.Create-Pressed";
inline constexpr const char* kVPEventTeamCreatePressed = "Prototype.Team.Create-Pressed";

/// Error and debug records to "<logsURL>/events/", analytics events to "<logsURL>/mixpanel", with
/// the context of the client and the machine. Every post is fire-and-forget: no call waits for the
/// network, retries, or reports a failure, and no logging call throws, since it is the last stop of
/// error reporting. `logsURL` comes from the bound client configuration at each post; without one,
/// nothing is sent. Texts that aren't valid UTF-8 go with U+FFFD in place of the bad bytes, and
/// headers whose value would break the request (a CR or LF in it) are left out.
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
    /// version); an empty dictionary when any of the last three is missing or reading any fails.
    static Dictionary
    generateContextDict(const std::filesystem::path& osReleasePath = "/etc/os-release") noexcept;

    /// Posts "[ERROR] <message>". Any thread.
    void logError(std::string_view message) noexcept;
    /// Posts "[DEBUG] <message>". Any thread.
    void logDebug(std::string_view message) noexcept;
    /// Posts "[<level>] <message>" under "text", with the context.
    /// logMessage:level:
    void logMessage(std::string_view message, std::string_view level) noexcept;
    /// `logError` with "<lineInfo> <description> <user info>".
    /// logErrorWithNSError:lineInfo:
    void logErrorWithNSError(const std::shared_ptr<VPError>& error, std::string_view lineInfo) noexcept;
    /// `logError` with the three texts of a script error.
    /// logJSError:stack:originalStack:
    void logJSError(std::string_view error, std::string_view stack, std::string_view originalStack) noexcept;

    void logMixpanelEvent(std::string_view event) noexcept;
    /// logMixpanelEvent:properties:
    void logMixpanelEvent(std::string_view event, Dictionary properties) noexcept;
    /// Posts the event with its properties, "event", "mac_serial_number" and the context (which
    /// wins over properties of the same name). Throttled, the event goes out at most once in
    /// `kVPLoggingThrottleInterval`; the time counts from the attempt, sent or not. Properties that
    /// JSON can't hold make the event vanish.
    /// logMixpanelEvent:properties:throttle:
    void logMixpanelEvent(std::string_view event, Dictionary properties, bool throttle) noexcept;

    /// The machine's identifier (a stand-in for a serial number), read now; empty when it has none.
    /// Events carry the first one found, kept for the process.
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
    /// The process's kept serial number; read with `serialNumber` while none is kept.
    std::string keptSerialNumber() const;

    Options options_;
    Dictionary contextDict_;
    mutable std::mutex mutex_;
    std::map<std::string, Date, std::less<>> throttleDict_;
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
