#include <gtest/gtest.h>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelViewState.h"

using namespace velmo;

class VDModelViewUpgradeTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelViewUpgradeTest, StateZeroGetsANameAndTheEntryPlaysAtOnce) {
    // An old timeline component: no default state, one state "initial" taken, a transition from
    // nothing and one into nothing.
    auto box = view("box");
    auto component = view("comp", {box});
    auto host = VVHostTree::attach(component);
    component->setTimelineType("timeline");
    auto taken = VDModelViewState::create();
    taken->setName("initial");
    taken->setOverrides(Json::parse(R"({"this;box": {"x": 40}})").dictionary());
    component->setStates(Array{Value(taken)});
    auto fromNothing = VDModelActionScriptAnimation::create();
    fromNothing->setTargetStateName("initial");
    fromNothing->addListenerWithTarget("this", "click");
    auto intoNothing = VDModelActionScriptAnimation::create();
    intoNothing->setOriginStateName("initial");
    auto other = VDModelActionScriptAnimation::create();
    other->setOriginStateName("x");
    other->setTargetStateName("y");
    component->setActions(Array{Value(other), Value(intoNothing), Value(fromNothing)});

    ASSERT_TRUE(component->migrateStateZero());
    EXPECT_EQ(component->defaultStateName(), "initial1");
    EXPECT_EQ(component->states()[0].objectAs<VDModelViewState>()->name(), "initial1");
    EXPECT_EQ(fromNothing->originStateName(), "initial1");
    EXPECT_EQ(intoNothing->targetStateName(), "initial1");
    EXPECT_FALSE(component->migrateStateZero()) << "a default state means nothing to do";

    // The entry from no state is first, on one timer, and immediate; again on a second run.
    for (int run = 0; run < 2; ++run) {
        component->updateBackwardCompatibility();
        const auto entry = component->actions()[0].objectAs<VDModelActionScriptAnimation>();
        ASSERT_TRUE(entry);
        EXPECT_FALSE(entry->originStateName());
        EXPECT_EQ(entry->targetStateName(), "initial1");
        ASSERT_EQ(entry->listeners().size(), 1u);
        const auto timer = entry->listeners()[0].objectAs<VDModelEventListener>();
        EXPECT_EQ(timer->event(), "timer");
        EXPECT_FALSE(timer->target());
        for (const Value& t : entry->timelines()) {
            for (const Value& k : t.objectAs<VDModelAnimationTimeline>()->animations()) {
                EXPECT_EQ(k.objectAs<VDModelAnimation>()->duration(), 0.0f);
                EXPECT_EQ(k.objectAs<VDModelAnimation>()->delay(), 0.0f);
            }
        }
        EXPECT_EQ(component->actions().size(), 4u) << "a new entry when none starts from no state";
    }

    auto plain = view("plain");
    EXPECT_FALSE(plain->migrateStateZero()) << "not a timeline component";
    EXPECT_FALSE(plain->defaultStateName());
}

TEST_F(VDModelViewUpgradeTest, DefaultStateNamesPointAtAState) {
    struct Case {
        const char* timelineType;
        const char* defaultName; // nullptr: none
        bool withStates;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"timeline", "gone", true, "first"},    {"timeline", "gone", false, nullptr},
        {"animation", "second", true, "first"}, {"timeline", "second", true, "second"},
        {"timeline", nullptr, true, nullptr},
    };
    for (const auto& c : cases) {
        auto v = view("v");
        v->setTimelineType(c.timelineType);
        if (c.withStates) {
            auto first = VDModelViewState::create(), second = VDModelViewState::create();
            first->setName("first");
            second->setName("second");
            v->setStates(Array{Value(first), Value(second)});
        }
        v->setDefaultStateName(c.defaultName ? std::optional<std::string>(c.defaultName) : std::nullopt);
        v->validateDefaultStateName();
        EXPECT_EQ(v->defaultStateName(), c.expected ? std::optional<std::string>(c.expected) : std::nullopt)
            << c.timelineType << " " << (c.defaultName ? c.defaultName : "(nil)");
    }
}
