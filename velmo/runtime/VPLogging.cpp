#include "velmo/runtime/VPLogging.h"

#include <exception>

#include <fmt/format.h>

#include "velmo/foundation/Json.h"
#include "velmo/foundation/Utf8.h"
#include "velmo/foundation/VPError.h"
#include "velmo/runtime/VPSystemInfo.h"
#include "velmo/runtime/VVClientConfig.h"
#include "velmo/runtime/VVUserData.h"

namespace velmo {

namespace {

std::string describeCurrentException() {
    try {
        throw;
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "unknown exception";
    }
}

// A text of a record: a null value stands as "(null)", as the original logs print it.
std::string_view orNull(std::string_view text) {
    return text.empty() ? std::string_view("(null)") : text;
}

// A value holding a line break would end the header early and let the rest pose as headers of its
// own, so such a header is left out.
void addHeader(std::vector<std::string>& headers, std::string_view name, std::string_view value) {
    if (value.find_first_of("\r\n") != std::string_view::npos) return;
    headers.push_back(fmt::format("{}: {}", name, value));
}

} // namespace

VPLogging& VPLogging::shared() {
    // Never destroyed: any thread may log until the process ends, and exit must not wait on posts.
    static VPLogging* shared = new VPLogging();
    return *shared;
}

VPLogging::VPLogging() : VPLogging(Options{}) {}

VPLogging::VPLogging(Options options)
    : options_(std::move(options)), contextDict_(generateContextDict(options_.osReleasePath)),
      sender_(options_.limits) {
    if (!options_.clock) options_.clock = [] { return std::chrono::system_clock::now(); };
}

Dictionary VPLogging::generateContextDict(const std::filesystem::path& osReleasePath) noexcept {
    try {
        const VVClientConfigInterface& config = VVClientConfig::current();
        const std::string version = config.clientVersion();
        const std::string name = config.clientName();
        const std::string systemVersion = VPSystemInfo::systemVersion(osReleasePath);
        const std::string hostVersion = config.hostVersion();
        // All or nothing: records without one of these would mislead more than records without context.
        if (name.empty() || systemVersion.empty() || hostVersion.empty()) return Dictionary();
        // Every record carries these: one bad byte in them must not make every record unsendable.
        return Dictionary{
            {kVPLoggingPluginVersionKey,
             Value(version.empty() ? std::string(kVPLoggingUnknownVersion) : Utf8::sanitized(version))},
            {kVPLoggingPluginNameKey, Value(Utf8::sanitized(name))},
            {kVPLoggingSystemVersionKey, Value(Utf8::sanitized(systemVersion))},
            {kVPLoggingSketchVersionKey, Value(Utf8::sanitized(hostVersion))}};
    } catch (...) {
        // A host whose configuration throws gets records without context, as one that gives none.
        return Dictionary();
    }
}

void VPLogging::logError(std::string_view message) noexcept {
    logMessage(message, kVPLoggingLevelError);
}

void VPLogging::logDebug(std::string_view message) noexcept {
    logMessage(message, kVPLoggingLevelDebug);
}

void VPLogging::logMessage(std::string_view message, std::string_view level) noexcept {
    try {
        // The whole line rather than nothing: a message may quote bytes from anywhere.
        Dictionary body{{kVPLoggingTextKey, Value(Utf8::sanitized(fmt::format("[{}] {}", level, message)))}};
        for (const auto& entry : contextDict_)
            body.setEntry(entry.key, entry.value);
        std::vector<std::string> headers;
        addHeader(headers, kVPLoggingContentTypeHeader, kVPLoggingJsonContentType);
        post(kVPLoggingEventsPath, Value(body), std::move(headers));
    } catch (...) {
        // Nowhere left to report to.
    }
}

void VPLogging::logErrorWithNSError(const std::shared_ptr<VPError>& error,
                                    std::string_view lineInfo) noexcept {
    try {
        const std::string description = error ? error->localizedDescription() : std::string();
        const std::string userInfo = error ? Value(error->userInfo()).description() : std::string();
        logError(fmt::format("{} {} {}", orNull(lineInfo), orNull(description), orNull(userInfo)));
    } catch (...) {
        // Nowhere left to report to.
    }
}

void VPLogging::logJSError(std::string_view error, std::string_view stack,
                           std::string_view originalStack) noexcept {
    try {
        logError(fmt::format("Plugin JS Error: {}\n---\n{}\n---\n{}", orNull(error), orNull(stack),
                             orNull(originalStack)));
    } catch (...) {
        // Nowhere left to report to.
    }
}

void VPLogging::logMixpanelEvent(std::string_view event) noexcept {
    logMixpanelEvent(event, Dictionary(), false);
}

void VPLogging::logMixpanelEvent(std::string_view event, Dictionary properties) noexcept {
    logMixpanelEvent(event, std::move(properties), false);
}

bool VPLogging::passThrottle(std::string_view event) {
    const Date now = options_.clock();
    std::lock_guard lock(mutex_);
    const auto it = throttleDict_.find(event);
    if (it != throttleDict_.end() && now - it->second < kVPLoggingThrottleInterval) return false;
    throttleDict_.insert_or_assign(std::string(event), now);
    return true;
}

void VPLogging::logMixpanelEvent(std::string_view event, Dictionary properties, bool throttle) noexcept {
    try {
        if (throttle && !passThrottle(event)) return;
        Dictionary body = properties.isNil() ? Dictionary::create() : properties.copy();
        const std::string serial = keptSerialNumber();
        body.set(kVPLoggingEventKey, Value(event));
        body.set(kVPLoggingSerialNumberKey,
                 Value(serial.empty() ? std::string(kVPLoggingNoSerialNumber) : serial));
        for (const auto& entry : contextDict_)
            body.setEntry(entry.key, entry.value);

        std::vector<std::string> headers;
        addHeader(headers, kVPLoggingContentTypeHeader, kVPLoggingJsonContentType);
        addHeader(headers, kVPLoggingClientIdHeader, VVClientConfig::current().clientID());
        if (const auto user = VVUserData::current()) {
            if (const std::string id = user->userID(); !id.empty())
                addHeader(headers, kVPLoggingUserIdHeader, id);
            if (const std::string email = user->userEmail(); !email.empty())
                addHeader(headers, kVPLoggingUserEmailHeader, email);
        }
        post(kVPLoggingMixpanelPath, Value(body), std::move(headers));
    } catch (...) {
        try {
            logError(caughtExceptionLine(__PRETTY_FUNCTION__, __LINE__));
        } catch (...) {
            // Not even the line could be made.
        }
    }
}

std::string VPLogging::serialNumber() const {
    return VPSystemInfo::machineIdentifier(options_.machineIdPath);
}

std::string VPLogging::keptSerialNumber() const {
    struct Kept {
        std::mutex mutex;
        std::string serialNumber;
    };
    // One machine, one value for the process; never destroyed, as any thread may log until exit.
    static Kept* kept = new Kept();
    std::lock_guard lock(kept->mutex);
    // A machine that gives none is asked again at the next event.
    if (kept->serialNumber.empty()) kept->serialNumber = serialNumber();
    return kept->serialNumber;
}

std::map<std::string, Date> VPLogging::throttleDict() const {
    std::lock_guard lock(mutex_);
    return {throttleDict_.begin(), throttleDict_.end()};
}

void VPLogging::post(std::string_view path, const Value& body, std::vector<std::string> headers) {
    const std::string logsURL = VVClientConfig::current().logsURL();
    // Without an endpoint the record has nowhere to go; don't build a request that must fail.
    if (logsURL.empty()) return;
    // A body that JSON can't hold drops the record in silence.
    if (!Json::isValidJSONObject(body)) return;
    sender_.post(logsURL + std::string(path), Json::write(body), std::move(headers));
}

std::string VPLogging::caughtExceptionLine(const char* function, int line) {
    return fmt::format("{} [Line {}] Exception: {}", function, line, describeCurrentException());
}

void VPLogging::logCaughtException(const char* function, int line) noexcept {
    try {
        shared().logError(caughtExceptionLine(function, line));
    } catch (...) {
    }
}

} // namespace velmo
