#include "velmo/config/VPUserStoredConfig.h"

#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelObjectSerializer.h"

namespace velmo {

namespace {

bool isStorable(const Value& value) {
    if (value.isObject()) {
        const auto* serializable = dynamic_cast<const VDModelObjectSerializer*>(value.objectPointer());
        return serializable && !serializable->serialize().isNone();
    }
    // Judged as the JSON writer judges a one-key wrapper holding the value.
    return value.isBytes() || Json::isValidJSONObject(Value(Dictionary{{"dummy", value}}));
}

} // namespace

VPUserStoredConfig::VPUserStoredConfig() : VPUserStoredConfig(UserDefaults::standardUserDefaults()) {}

VPUserStoredConfig::VPUserStoredConfig(UserDefaults& store) : store_(store) {}

Dictionary VPUserStoredConfig::userConfig() {
    if (!userConfig_.isNil()) return userConfig_;
    const Value stored = store_.objectForKey(kVPUserStoredConfigKey);
    if (stored.isDictionary()) {
        userConfig_ = stored.dictionary();
    } else {
        userConfig_ = Dictionary::create();
        store_.setObject(Value(userConfig_), kVPUserStoredConfigKey);
        store_.synchronize();
    }
    return userConfig_;
}

void VPUserStoredConfig::setUserConfig(Dictionary userConfig) {
    userConfig_ = userConfig.isNil() ? Dictionary::create() : std::move(userConfig);
    // The file holds JSON: configuration objects go in their serialized form, and what JSON can't
    // hold is left out of the file, so one such value can't keep the others from being written.
    store_.setObject(VDModelObjectSerializer::objectToSerializableObject(Value(userConfig_)),
                     kVPUserStoredConfigKey);
    store_.synchronize();
}

void VPUserStoredConfig::setConfigValue(const Value& value, std::string_view key) {
    if (key.empty()) return;
    if (value.isNil()) {
        if (!userConfig().contains(key)) return;
        Dictionary changed = userConfig().copy();
        changed.remove(key);
        setUserConfig(std::move(changed));
        return;
    }
    if (!isStorable(value)) return;
    Dictionary changed = userConfig().copy();
    changed.set(key, value);
    setUserConfig(std::move(changed));
}

} // namespace velmo
