#pragma once

#include <optional>
#include <string_view>

#include "velmo/foundation/UserDefaults.h"
#include "velmo/foundation/Value.h"

namespace velmo {

/// The user-defaults key under which the user's settings live, as one dictionary.
inline constexpr const char* kVPUserStoredConfigKey = "com.velmoapp.userConfig";

/// The user's own settings: one dictionary under "com.velmoapp.userConfig" in the user defaults,
/// held in memory and written through whole at each change. For the main thread.
class VPUserStoredConfig {
public:
    /// The standard user defaults.
    VPUserStoredConfig();
    /// The store is kept by reference and must outlive this object.
    explicit VPUserStoredConfig(UserDefaults& store);

    /// The settings. On first read they come from the store; a store without the entry gets an
    /// empty dictionary written under it.
    Dictionary userConfig();
    /// Keeps the dictionary and writes it to the store at once.
    /// setUserConfig:
    void setUserConfig(Dictionary userConfig);
    /// Sets one setting and writes the entry. An empty key does nothing; nil removes the key (and
    /// writes nothing when it had no entry). A value is kept only when JSON can hold it, when it is
    /// binary data, or when it is a configuration object that serializes; anything else is dropped
    /// without a word. The value itself is kept, not its serialized form.
    /// setConfigValue:forConfigKey:
    void setConfigValue(const Value& value, std::string_view key);

private:
    UserDefaults& store_;
    /// nil until first read.
    Dictionary userConfig_;
};

} // namespace velmo
