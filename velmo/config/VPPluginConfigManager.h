#pragma once

#include <memory>
#include <optional>
#include <string>

#include "velmo/config/VDPluginConfigObject.h"
#include "velmo/config/VPConfigManager.h"

namespace velmo {

// Keys of the user's settings.
inline constexpr const char* kVPEnabledCodePrefValuesKey = "enabledCodePrefValues";
inline constexpr const char* kVPLastCodePrefNotifIDKey = "lastCodePrefNotifID";
inline constexpr const char* kVPFastModelProcessingEnabledKey = "fastModelProcessingEnabled";

/// The configuration manager in use: the configuration reads as `VDPluginConfigObject`, and the
/// user's settings of the plugin have accessors here. For the main thread, but for `config`.
class VPPluginConfigManager : public VPConfigManager {
public:
    VPPluginConfigManager() = default;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// `VPConfigManager::shared` as this class; nullptr when the host bound a manager of another
    /// kind.
    static std::shared_ptr<VPPluginConfigManager> shared();

    const VDClass& configModelClass() const override { return VDPluginConfigObject::classObject(); }

    /// `config` as the plugin's configuration, or nullptr.
    std::shared_ptr<VDPluginConfigObject> pluginConfig() const;

    // ---- the user's settings, written through at once

    /// Values of the enabled code preferences; what the store holds under the key if it is an
    /// array, else nil.
    Array enabledCodePrefValues() const;
    /// A nil array removes the key.
    /// setEnabledCodePrefValues:
    void setEnabledCodePrefValues(const Array& values);
    /// The notification the user has seen.
    std::optional<std::string> lastCodePrefNotifID() const;
    /// Stores the id, then turns the badge on when the configuration's notification is another
    /// one, off otherwise; subscribers hear of it. An absent id does nothing at all.
    /// setLastCodePrefNotifID:
    void setLastCodePrefNotifID(const std::optional<std::string>& notifID);
    /// The user's choice of fast processing; true, and stored so, while the user hasn't chosen.
    bool fastModelProcessingEnabled() const;
    /// Stores the choice and sets `isFastModelProcessingEnabled`, which subscribers hear of.
    /// setFastModelProcessingEnabled:
    void setFastModelProcessingEnabled(bool enabled);

    /// At first read: true when the configuration's notification has an id other than the last
    /// one seen. Then kept: a newer configuration doesn't change the badge by itself; only the
    /// next `setLastCodePrefNotifID` does.
    bool shouldShowNotifBadge() const override;
    /// `fastModelProcessingEnabled` at first read, then kept.
    bool isFastModelProcessingEnabled() const override;

private:
    /// The id of the configuration's notification, if it has one.
    std::optional<std::string> currentNotifID() const;
};

} // namespace velmo
