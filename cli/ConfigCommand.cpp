// velmo config [--json] [--refresh] | config set KEY VALUE | config unset KEY: the configuration in
// force and the user's settings.
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "velmo/config/VPPluginConfigManager.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/UserDefaults.h"

namespace velmo::cli {

namespace {

// Longer than the request's own time-out, which ends every remote load first.
constexpr auto kRemoteWait = std::chrono::seconds(kVPConfigManagerRemoteTimeout + 10);

struct ConfigOptions {
    bool json = false;
    bool refresh = false;
    std::string key;
    std::string value;
    CLI::App* set = nullptr;
    CLI::App* unset = nullptr;
};

/// The settings the library reads, and the kind each takes.
enum class SettingKind { TextList, Text, Flag };
struct KnownSetting {
    const char* key;
    SettingKind kind;
};
constexpr KnownSetting kKnownSettings[] = {
    {kVPEnabledCodePrefValuesKey, SettingKind::TextList},
    {kVPLastCodePrefNotifIDKey, SettingKind::Text},
    {kVPFastModelProcessingEnabledKey, SettingKind::Flag},
};

const KnownSetting* knownSetting(std::string_view key) {
    for (const auto& setting : kKnownSettings) {
        if (key == setting.key) return &setting;
    }
    return nullptr;
}

bool isTextList(const Value& value) {
    if (!value.isArray()) return false;
    for (const Value& item : value.array()) {
        if (!item.isString()) return false;
    }
    return true;
}

/// The configuration as a dictionary of the document's shape: all five features, a missing daily
/// limit as null, and every item (an object without the limit has no serialized form of its own).
Value configDictionary(const std::shared_ptr<VDPluginConfigObject>& config) {
    if (!config) return Value::null();
    Array items = Array::create(config->codePrefItems.size());
    for (const auto& item : config->codePrefItems)
        items.push_back(item->serialize());
    return Value(Dictionary{
        {kVDPluginConfigFeaturesKey,
         Value(Dictionary{
             {kVDPluginConfigFastPreviewKey, Value(config->fastPreviewEnabled)},
             {kVDPluginConfigFastPreviewExportKey, Value(config->fastPreviewExportEnabled)},
             {kVDPluginConfigFastProcessingKey, Value(config->bgModelProcessingEnabled)},
             {kVDPluginConfigPreviewRatingKey, Value(config->ratePreviewEnabled)},
             {kVDPluginConfigPreviewRatingMaxKey,
              config->ratePreviewRatingMax.isNone() ? Value::null() : config->ratePreviewRatingMax},
         })},
        {kVDPluginConfigCodeOptimizationsKey, Value(items)},
    });
}

Dictionary storedUserSettings() {
    // Read from the store as it stands: showing the settings writes nothing.
    return UserDefaults::standardUserDefaults().objectForKey(kVPUserStoredConfigKey).dictionary();
}

std::string itemLine(const VDCodePrefConfigItemObject& item) {
    std::string line = fmt::format("  {:<13} \"{}\"", VDCodePrefConfigItemObject::stringFromType(item.type),
                                   item.text.value_or(""));
    if (item.value) line += fmt::format(" value={}", *item.value);
    if (item.type == static_cast<std::uint32_t>(VDCodePrefConfigItemType::Checkbox))
        line += item.defaultValueIsOn() ? ", on by default" : ", off by default";
    if (item.badgeTitle) line += fmt::format(" [{}]", *item.badgeTitle);
    if (item.linkTitle || item.linkURL)
        line += fmt::format(" {} <{}>", item.linkTitle.value_or("link"), item.linkURL.value_or(""));
    if (item.notifID) line += fmt::format(" id={}", *item.notifID);
    return line + "\n";
}

void printConfig(const Value& config, const std::shared_ptr<VDPluginConfigObject>& plugin,
                 const std::string& origin, const Dictionary& user) {
    Console::out(fmt::format("configuration: {}\n", origin));
    if (config.isDictionary()) {
        Console::out("features\n");
        for (const auto& entry : config.dictionary().get(kVDPluginConfigFeaturesKey).dictionary())
            Console::out(fmt::format("  {:<28} {}\n", entry.key.stringView(), Json::write(entry.value)));
    }
    if (plugin) {
        Console::out(fmt::format("code preferences ({} items)\n", plugin->codePrefItems.size()));
        for (const auto& item : plugin->codePrefItems)
            Console::out(itemLine(*item));
    }
    Console::out(fmt::format("user settings ({} in {})\n", kVPUserStoredConfigKey,
                             UserDefaults::standardUserDefaults().file().string()));
    if (user.empty()) Console::out("  none\n");
    for (const auto& entry : user)
        Console::out(fmt::format("  {:<28} {}\n", entry.key.stringView(), Json::write(entry.value)));
}

int showConfig(const ConfigOptions& o, VPPluginConfigManager& manager) {
    std::string origin;
    int exitCode = kExitOK;
    if (manager.readLocalConfig()) {
        origin = manager.localConfigResourcePath().string();
    } else {
        std::string folders;
        for (const auto& folder : VPConfigManager::resourceFolders())
            folders += (folders.empty() ? "" : ", ") + folder.string();
        Console::warning(fmt::format("no readable local configuration \"{}.json\" (looked in {})",
                                     manager.localConfigResourceName(), folders));
        origin = "none";
        exitCode = kExitFailure;
    }
    if (o.refresh) {
        const std::string address = manager.remoteConfigURL();
        bool done = false;
        std::string failure;
        manager.setRemoteLoadHandler([&](std::string_view why) {
            failure = why;
            done = true;
        });
        manager.loadRemoteConfig();
        if (!runMainLoopUntil([&] { return done; }, kRemoteWait)) failure = "no answer in time";
        manager.setRemoteLoadHandler(nullptr);
        if (failure.empty()) {
            origin += ", merged with " + address;
        } else {
            Console::warning(
                fmt::format("the remote configuration {} was not applied: {}", address, failure));
            exitCode = kExitFailure;
        }
    }
    const auto plugin = manager.pluginConfig();
    const Value config = configDictionary(plugin);
    const Dictionary user = storedUserSettings();
    if (o.json) {
        Console::out(
            Json::write(Value(Dictionary{{"config", config},
                                         {"user", user.isNil() ? Value(Dictionary::create()) : Value(user)}}),
                        true) +
            "\n");
    } else {
        printConfig(config, plugin, origin, user);
    }
    return exitCode;
}

// VALUE as JSON when it parses, else as text; for a setting that takes text, the text as given.
std::optional<Value> settingValue(const std::string& key, const std::string& text) {
    Value value = Json::tryParse(text, Json::ReadOptions{.allowFragments = true});
    if (value.isNil()) value = Value(text);
    const KnownSetting* known = knownSetting(key);
    if (!known) return value;
    switch (known->kind) {
    case SettingKind::Text:
        return value.isString() ? value : Value(text);
    case SettingKind::Flag:
        if (value.isBool()) return value;
        Console::error(fmt::format("{} takes true or false, not {}", key, text));
        return std::nullopt;
    case SettingKind::TextList:
        if (isTextList(value)) return value;
        Console::error(fmt::format("{} takes a JSON array of strings, such as '[\"flexbox_layout\"]', not {}",
                                   key, text));
        return std::nullopt;
    }
    return value;
}

int setSetting(const ConfigOptions& o, VPPluginConfigManager& manager) {
    if (o.key.empty()) {
        Console::error("KEY must not be empty");
        return kExitUsage;
    }
    const auto value = settingValue(o.key, o.value);
    if (!value) return kExitUsage;
    if (!knownSetting(o.key))
        Console::warning(fmt::format("\"{}\" is not a setting the library reads", o.key));
    if (o.key == kVPFastModelProcessingEnabledKey) {
        manager.setFastModelProcessingEnabled(value->boolValue());
    } else {
        manager.userStoredConfig()->setConfigValue(*value, o.key);
    }
    // The store says nothing when it can't write: look at what it holds.
    if (!(storedUserSettings().get(o.key) == *value)) {
        Console::error(fmt::format("cannot write the user settings to {}",
                                   UserDefaults::standardUserDefaults().file().string()));
        return kExitFailure;
    }
    Console::summary(fmt::format("{} = {}", o.key, Json::write(*value)));
    return kExitOK;
}

int unsetSetting(const ConfigOptions& o, VPPluginConfigManager& manager) {
    if (!manager.userStoredConfig()->userConfig().contains(o.key)) {
        Console::summary(fmt::format("{} was not set", o.key));
        return kExitOK;
    }
    manager.userStoredConfig()->setConfigValue(Value(), o.key);
    if (storedUserSettings().contains(o.key)) {
        Console::error(fmt::format("cannot write the user settings to {}",
                                   UserDefaults::standardUserDefaults().file().string()));
        return kExitFailure;
    }
    Console::summary(fmt::format("{} removed", o.key));
    return kExitOK;
}

int runConfig(const ConfigOptions& o) {
    const auto manager = VPPluginConfigManager::shared();
    if (!manager) {
        Console::error("the bound configuration manager is not the plugin's");
        return kExitFailure;
    }
    if (o.set->parsed()) return setSetting(o, *manager);
    if (o.unset->parsed()) return unsetSetting(o, *manager);
    if (o.refresh && manager->remoteConfigURL().empty()) {
        Console::error("--refresh: no remote configuration address; set \"remoteConfigBaseURL\" in host.json "
                       "or VELMO_CONFIG_URL");
        return kExitUsage;
    }
    return showConfig(o, *manager);
}

} // namespace

CommandRun addConfigCommand(CLI::App& app) {
    auto options = std::make_shared<ConfigOptions>();
    auto* cmd = app.add_subcommand("config", "Print the configuration in force and the user's settings, or "
                                             "change a setting");
    cmd->add_flag("--json", options->json, "Print {\"config\": ..., \"user\": ...} as JSON");
    cmd->add_flag("--refresh", options->refresh, "Merge the remote configuration over the local one first");
    cmd->require_subcommand(0, 1);
    options->set = cmd->add_subcommand("set", "Change a user setting, kept at once");
    options->set->add_option("KEY", options->key, "The setting's name")->required();
    options->set->add_option("VALUE", options->value, "Read as JSON when it parses, else as text")
        ->required();
    options->unset = cmd->add_subcommand("unset", "Remove a user setting");
    options->unset->add_option("KEY", options->key, "The setting's name")->required();
    return [options] { return runConfig(*options); };
}

} // namespace velmo::cli
