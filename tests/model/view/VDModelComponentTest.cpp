#include <gtest/gtest.h>

#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelComponentInstanceData.h"
#include "velmo/model/view/VDModelComponentOverride.h"
#include "velmo/model/view/VDModelProp.h"
#include "velmo/model/view/VDModelView.h"

using namespace velmo;

namespace {

std::shared_ptr<VDModelView> imported(const char* name, const char* importedID,
                                      std::vector<std::shared_ptr<VDModelView>> children = {}) {
    auto v = view(name, std::move(children));
    v->setImportedID(importedID);
    return v;
}

std::shared_ptr<VDModelProp> prop(const char* targetId, const char* name = nullptr) {
    auto p = VDModelProp::create();
    p->setTargetId(targetId);
    if (name) p->setName(name);
    return p;
}

std::shared_ptr<VDModelComponentOverride> override(const char* targetId, Value value = Value("x")) {
    auto o = VDModelComponentOverride::create();
    o->setTargetId(targetId);
    o->setValue(std::move(value));
    return o;
}

} // namespace

class VDModelComponentTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelComponentTest, AnExportLearnsPathsAndNamesOfPropsAndOverrides) {
    // card ─ title (A1)
    //      ├ header ─ title (B2)
    //      └ footer ─ myTitle (C3), group ─ myTitle (D4)
    auto card = view(
        "card", {imported("title", "A1"), view("header", {imported("title", "B2")}),
                 view("footer", {imported("myTitle", "C3"), view("group", {imported("myTitle", "D4")})})});
    auto data = VDModelComponentInstanceData::create();
    data->setProps(Array{Value(prop("A1")), Value(prop("B2")), Value(prop("C3")), Value(prop("D4")),
                         Value(prop("Z9", "Given")), Value(prop("nowhere"))});
    data->setOverrides(Array{Value(override("B2")), Value(override("Q7")),
                             Value(override("D4", Value(Array{Value(override("A1"))})))});
    card->setComponentInstanceData(data);
    card->fixAfterSketchExport();
    EXPECT_EQ(data->owner(), card);

    struct Expected {
        const char* path; // nullptr: none
        const char* name;
    };
    const std::vector<Expected> props = {
        {"title", "title"},
        {"header;title", "title1"},
        {"footer;myTitle", "myTitle"},
        {"footer;group;myTitle", "myTitle"}, // taken names keep their capitals, so they don't block
        {nullptr, "Given"},
        {nullptr, "prop"},
    };
    for (std::size_t i = 0; i < props.size(); ++i) {
        const auto p = data->props()[i].objectAs<VDModelProp>();
        EXPECT_EQ(p->path(), props[i].path ? std::optional<std::string>(props[i].path) : std::nullopt) << i;
        EXPECT_EQ(p->name(), props[i].name) << i;
    }
    const auto first = data->overrides()[0].objectAs<VDModelComponentOverride>();
    EXPECT_EQ(first->path(), "header;title");
    EXPECT_EQ(first->name(), "title1");
    const auto orphan = data->overrides()[1].objectAs<VDModelComponentOverride>();
    EXPECT_FALSE(orphan->path());
    EXPECT_FALSE(orphan->name()) << "an override without a prop of its target has no name";
    const auto nested = data->overrides()[2].objectAs<VDModelComponentOverride>();
    EXPECT_FALSE(nested->value().array()[0].objectAs<VDModelComponentOverride>()->path())
        << "a nested list stays as it came";

    // A record handled once is left alone.
    data->props()[1].objectAs<VDModelProp>()->setName("renamed");
    data->fillOverridesAndPropsAfterExport();
    EXPECT_EQ(first->name(), "title1");
}

TEST_F(VDModelComponentTest, PropNamesAndOverrideLookups) {
    using P = VDModelComponentInstanceData;
    EXPECT_EQ(P::uniquePropNameWithSuggested(std::string(""), {}), "prop");
    EXPECT_EQ(P::uniquePropNameWithSuggested(std::string("prop"), {"prop"}), "prop1");
    EXPECT_EQ(P::uniquePropNameWithSuggested(std::string("prop"), {"prop", "prop1"}), "prop2");
    EXPECT_EQ(P::uniquePropNameWithSuggested(std::nullopt, {}), "prop");

    const auto hit = override("A1", Value());
    const auto later = override("A1", Value("set"));
    const Array list{Value(override("X", Value(Array{Value(hit)}))), Value(later)};
    EXPECT_EQ(VDModelComponentOverride::locateOverrideByTargetId("A1", list), later)
        << "a nested match without a value doesn't count";
    hit->setValue(Value(1));
    EXPECT_EQ(VDModelComponentOverride::locateOverrideByTargetId("A1", list), hit);
    EXPECT_EQ(VDModelComponentOverride::locateOverrideByTargetId("none", list), nullptr);
}

TEST_F(VDModelComponentTest, BordersMoveInsideByGrowingTheConstraints) {
    struct Case {
        const char* position;
        float width;
        float widthConstant, leftConstant;
    };
    for (const Case& c : std::vector<Case>{
             {"center", 4, 14, 8}, {"outside", 4, 18, 6}, {"inside", 4, 10, 10}, {"center", 0, 10, 10}}) {
        auto v = VDModelView::create();
        v->clearConstraints();
        v->constraints()->width()->setEnabled(true);
        v->constraints()->width()->setConstant(10);
        v->constraints()->left()->setEnabled(true);
        v->constraints()->left()->setConstant(10);
        v->setBorderWidth(c.width);
        v->setBorderPosition(c.position);
        v->fixBorderAfterSketchExport();
        v->fixBorderAfterSketchExport(); // the second run changes nothing
        EXPECT_EQ(v->constraints()->width()->constant(), c.widthConstant) << c.position;
        EXPECT_EQ(v->constraints()->left()->constant(), c.leftConstant) << c.position;
        EXPECT_EQ(v->borderPosition(), "inside");
    }
}

TEST_F(VDModelComponentTest, InstanceDataRoundTripsAndMasterDataCannotBeEncoded) {
    auto data = VDModelComponentInstanceData::createWithDictionary(Json::parse(R"({
        "model_class": "VDModelComponentInstanceData", "masterName": "Card",
        "overrides": [{"model_class": "VDModelComponentOverride", "targetId": "A1", "value": [1, 2]}],
        "props": [{"model_class": "VDModelProp", "targetId": "A1", "variableID": "dropped"}]})")
                                                                       .dictionary());
    const Dictionary encoded = data->toDictionary();
    EXPECT_EQ(encoded.get("overrides").array().size(), 1u);
    EXPECT_FALSE(encoded.get("props").array()[0].dictionary().contains("variableID"));
    EXPECT_EQ(modelCopy(data)->masterName(), "Card");

    // The master's list names "overrides": decoding drops it, encoding fails on it.
    auto master = VDModelComponentMasterData::createWithDictionary(
        Json::parse(R"({"model_class": "VDModelComponentMasterData", "masterName": "Card", "overrides": []})")
            .dictionary());
    EXPECT_EQ(master->masterName(), "Card");
    EXPECT_THROW(master->toDictionary(), std::invalid_argument);
    EXPECT_EQ(master->toJson(), "");
}
