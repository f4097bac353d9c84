#include "velmo/host/VVHost.h"

#include <cstdlib>
#include <memory>

#include <fmt/format.h>

#include "velmo/config/VPConfigManager.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostAPIClient.h"
#include "velmo/host/VVHostUserData.h"
#include "velmo/runtime/VVDI.h"

namespace velmo {

namespace {

struct Field {
    const char* key;
    const char* environment;
    std::string& (*value)(VVHost::Settings&);
};

// One table for the file's keys and the environment's names.
constexpr Field kFields[] = {
    {"logsURL", "VELMO_LOGS_URL", [](VVHost::Settings& s) -> std::string& { return s.config.logsURL; }},
    {"clientVersion", "VELMO_CLIENT_VERSION",
     [](VVHost::Settings& s) -> std::string& { return s.config.clientVersion; }},
    {"clientName", "VELMO_CLIENT_NAME",
     [](VVHost::Settings& s) -> std::string& { return s.config.clientName; }},
    {"clientID", "VELMO_CLIENT_ID", [](VVHost::Settings& s) -> std::string& { return s.config.clientID; }},
    {"tempDir", "VELMO_TEMP_DIR", [](VVHost::Settings& s) -> std::string& { return s.config.tempDir; }},
    {"keyChainServiceName", "VELMO_KEYCHAIN_SERVICE_NAME",
     [](VVHost::Settings& s) -> std::string& { return s.config.keyChainServiceName; }},
    {"bundle", "VELMO_BUNDLE", [](VVHost::Settings& s) -> std::string& { return s.config.bundle; }},
    {"hostVersion", "VELMO_HOST_VERSION",
     [](VVHost::Settings& s) -> std::string& { return s.config.hostVersion; }},
    {"userEmail", "VELMO_USER_EMAIL", [](VVHost::Settings& s) -> std::string& { return s.userEmail; }},
    {"userID", "VELMO_USER_ID", [](VVHost::Settings& s) -> std::string& { return s.userID; }},
    {"remoteConfigBaseURL", "VELMO_CONFIG_URL",
     [](VVHost::Settings& s) -> std::string& { return s.remoteConfigBaseURL; }},
    {"customAPIBaseURL", "VELMO_API_URL",
     [](VVHost::Settings& s) -> std::string& { return s.customAPIBaseURL; }},
};

const Field* fieldForKey(std::string_view key) {
    for (const Field& field : kFields) {
        if (key == field.key) return &field;
    }
    return nullptr;
}

void readFile(const std::filesystem::path& file, VVHost::Settings& settings,
              std::vector<std::string>& warnings) {
    std::error_code ec;
    // A missing file is normal; one that can't even be looked at (no permission, a link loop) is not.
    if (!std::filesystem::exists(file, ec) && !ec) return;
    std::error_code readError;
    const auto text = Files::read(file, readError);
    if (!text) {
        warnings.push_back(
            fmt::format("{}: ignored, cannot read the file: {}", file.string(), readError.message()));
        return;
    }
    JsonParseError error("", 0);
    const Value root = Json::tryParse(*text, Json::ReadOptions{}, &error);
    if (root.isNil()) {
        warnings.push_back(fmt::format("{}: ignored, malformed JSON at offset {}: {}", file.string(),
                                       error.offset(), error.reason()));
        return;
    }
    if (!root.isDictionary()) {
        warnings.push_back(fmt::format("{}: ignored, expected a JSON object", file.string()));
        return;
    }
    for (const auto& entry : root.dictionary()) {
        const Field* field = fieldForKey(entry.key.stringView());
        if (!field) {
            warnings.push_back(
                fmt::format("{}: unknown key \"{}\" ignored", file.string(), entry.key.stringView()));
        } else if (!entry.value.isString()) {
            warnings.push_back(
                fmt::format("{}: \"{}\" must be a string; ignored", file.string(), field->key));
        } else {
            field->value(settings) = entry.value.str();
        }
    }
}

} // namespace

std::filesystem::path VVHost::configPath() {
    if (const char* path = std::getenv("VELMO_HOST_CONFIG"); path && *path) return path;
    return Files::velmoHome() / "host.json";
}

VVHost::Settings VVHost::load(const std::filesystem::path& file, std::vector<std::string>& warnings) {
    Settings settings{VVHostClientConfig::defaults(), {}, {}, {}, {}};
    readFile(file, settings, warnings);
    for (const Field& field : kFields) {
        // Set but empty counts: VELMO_LOGS_URL= turns logging off whatever the file says.
        if (const char* value = std::getenv(field.environment)) field.value(settings) = value;
    }
    return settings;
}

std::vector<std::string> VVHost::bind() {
    return bind(configPath());
}

std::vector<std::string> VVHost::bind(const std::filesystem::path& file) {
    std::vector<std::string> warnings;
    Settings settings = load(file, warnings);
    // A bound class lives for the process: the registry keeps it for good.
    auto* config = new VVHostClientConfig(std::move(settings.config));
    VVDI::shared().bindClass(config, kVVClientConfigInterface);
    VVDI::shared().bindInstance(
        std::make_shared<VVHostUserData>(std::move(settings.userEmail), std::move(settings.userID)),
        kVVUserData);
    VPConfigManager::setRemoteConfigBaseURL(std::move(settings.remoteConfigBaseURL));
    VVDI::shared().bindClass(&VVHostAPIClient::classObject(), kVVAPIClientInterface);
    if (!settings.customAPIBaseURL.empty()) VPBaseAPIClient::setCustomAPIBaseURL(settings.customAPIBaseURL);
    return warnings;
}

} // namespace velmo
