#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelViewConstraints.h"

using namespace velmo;
using Rule = VDModelViewConstraints::Rule;

namespace {
std::shared_ptr<VDModelConstraint> rule(bool enabled, float multiplier, float constant) {
    auto c = VDModelConstraint::create();
    c->setEnabled(enabled);
    c->setMultiplier(multiplier);
    c->setConstant(constant);
    return c;
}

std::shared_ptr<VDModelViewConstraints> withEnabled(std::initializer_list<Rule> rules) {
    auto set = VDModelViewConstraints::create();
    for (Rule r : rules)
        set->rule(r)->setEnabled(true);
    return set;
}
} // namespace

TEST(VDModelConstraint, EqualitySimilarityAndHash) {
    const struct {
        const char* name;
        std::shared_ptr<VDModelConstraint> a, b;
        bool equal, similar;
    } cases[] = {
        {"disabled with different numbers", rule(false, 0, 5), rule(false, 0, 7), true, true},
        {"constants 9.99 apart", rule(true, 1, 0), rule(true, 1, 9.99f), false, true},
        {"constants 10 apart", rule(true, 1, 0), rule(true, 1, 10), false, false},
        {"multipliers 0.04 apart", rule(true, 1.0f, 0), rule(true, 1.04f, 0), false, true},
        {"multipliers 0.1 apart", rule(true, 1.0f, 0), rule(true, 1.1f, 0), false, false},
        {"one enabled", rule(true, 0, 0), rule(false, 0, 0), false, false},
        {"same numbers", rule(true, 2, 3), rule(true, 2, 3), true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.a->isEqual(*c.b), c.equal);
        EXPECT_EQ(c.b->isEqual(*c.a), c.equal);
        EXPECT_EQ(c.a->isSimilar(*c.b), c.similar);
    }
    EXPECT_EQ(rule(true, 1.5f, 2.75f)->hash(), 15002u);
    EXPECT_NE(rule(false, 0, 5)->hash(), rule(false, 0, 7)->hash()) << "equal disabled rules hash apart";
    EXPECT_EQ(rule(true, 0, -5)->hash(), static_cast<std::size_t>(-5)) << "negative values wrap";
    EXPECT_EQ(rule(true, 1e15f, 0)->hash(), static_cast<std::size_t>(1e19f)) << "the whole unsigned range";
}

TEST(VDModelConstraint, ScalingWorksInDoublePrecision) {
    auto c = rule(true, 3, 10);
    c->applyScaleFactor(2);
    EXPECT_EQ(c->constant(), 20.0f);
    EXPECT_EQ(c->multiplier(), 3.0f);
    auto fine = rule(true, 1, 0.1f);
    fine->applyScaleFactor(3.0);
    EXPECT_EQ(fine->constant(), static_cast<float>(static_cast<double>(0.1f) * 3.0));
}

TEST(VDModelViewConstraints, NewSetIsEmptyWithEveryRule) {
    auto set = VDModelViewConstraints::create();
    for (Rule r : VDModelViewConstraints::kRules)
        ASSERT_TRUE(set->rule(r));
    EXPECT_TRUE(set->isEmpty());
    EXPECT_TRUE(set->automatic());
    EXPECT_EQ(set->scaleFactor(), 1.0);
    set->setAutomatic(false);
    EXPECT_FALSE(set->isEmpty()) << "not automatic, though no rule is on";

    auto ratio = withEnabled({Rule::AspectRatio});
    EXPECT_FALSE(ratio->isEmpty());
    EXPECT_TRUE(ratio->isEmptyIgnoringRatio());
}

TEST(VDModelViewConstraints, LightEncodingLeavesDisabledRulesOut) {
    auto set = VDModelViewConstraints::create();
    EXPECT_EQ(set->lightFieldNames(),
              (VDModel::NameList{"modelID", "md5", "automatic", "scaleFactor", "translated"}));
    set->left()->setEnabled(true);
    set->left()->setConstant(8);
    set->top()->setConstant(99); // disabled: dropped from the JSON
    const Dictionary encoded = set->toDictionary();
    EXPECT_EQ(Value(encoded),
              Json::parse(R"({"model_version":0,"model_class":"VDModelViewConstraints","automatic":1,
        "left":{"model_version":0,"model_class":"VDModelConstraint","enabled":1,"multiplier":0,"constant":8},
        "scaleFactor":1})"));
    auto back =
        std::dynamic_pointer_cast<VDModelViewConstraints>(VDModelDecoder::modelObjectFromDictionary(encoded));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->top()->constant(), 0.0f) << "comes back as a new disabled rule";
    EXPECT_TRUE(back->isEqual(*set));
    const auto all = withEnabled({Rule::Top, Rule::Bottom, Rule::Right, Rule::Left, Rule::Height, Rule::Width,
                                  Rule::AspectRatio, Rule::MinWidth, Rule::MaxWidth, Rule::MinHeight,
                                  Rule::MaxHeight, Rule::CenterVertically, Rule::CenterHorizontally});
    EXPECT_EQ(all->lightFieldNames(), all->fieldNames());
}

TEST(VDModelViewConstraints, EqualityAndSimilarity) {
    auto a = withEnabled({Rule::Top});
    auto b = withEnabled({Rule::Top});
    b->setScaleFactor(3);
    b->setTranslated(1);
    EXPECT_TRUE(a->isEqual(*b)) << "scale and translation play no part";
    b->top()->setConstant(5);
    EXPECT_FALSE(a->isEqual(*b));
    EXPECT_TRUE(a->isSimilar(*b));
    b->top()->setConstant(50);
    EXPECT_FALSE(a->isSimilar(*b));
    auto holed = withEnabled({Rule::Top});
    holed->setRule(Rule::Width, nullptr);
    EXPECT_FALSE(a->isEqual(*holed)) << "a nil rule is never equal";
    EXPECT_FALSE(holed->isEqual(*a));
    EXPECT_TRUE(a->isSimilar(*holed)) << "a nil rule there reads as a blank one";
    EXPECT_FALSE(holed->isSimilar(*a));
    auto c = withEnabled({});
    c->setAutomatic(false);
    EXPECT_FALSE(withEnabled({})->isEqual(*c));
    EXPECT_FALSE(withEnabled({})->isSimilar(*c));
    EXPECT_EQ(withEnabled({Rule::Top})->hash(), a->hash());
}

TEST(VDModelViewConstraints, NegativeValuesOnTheEdgesOnly) {
    const struct {
        Rule rule;
        bool enabled;
        float multiplier, constant;
        bool negative;
    } cases[] = {
        {Rule::Left, true, 0, -5, true},   {Rule::Left, true, 1, -5, false},
        {Rule::Top, true, -1, 0, true},    {Rule::Right, false, 0, -5, false},
        {Rule::Width, true, 0, -5, false}, {Rule::Bottom, true, 0, 0, false},
    };
    for (const auto& c : cases) {
        auto set = VDModelViewConstraints::create();
        set->rule(c.rule)->setEnabled(c.enabled);
        set->rule(c.rule)->setMultiplier(c.multiplier);
        set->rule(c.rule)->setConstant(c.constant);
        EXPECT_EQ(set->hasNegativeValues(), c.negative) << static_cast<int>(c.rule);
    }
}

TEST(VDModelViewConstraints, Presets) {
    auto set = VDModelViewConstraints::create();
    for (Rule r : VDModelViewConstraints::kRules) {
        set->rule(r)->setEnabled(true);
        set->rule(r)->setMultiplier(2);
        set->rule(r)->setConstant(3);
    }
    set->setAutomatic(false);
    set->fillContainer();
    for (Rule r : VDModelViewConstraints::kRules) {
        const bool edge = r == Rule::Top || r == Rule::Bottom || r == Rule::Left || r == Rule::Right;
        EXPECT_EQ(set->rule(r)->enabled(), edge);
        EXPECT_EQ(set->rule(r)->multiplier(), edge ? 1.0f : 2.0f);
        EXPECT_EQ(set->rule(r)->constant(), edge ? 0.0f : 3.0f);
    }
    EXPECT_FALSE(set->automatic());

    set->disableAll();
    for (Rule r : VDModelViewConstraints::kRules)
        EXPECT_FALSE(set->rule(r)->enabled());
    EXPECT_EQ(set->minWidth()->constant(), 0.0f);
    EXPECT_EQ(set->minWidth()->multiplier(), 2.0f);
    EXPECT_EQ(set->width()->multiplier(), 0.0f);
    EXPECT_EQ(set->width()->constant(), 3.0f);
    EXPECT_EQ(set->aspectRatio()->multiplier(), 2.0f);
    EXPECT_EQ(set->top()->multiplier(), 0.0f);
}

TEST(VDModelViewConstraints, CloneWithScaleFactorChangesTheReceiver) {
    auto set = VDModelViewConstraints::create();
    set->left()->setEnabled(true);
    set->left()->setConstant(10);
    set->top()->setConstant(4); // disabled rules scale too
    set->setRule(Rule::Width, nullptr);
    auto result = set->cloneWithScaleFactor(2);
    EXPECT_EQ(result.get(), set.get());
    EXPECT_EQ(set->left()->constant(), 20.0f);
    EXPECT_EQ(set->top()->constant(), 8.0f);
    EXPECT_EQ(set->scaleFactor(), 1.0);
}

TEST(VDModelViewConstraints, WhatTheRulesFix) {
    const struct {
        std::initializer_list<Rule> rules;
        bool origin, width, height;
    } cases[] = {
        {{Rule::Left}, true, false, false},
        {{Rule::Width, Rule::AspectRatio}, false, true, true},
        {{Rule::Height, Rule::AspectRatio}, false, true, true},
        {{Rule::Left, Rule::Right}, true, true, false},
        {{Rule::Top, Rule::Bottom}, true, false, true},
        {{Rule::CenterHorizontally, Rule::MinHeight}, true, false, true},
        {{Rule::AspectRatio}, false, false, false},
    };
    for (const auto& c : cases) {
        bool o = false, w = false, h = false;
        withEnabled(c.rules)->affectsOrigin(o, w, h);
        EXPECT_EQ(o, c.origin);
        EXPECT_EQ(w, c.width);
        EXPECT_EQ(h, c.height);
    }
}
