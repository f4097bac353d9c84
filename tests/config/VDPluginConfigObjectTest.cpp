#include <optional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/config/VDPluginConfigObject.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"

namespace velmo {
namespace {

std::shared_ptr<VDPluginConfigObject> read(const std::string& json) {
    return VDBaseObject::modelFromValue<VDPluginConfigObject>(Json::parse(json));
}

TEST(VDPluginConfigObject, ValuesOfTheWrongKindCountAsAbsent) {
    struct Case {
        const char* document;
        bool fastPreviewExport;
        Value ratingMax;
        std::size_t items;
    };
    const Case cases[] = {
        {R"({"features": {"fast_preview_export": true, "preview_rating_max_per_day": 2},
             "available_code_optimizations": [{"type": "title"}], "other": 1})",
         true, Value(2), 1},
        // Text that reads as a flag or a number is taken, as the tolerant getters take it.
        {R"({"features": {"fast_preview_export": "TRUE", "preview_rating_max_per_day": "3"}})", true,
         Value(3), 0},
        {R"({"features": {"fast_preview_export": [true], "preview_rating_max_per_day": {}}})", false, Value(),
         0},
        {R"({"features": "all on", "available_code_optimizations": {"type": "title"}})", false, Value(), 0},
        {R"({"features": {"preview_rating_max_per_day": null}, "available_code_optimizations": ["x", 1]})",
         false, Value(), 2},
    };
    for (const auto& c : cases) {
        const auto config = read(c.document);
        ASSERT_TRUE(config) << c.document;
        EXPECT_EQ(config->fastPreviewExportEnabled, c.fastPreviewExport) << c.document;
        EXPECT_EQ(config->ratePreviewRatingMax, c.ratingMax) << c.document;
        EXPECT_EQ(config->codePrefItems.size(), c.items) << c.document;
    }
    // Elements that aren't objects read as items with nothing in them: separators.
    EXPECT_EQ(read(R"({"available_code_optimizations": ["x"]})")->codePrefItems[0]->type, 0u);
    EXPECT_FALSE(read("{}")->notifItem());
    EXPECT_FALSE(VDBaseObject::modelFromValue<VDPluginConfigObject>(Json::parse("[1]")));
}

TEST(VDPluginConfigObject, SerializesOnlyWithTheDailyLimitAndCopiesWithoutTheRatingFields) {
    const auto config = read(R"({"features": {"fast_preview": true, "fast_preview_export": true,
        "fast_processing_enabled": true, "preview_rating_enabled": true, "preview_rating_max_per_day": 2},
        "available_code_optimizations": [{"type": "dropdown", "values": [{"text": "A", "value": "a"}]},
                                         {"type": "notification", "notif_id": "n1"}]})");
    EXPECT_EQ(read(Json::write(config->serialize()))->serialize(), config->serialize());
    EXPECT_EQ(config->notifItem()->notifID, "n1");

    const auto copy = std::static_pointer_cast<VDPluginConfigObject>(config->copy());
    EXPECT_TRUE(copy->fastPreviewEnabled && copy->fastPreviewExportEnabled && copy->bgModelProcessingEnabled);
    EXPECT_FALSE(copy->ratePreviewEnabled);
    EXPECT_TRUE(copy->ratePreviewRatingMax.isNil());
    ASSERT_EQ(copy->codePrefItems.size(), 2u);
    EXPECT_NE(copy->codePrefItems[0], config->codePrefItems[0]);
    EXPECT_NE(copy->codePrefItems[0]->values[0], config->codePrefItems[0]->values[0]) << "deep";
    EXPECT_EQ(copy->codePrefItems[0]->serialize(), config->codePrefItems[0]->serialize());
    // Without the limit the features can't be written: a copy can't be serialized.
    EXPECT_THROW(copy->serialize(), std::invalid_argument);
}

TEST(VDCodePrefConfigItemObject, KindsAndDefaultsReadAsTheTableSays) {
    const std::pair<const char*, std::uint32_t> kinds[] = {
        {"", 0},     {"title", 1},        {"switch", 2},   {"checkbox", 3}, {"dropdown", 4},
        {"link", 5}, {"notification", 6}, {"Checkbox", 0}, {"popup", 0},
    };
    for (const auto& [name, type] : kinds) {
        EXPECT_EQ(VDCodePrefConfigItemObject::typeFromString(name), type) << name;
        if (type != 0 || *name == '\0') {
            EXPECT_EQ(VDCodePrefConfigItemObject::stringFromType(type), name);
        }
    }
    EXPECT_EQ(VDCodePrefConfigItemObject::stringFromType(7), "");

    const std::pair<std::optional<std::string>, bool> defaults[] = {
        {"true", true}, {"1", true},   {"Yes", true},    {"  007", true}, {"t", true},
        {"0", false},   {"no", false}, {"false", false}, {"", false},     {std::nullopt, false},
    };
    for (const auto& [text, on] : defaults) {
        VDCodePrefConfigItemObject item;
        item.defaultValue = text;
        EXPECT_EQ(item.defaultValueIsOn(), on) << text.value_or("(none)");
    }
    // A "type" that isn't text and labels that aren't text read as absent.
    const auto item = VDBaseObject::modelFromValue<VDCodePrefConfigItemObject>(
        Json::parse(R"({"type": 3, "text": 5, "value": "v", "default": true})"));
    EXPECT_EQ(item->type, 0u);
    EXPECT_FALSE(item->text);
    EXPECT_EQ(item->value, "v");
    EXPECT_FALSE(item->defaultValue);
}

TEST(PluginConfigResource, CarriesEveryFeatureAndCanBeRefreshedOver) {
    const auto text = Files::read(std::filesystem::path(VELMO_SOURCE_RESOURCES_DIR) / "plugin_config.json");
    ASSERT_TRUE(text);
    const Value document = Json::parse(*text);
    const Dictionary features = document.dictionary().get(kVDPluginConfigFeaturesKey).dictionary();
    for (const char* key : {kVDPluginConfigFastPreviewKey, kVDPluginConfigFastPreviewExportKey,
                            kVDPluginConfigFastProcessingKey, kVDPluginConfigPreviewRatingKey,
                            kVDPluginConfigPreviewRatingMaxKey})
        EXPECT_TRUE(features.contains(key)) << key;
    const auto config = VDBaseObject::modelFromValue<VDPluginConfigObject>(document);
    // A remote refresh starts from the serialized configuration, which needs the daily limit.
    EXPECT_NO_THROW(config->serialize());
    ASSERT_TRUE(config->notifItem());
    EXPECT_TRUE(config->notifItem()->notifID);
    EXPECT_GE(config->codePrefItems.size(), 5u);
}

} // namespace
} // namespace velmo
