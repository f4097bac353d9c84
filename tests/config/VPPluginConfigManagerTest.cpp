#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/config/VPPluginConfigManager.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/VPError.h"

namespace velmo {
namespace {

namespace fs = std::filesystem;

std::shared_ptr<VDPluginConfigObject> configWithNotification(const char* notifID) {
    std::string items = R"([{"type": "title", "text": "Layout"})";
    if (notifID) items += std::string(R"(, {"type": "notification", "notif_id": ")") + notifID + "\"}";
    return VDBaseObject::modelFromValue<VDPluginConfigObject>(
        Json::parse(R"({"available_code_optimizations": )" + items + "]}"));
}

class PluginSettingsTest : public ::testing::Test {
protected:
    // Every manager of the process shares the standard store: each test starts without settings.
    void SetUp() override { UserDefaults::standardUserDefaults().removeObjectForKey(kVPUserStoredConfigKey); }
    Value stored() { return UserDefaults::standardUserDefaults().objectForKey(kVPUserStoredConfigKey); }
};

TEST_F(PluginSettingsTest, SettingsAreWrittenThroughAsOneDictionaryAndReadByANewManager) {
    const auto first = std::make_shared<VPPluginConfigManager>();
    EXPECT_TRUE(first->fastModelProcessingEnabled()) << "true before the user chose";
    EXPECT_EQ(stored(), Json::parse(R"({"fastModelProcessingEnabled": true})")) << "and stored so";
    first->setEnabledCodePrefValues(Array{Value("flexbox"), Value("rem_units")});
    first->setLastCodePrefNotifID("n1");
    first->setFastModelProcessingEnabled(false);
    EXPECT_EQ(stored(), Json::parse(R"({"fastModelProcessingEnabled": false,
        "enabledCodePrefValues": ["flexbox", "rem_units"], "lastCodePrefNotifID": "n1"})"));

    const auto second = std::make_shared<VPPluginConfigManager>();
    EXPECT_EQ(second->enabledCodePrefValues(), (Array{Value("flexbox"), Value("rem_units")}));
    EXPECT_EQ(second->lastCodePrefNotifID(), "n1");
    EXPECT_FALSE(second->fastModelProcessingEnabled());
    EXPECT_FALSE(second->isFastModelProcessingEnabled());
    second->setEnabledCodePrefValues(Array());
    EXPECT_FALSE(stored().dictionary().contains(kVPEnabledCodePrefValuesKey)) << "nil removes the key";
}

TEST(VPUserStoredConfig, OnlyValuesThatCanBeKeptAreStoredAndRemovingNothingWritesNothing) {
    const fs::path folder = Files::makeTemporaryDirectory("velmo-user-config");
    UserDefaults store(folder / "defaults.json");
    VPUserStoredConfig config(store);
    EXPECT_TRUE(config.userConfig().empty());
    EXPECT_EQ(store.objectForKey(kVPUserStoredConfigKey), Value(Dictionary::create()))
        << "written at first read";

    fs::remove(store.file());
    config.setConfigValue(Value(), "missing");
    config.setConfigValue(Value(1), "");
    EXPECT_FALSE(fs::exists(store.file())) << "nothing to remove, nothing written";

    const auto item =
        VDBaseObject::modelFromValue<VDCodePrefConfigItemObject>(Json::parse(R"({"type": "title"})"));
    config.setConfigValue(Value(VPError::make("d", 1)), "plain object"); // not JSON, not serializable
    config.setConfigValue(Value(item), "item");
    config.setConfigValue(Value(Array{Value("a")}), "list");
    EXPECT_FALSE(config.userConfig().contains("plain object"));
    EXPECT_EQ(config.userConfig().get("item").object(), item) << "the value itself is kept";
    EXPECT_EQ(store.objectForKey(kVPUserStoredConfigKey),
              Json::parse(R"({"item": {"type": "title"}, "list": ["a"]})"));
    fs::remove_all(folder);
}

TEST_F(PluginSettingsTest, TheBadgeShowsAnUnseenNotificationUntilItIsSeen) {
    const auto manager = std::make_shared<VPPluginConfigManager>();
    manager->setConfig(configWithNotification("n2"));
    int heard = 0;
    manager->subscribe("shouldShowNotifBadge", [&](const Value& v) {
        EXPECT_EQ(v.object(), manager);
        ++heard;
    });
    EXPECT_TRUE(manager->shouldShowNotifBadge()) << "never seen";

    struct Step {
        std::optional<std::string> seen;
        bool badge;
        int heard;
    };
    const Step steps[] = {{"n2", false, 1}, {"n1", true, 2}, {std::nullopt, true, 2}, {"n2", false, 3}};
    for (const auto& step : steps) {
        manager->setLastCodePrefNotifID(step.seen);
        EXPECT_EQ(manager->shouldShowNotifBadge(), step.badge) << step.seen.value_or("(none)");
        EXPECT_EQ(heard, step.heard) << step.seen.value_or("(none)");
    }
    // Computed once: a newer configuration doesn't change the badge by itself.
    manager->setConfig(configWithNotification("n3"));
    EXPECT_FALSE(manager->shouldShowNotifBadge());

    const auto fresh = std::make_shared<VPPluginConfigManager>();
    fresh->setConfig(configWithNotification(nullptr));
    EXPECT_FALSE(fresh->shouldShowNotifBadge()) << "no notification, no badge";
    fresh->setLastCodePrefNotifID("n1");
    EXPECT_FALSE(fresh->shouldShowNotifBadge());

    int fastHeard = 0;
    fresh->subscribe("isFastModelProcessingEnabled", [&](const Value&) { ++fastHeard; });
    fresh->setFastModelProcessingEnabled(false);
    EXPECT_EQ(fastHeard, 1);
    EXPECT_FALSE(fresh->isFastModelProcessingEnabled());
}

} // namespace
} // namespace velmo
