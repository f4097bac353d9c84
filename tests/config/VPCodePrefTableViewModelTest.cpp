#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/config/VPCodePrefTableViewModel.h"
#include "velmo/config/VPPluginConfigManager.h"
#include "velmo/foundation/Json.h"

namespace velmo {
namespace {

using Items = std::vector<std::shared_ptr<VDCodePrefConfigItemObject>>;

Items items(const std::string& json) {
    const auto config = VDBaseObject::modelFromValue<VDPluginConfigObject>(
        Json::parse(R"({"available_code_optimizations": )" + json + "}"));
    return config->codePrefItems;
}

std::string checkboxes(int count) {
    std::string list = "[";
    for (int i = 0; i < count; ++i)
        list +=
            std::string(i ? ", " : "") + R"({"type": "checkbox", "value": "v)" + std::to_string(i) + "\"}";
    return list + "]";
}

class CodePrefTest : public ::testing::Test {
protected:
    void SetUp() override {
        UserDefaults::standardUserDefaults().removeObjectForKey(kVPUserStoredConfigKey);
        manager_ = VPPluginConfigManager::shared();
        ASSERT_TRUE(manager_);
        manager_->userStoredConfig()->setUserConfig(Dictionary::create());
    }
    std::shared_ptr<VPPluginConfigManager> manager_;
};

TEST_F(CodePrefTest, RowsSeparatorsAndHeightsFollowTheItems) {
    struct Case {
        std::string items;
        std::vector<std::uint32_t> rowTypes;
        double tableHeight;
    };
    const Case cases[] = {
        {"[]", {}, 40},
        {R"([{"type": "title"}])", {1}, 30 + 8 + 40},
        // No separator before the first two items, one before each later title.
        {R"([{"type": "title"}, {"type": "checkbox"}, {"type": "title"}])",
         {1, 3, 0, 1},
         30 + 30 + 1 + 30 + 4 * 8 + 40},
        {R"([{"type": "title"}, {"type": "title"}, {"type": "notification"}])",
         {1, 1, 6},
         30 + 30 + 40 + 3 * 8 + 40},
        // Kinds that aren't shown take no height; unknown kinds are separators.
        {R"([{"type": "switch"}, {"type": "dropdown"}, {"type": "link"}, {"type": "bogus"}])",
         {2, 4, 5, 0},
         0 + 0 + 0 + 1 + 4 * 8 + 40},
        {checkboxes(20), std::vector<std::uint32_t>(20, 3), 260},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.items);
        const auto table = VPCodePrefTableViewModel::make(items(c.items));
        std::vector<std::uint32_t> types;
        for (const auto& row : table->rows())
            types.push_back(row->type());
        EXPECT_EQ(types, c.rowTypes);
        EXPECT_EQ(table->numOfRows(), c.rowTypes.size());
        EXPECT_EQ(table->tableHeight(), c.tableHeight);
        EXPECT_EQ(table->viewHeight(), c.tableHeight + 40);
        EXPECT_FALSE(table->rowAtIndex(c.rowTypes.size()));
    }
    const auto table =
        VPCodePrefTableViewModel::make(items(R"([{"type": "title"}, {"type": "x"}, {"type": "title"}])"));
    EXPECT_FALSE(table->rowAtIndex(2)->model()) << "a separator has no item";
    EXPECT_STREQ(table->rowAtIndex(2)->cellIdentifier(), kVPCodePrefSeparatorCellID);
    EXPECT_STREQ(table->rowAtIndex(3)->cellIdentifier(), kVPCodePrefTitleCellID);
}

TEST_F(CodePrefTest, CheckboxesStartFromTheStoredValuesElseTheirDefault) {
    manager_->setEnabledCodePrefValues(Array{Value("b"), Value("gone")});
    const auto table = VPCodePrefTableViewModel::make(items(R"([
        {"type": "checkbox", "value": "a", "default": "true"},
        {"type": "checkbox", "value": "b", "default": "false"},
        {"type": "checkbox", "value": "c", "default": "1"},
        {"type": "checkbox", "value": "d", "default": "0"},
        {"type": "checkbox", "value": "e"},
        {"type": "notification", "text": "New", "badge_title": "B", "link_title": "L", "value": "b"},
        {"type": "title", "text": "T", "badge_title": "B"}])"));
    std::vector<Value> enabled;
    for (const auto& row : table->rows())
        enabled.push_back(row->enabled());
    EXPECT_EQ(enabled, (std::vector<Value>{Value(true), Value(true), Value(true), Value(false), Value(false),
                                           Value(), Value(), Value()}));
    EXPECT_EQ(table->rowAtIndex(5)->badgeTitle(), "B");
    EXPECT_EQ(table->rowAtIndex(5)->linkTitle(), "L");
    EXPECT_EQ(table->rowAtIndex(6)->type(), 0u) << "a separator before the later title";
    EXPECT_FALSE(table->rowAtIndex(7)->badgeTitle()) << "only notifications carry a badge";
    EXPECT_EQ(table->rowAtIndex(7)->title(), "T");
}

TEST_F(CodePrefTest, ChangesReportTheHeldItemsWhichTheNextTableReads) {
    const std::string list = R"([{"type": "checkbox", "value": "a", "default": "true"},
                                 {"type": "checkbox", "value": "b"},
                                 {"type": "checkbox", "value": "c"}])";
    const auto table = VPCodePrefTableViewModel::make(items(list));
    EXPECT_TRUE(table->enabledCodePrefsItems().isNil());
    EXPECT_EQ(table->enabledCodePrefsSet().size(), 3u) << "every checkbox starts held, on or off";

    // Whoever keeps the choice stores the values at each change.
    int heard = 0;
    table->subscribe("enabledCodePrefsItems", [&](const Value& v) {
        ++heard;
        const auto changed = v.objectAs<VPCodePrefTableViewModel>();
        manager_->setEnabledCodePrefValues(changed->enabledCodePrefValues());
    });
    table->rowAtIndex(0)->setEnabled(Value(false));
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(manager_->enabledCodePrefValues(), (Array{Value("b"), Value("c")}))
        << "the first change reports the other checkboxes as on";
    table->rowAtIndex(2)->setEnabled(Value(false));
    table->rowAtIndex(0)->setEnabled(Value(true));
    EXPECT_EQ(heard, 3);
    EXPECT_EQ(manager_->enabledCodePrefValues(), (Array{Value("b"), Value("a")}));

    const auto next = VPCodePrefTableViewModel::make(items(list));
    EXPECT_EQ(next->rowAtIndex(1)->enabled(), Value(true)) << "stored";
    EXPECT_EQ(next->rowAtIndex(2)->enabled(), Value(false));
}

TEST_F(CodePrefTest, OpeningThePopUpMarksTheNotificationSeen) {
    manager_->setConfig(VDBaseObject::modelFromValue<VDPluginConfigObject>(
        Json::parse(R"({"available_code_optimizations": [{"type": "notification", "notif_id": "n7"}]})")));
    const auto table = VPCodePrefTableViewModel::make(manager_->pluginConfig()->codePrefItems);
    table->markNotificationSeen();
    EXPECT_EQ(manager_->lastCodePrefNotifID(), "n7");
    EXPECT_FALSE(manager_->shouldShowNotifBadge());
}

} // namespace
} // namespace velmo
