#include "velmo/runtime/VPLogging.h"

#include <exception>

#include <fmt/format.h>

#include "velmo/foundation/Json.h"
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

Dictionary VPLogging::generateContextDict(const std::filesystem::path& osReleasePath) {
    const VVClientConfigInterface& config = VVClientConfig::current();
    const std::string version = config.clientVersion();
    const std::string name = config.clientName();
    const std::string systemVersion = VPSystemInfo::systemVersion(osReleasePath);
    const std::string hostVersion = config.hostVersion();
    // All or nothing: records without one of these would mislead more than records without context.
    if (name.empty() || systemVersion.empty() || hostVersion.empty()) return Dictionary::create();
    return Dictionary{{"plugin_version", Value(version.empty() ? std::string("Unknown") : version)},
                      {"plugin_name", Value(name)},
                      {"system_version", Value(systemVersion)},
                      {"sketch_version", Value(hostVersion)}};
}

void VPLogging::logError(std::string_view message) {
    logMessage(message, "ERROR");
}

void VPLogging::logDebug(std::string_view message) {
    logMessage(message, "DEBUG");
}

void VPLogging::logMessage(std::string_view message, std::string_view level) {
    try {
        Dictionary body{{"text", Value(fmt::format("[{}] {}", level, message))}};
        for (const auto& entry : contextDict_)
            body.setEntry(entry.key, entry.value);
        post("/events/", Value(body), {"Content-Type: application/json"});
    } catch (...) {
        // Nowhere left to report to.
    }
}

void VPLogging::logErrorWithNSError(const std::shared_ptr<VPError>& error, std::string_view lineInfo) {
    const std::string description = error ? error->localizedDescription() : std::string();
    const std::string userInfo = error ? Value(error->userInfo()).description() : std::string();
    logError(fmt::format("{} {} {}", orNull(lineInfo), orNull(description), orNull(userInfo)));
}

void VPLogging::logJSError(std::string_view error, std::string_view stack, std::string_view originalStack) {
    logError(fmt::format("Plugin JS Error: {}\n---\n{}\n---\n{}", orNull(error), orNull(stack),
                         orNull(originalStack)));
}

void VPLogging::logMixpanelEvent(std::string_view event) {
    logMixpanelEvent(event, Dictionary(), false);
}

void VPLogging::logMixpanelEvent(std::string_view event, Dictionary properties) {
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

void VPLogging::logMixpanelEvent(std::string_view event, Dictionary properties, bool throttle) {
    try {
        if (throttle && !passThrottle(event)) return;
        Dictionary body = properties.isNil() ? Dictionary::create() : properties.copy();
        const std::string serial = serialNumber();
        body.set("event", Value(event));
        body.set("mac_serial_number", Value(serial.empty() ? std::string("None") : serial));
        for (const auto& entry : contextDict_)
            body.setEntry(entry.key, entry.value);

        std::vector<std::string> headers{"Content-Type: application/json",
                                         "X-Client-Id: " + VVClientConfig::current().clientID()};
        if (const auto user = VVUserData::current()) {
            if (const std::string id = user->userID(); !id.empty()) headers.push_back("X-User-Id: " + id);
            if (const std::string email = user->userEmail(); !email.empty())
                headers.push_back("X-User-Email: " + email);
        }
        post("/mixpanel", Value(body), std::move(headers));
    } catch (...) {
        logError(caughtExceptionLine(__PRETTY_FUNCTION__, __LINE__));
    }
}

std::string VPLogging::serialNumber() const {
    std::lock_guard lock(mutex_);
    // Kept once found; a machine that gives none is asked again next time.
    if (serialNumber_.empty()) serialNumber_ = VPSystemInfo::machineIdentifier(options_.machineIdPath);
    return serialNumber_;
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
