#include "velmo/config/VPPluginConfigManager.h"

#include "velmo/model/values/DictionaryExtensions.h"

namespace velmo {

const VDClass& VPPluginConfigManager::classObject() {
    static const VDClass cls("VPPluginConfigManager", &VPConfigManager::classObject(), [] {
        return std::static_pointer_cast<Object>(std::make_shared<VPPluginConfigManager>());
    });
    return cls;
}

std::shared_ptr<VPPluginConfigManager> VPPluginConfigManager::shared() {
    return std::dynamic_pointer_cast<VPPluginConfigManager>(VPConfigManager::shared());
}

std::shared_ptr<VDPluginConfigObject> VPPluginConfigManager::pluginConfig() const {
    return std::dynamic_pointer_cast<VDPluginConfigObject>(config());
}

Array VPPluginConfigManager::enabledCodePrefValues() const {
    return _vp_arrayForKey(userStoredConfig()->userConfig(), kVPEnabledCodePrefValuesKey);
}

void VPPluginConfigManager::setEnabledCodePrefValues(const Array& values) {
    userStoredConfig()->setConfigValue(Value(values), kVPEnabledCodePrefValuesKey);
}

std::optional<std::string> VPPluginConfigManager::lastCodePrefNotifID() const {
    const Value& id = userStoredConfig()->userConfig().get(kVPLastCodePrefNotifIDKey);
    return id.isString() ? std::optional<std::string>(id.str()) : std::nullopt;
}

std::optional<std::string> VPPluginConfigManager::currentNotifID() const {
    const auto config = pluginConfig();
    const auto item = config ? config->notifItem() : nullptr;
    return item ? item->notifID : std::nullopt;
}

void VPPluginConfigManager::setLastCodePrefNotifID(const std::optional<std::string>& notifID) {
    if (!notifID) return;
    userStoredConfig()->setConfigValue(Value(*notifID), kVPLastCodePrefNotifIDKey);
    const auto current = currentNotifID();
    setShouldShowNotifBadge(current && *current != *notifID);
}

bool VPPluginConfigManager::fastModelProcessingEnabled() const {
    if (!userStoredConfig()->userConfig().contains(kVPFastModelProcessingEnabledKey))
        userStoredConfig()->setConfigValue(Value(true), kVPFastModelProcessingEnabledKey);
    return userStoredConfig()->userConfig().get(kVPFastModelProcessingEnabledKey).boolValue();
}

void VPPluginConfigManager::setFastModelProcessingEnabled(bool enabled) {
    userStoredConfig()->setConfigValue(Value(enabled), kVPFastModelProcessingEnabledKey);
    setIsFastModelProcessingEnabled(enabled);
}

bool VPPluginConfigManager::shouldShowNotifBadge() const {
    if (!shouldShowNotifBadge_) {
        const auto current = currentNotifID();
        const auto seen = lastCodePrefNotifID();
        shouldShowNotifBadge_ = current && (!seen || *current != *seen);
    }
    return *shouldShowNotifBadge_;
}

bool VPPluginConfigManager::isFastModelProcessingEnabled() const {
    if (!isFastModelProcessingEnabled_) isFastModelProcessingEnabled_ = fastModelProcessingEnabled();
    return *isFastModelProcessingEnabled_;
}

} // namespace velmo
