#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "velmo/host/VVHostClientConfig.h"

namespace velmo {

/// What the stand-alone host binds: its client configuration and its user, read from a small JSON
/// file and the environment over defaults.
///
/// The file ("$VELMO_HOST_CONFIG", else "$VELMO_HOME/host.json") is an object whose keys are the
/// names of the values: "logsURL", "clientVersion", "clientName", "clientID", "tempDir",
/// "keyChainServiceName", "bundle", "hostVersion", "userEmail", "userID", "remoteConfigBaseURL",
/// "customAPIBaseURL" (where the service is, when not at its own address). The environment's
/// VELMO_LOGS_URL, VELMO_CLIENT_VERSION, VELMO_CLIENT_NAME, VELMO_CLIENT_ID, VELMO_TEMP_DIR,
/// VELMO_KEYCHAIN_SERVICE_NAME, VELMO_BUNDLE, VELMO_HOST_VERSION, VELMO_USER_EMAIL, VELMO_USER_ID,
/// VELMO_CONFIG_URL and VELMO_API_URL win over the file.
class VVHost {
public:
    struct Settings {
        VVHostClientConfig::Values config;
        std::string userEmail;
        std::string userID;
        /// The object store of the remote configuration document; none by default.
        std::string remoteConfigBaseURL;
        std::string customAPIBaseURL;
    };

    static std::filesystem::path configPath();

    /// Defaults, then the file, then the environment. A missing file is normal; a file that can't
    /// be read or parsed, and keys that are unknown or not strings, are skipped with a warning.
    static Settings load(const std::filesystem::path& file, std::vector<std::string>& warnings);

    /// Loads the settings, binds the client configuration, the user and the host's client of the
    /// service (whose token lives in the token store), gives the configuration manager its object
    /// store, and sets the service's address when the settings give one. A host calls it once, at
    /// start, before any other use of the library. Returns the warnings of `load`.
    static std::vector<std::string> bind();
    static std::vector<std::string> bind(const std::filesystem::path& file);
};

} // namespace velmo
