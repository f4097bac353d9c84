#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"

using namespace velmo;

namespace {

// owner ─ box, other, menu ─ btn; box's own x is 0.
struct Owner {
    std::shared_ptr<VDModelView> btn = view("btn");
    std::shared_ptr<VDModelView> owner = view("owner", {view("box"), view("other"), view("menu", {btn})});
    std::shared_ptr<VVHostTree> host = VVHostTree::attach(owner);

    std::shared_ptr<VDModelViewState> state(const char* name, const char* overrides) {
        auto s = owner->addStateWithSuggestedName(std::nullopt);
        s->setName(name);
        s->setOverrides(Json::parse(overrides).dictionary());
        return s;
    }
};

// Each timeline's target and its last keyframe's state.
Value ends(const VDModelActionScriptAnimation& t) {
    Dictionary out = Dictionary::create();
    for (const Value& v : t.timelines()) {
        const auto timeline = v.objectAs<VDModelAnimationTimeline>();
        out.set(*timeline->target(),
                Value(timeline->animations().last().objectAs<VDModelAnimation>()->state()));
    }
    return Value(out);
}

} // namespace

class VDModelActionScriptAnimationTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelActionScriptAnimationTest, EndValuesComeFromTheTargetAndTheWayBack) {
    struct Case {
        const char* what;
        const char* from; // nil: the initial look
        const char* to;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"both set different fields", R"({"this;box": {"x": 10}})", R"({"this;box": {"y": 5}})",
         R"({"this;box": {"x": 0, "y": 5}})"},
        {"the target's value wins", R"({"this;box": {"x": 10}})", R"({"this;box": {"x": 20}})",
         R"({"this;box": {"x": 20}})"},
        {"a path only the origin touches goes back", R"({"this;box": {"x": 10}})",
         R"({"this;other": {"alpha": 0.5}})", R"({"this;other": {"alpha": 0.5}, "this;box": {"x": 0}})"},
        {"the same value in both still stands", R"({"this;box": {"x": 10}})", R"({"this;box": {"x": 10}})",
         R"({"this;box": {"x": 10}})"},
        {"from the initial look", nullptr, R"({"this;box": {"y": 5}})", R"({"this;box": {"y": 5}})"},
    };
    for (const auto& c : cases) {
        Owner o;
        const auto from = c.from ? o.state("a", c.from) : nullptr;
        const auto to = o.state("b", c.to);
        const auto t =
            VDModelActionScriptAnimation::newScriptAnimationFromState(from.get(), to.get(), *o.owner);
        EXPECT_EQ(ends(*t), Json::parse(c.expected)) << c.what;
        EXPECT_EQ(t->originStateName(), from ? std::optional<std::string>("a") : std::nullopt) << c.what;
        EXPECT_EQ(t->targetStateName(), "b") << c.what;
    }
}

TEST_F(VDModelActionScriptAnimationTest, NamesUseTheCapitalisedStateNames) {
    Owner o;
    const auto menu = o.state("open menu", "{}"), closed = o.state("CLOSED", "{}");
    EXPECT_EQ(
        VDModelActionScriptAnimation::newScriptAnimationFromState(menu.get(), closed.get(), *o.owner)->name(),
        "Transition (Open Menu -> Closed)");
    EXPECT_EQ(
        VDModelActionScriptAnimation::newScriptAnimationFromState(nullptr, menu.get(), *o.owner)->name(),
        "Transition (Initial -> Open Menu)");
    EXPECT_EQ(
        VDModelActionScriptAnimation::newScriptAnimationFromState(menu.get(), nullptr, *o.owner)->name(),
        "Transition from Open Menu");
}

TEST_F(VDModelActionScriptAnimationTest, RecomputingKeepsTimingAndDropsPathsNoLongerTouched) {
    Owner o;
    const auto a = o.state("a", R"({"this;box": {"x": 10}})");
    const auto b = o.state("b", R"({"this;box": {"x": 30}, "this;other": {"y": 4}})");
    const auto t = o.owner->addAnimationFrom(a.get(), b.get(), "click", *o.btn);
    ASSERT_TRUE(t);
    auto box = t->timeLineForModelWithRelativePath("this;box");
    box->animations().first().objectAs<VDModelAnimation>()->setDuration(1.0f);
    box->addOrUpdateAnimationWithTime(0.5f, Dictionary{{"x", Value(15)}});
    ASSERT_EQ(box->animations().size(), 2u);
    const Dictionary firstState = box->animations().first().objectAs<VDModelAnimation>()->state();

    b->setOverrides(Json::parse(R"({"this;box": {"x": 50}})").dictionary());
    int updates = 0;
    auto token = NotificationCenter::defaultCenter().addObserver(kModelUpdatedNotification, t.get(),
                                                                 [&](const Notification&) { ++updates; });
    o.owner->updateAllAnimationsForState(b.get());
    NotificationCenter::defaultCenter().removeObserver(token);
    EXPECT_EQ(updates, 1);

    box = t->timeLineForModelWithRelativePath("this;box");
    ASSERT_EQ(box->animations().size(), 2u);
    EXPECT_EQ(box->animations().first().objectAs<VDModelAnimation>()->state(), firstState)
        << "only the last moves";
    const auto last = box->animations().last().objectAs<VDModelAnimation>();
    EXPECT_EQ(Value(last->state()), Json::parse(R"({"x": 50})"));
    EXPECT_FLOAT_EQ(last->end(), 1.0f);
    EXPECT_EQ(t->timelines().size(), 1u) << "this;other is touched by neither state any more";
    EXPECT_FLOAT_EQ(t->totalAnimationTime(), 1.0f);

    // A state name that points nowhere leaves the transition as it was.
    b->setName("renamed elsewhere");
    b->setOverrides(Json::parse(R"({"this;box": {"x": 99}})").dictionary());
    o.owner->updateAllAnimations();
    EXPECT_EQ(Value(box->animations().last().objectAs<VDModelAnimation>()->state()),
              Json::parse(R"({"x": 50})"));
}

TEST_F(VDModelActionScriptAnimationTest, EventsMakeOneTransitionAndOneListenerEach) {
    Owner o;
    const auto a = o.state("a", R"({"this;box": {"x": 1}})"), b = o.state("b", R"({"this;box": {"x": 2}})");
    std::vector<std::uint32_t> types;
    auto token = NotificationCenter::defaultCenter().addObserver(
        kModelUpdatedNotification, nullptr, [&](const Notification& n) {
            types.push_back(static_cast<std::uint32_t>(n.userInfo.get("type").int64Value()));
        });
    const auto first = o.owner->addAnimationFrom(a.get(), b.get(), "click", *o.btn);
    const auto again = o.owner->addAnimationFrom(a.get(), b.get(), "click", *o.btn);
    NotificationCenter::defaultCenter().removeObserver(token);
    EXPECT_EQ(first, again);
    EXPECT_EQ(first->listeners().size(), 1u);
    EXPECT_EQ(first->listenerWithEvent("click")->target(), "this;menu;btn");
    ASSERT_EQ(types.size(), 2u);
    EXPECT_EQ(types[0], kModelUpdateTypeListenerAdded);
    EXPECT_EQ(types[1], kModelUpdateTypeUpdate);

    const auto timer = o.owner->addAnimationFrom(b.get(), a.get(), "timer", *o.btn);
    EXPECT_EQ(timer->listenerWithEvent("timer")->target(), "this") << "a timer belongs to the owner";
    EXPECT_FALSE(o.owner->addAnimationFrom(a.get(), a.get(), "click", *o.btn));

    // A second transition from a with the same click takes it over; the first, left without
    // listeners, goes.
    const auto c = o.state("c", R"({"this;other": {"x": 3}})");
    const auto takeover = o.owner->addAnimationFrom(a.get(), c.get(), "click", *o.btn);
    EXPECT_EQ(o.owner->animationsFromState(a.get(), b.get()).size(), 0u);
    EXPECT_EQ(o.owner->animationsFromState(a.get()).first().objectAs<VDModelActionScriptAnimation>(),
              takeover);
    EXPECT_EQ(o.owner->animationsToState(a.get()).size(), 1u);
}

TEST_F(VDModelActionScriptAnimationTest, SequencesOfStatesChainOnTheirEnds) {
    Owner o;
    const auto s1 = o.state("s1", R"({"this;box": {"x": 1}})");
    o.owner->addAnimationToState(*s1);
    const auto s2 = o.state("s2", R"({"this;box": {"x": 2}})");
    o.owner->addAnimationToState(*s2);
    o.owner->addAnimationFromState(s2.get(), nullptr);
    ASSERT_EQ(o.owner->actions().size(), 2u);
    const auto initial = o.owner->actions()[0].objectAs<VDModelActionScriptAnimation>();
    const auto step = o.owner->actions()[1].objectAs<VDModelActionScriptAnimation>();
    EXPECT_FALSE(initial->originStateName());
    EXPECT_EQ(step->originStateName(), "s1");
    const auto listener = step->listenerWithEvent("animationend");
    ASSERT_TRUE(listener);
    EXPECT_EQ(listener->animationName(), step->name());
    EXPECT_EQ(listener->timerMS(), 0.0);
    EXPECT_THROW(view("empty")->addAnimationToState(*s1), std::out_of_range);
}

TEST_F(VDModelActionScriptAnimationTest, MovingToAnotherOwnerAndTurningAround) {
    Owner o;
    const auto a = o.state("a", R"({"this;menu;btn": {"x": 1}, "this;gone": {"x": 2}})");
    const auto t = VDModelActionScriptAnimation::newScriptAnimationFromState(nullptr, a.get(), *o.owner);
    t->timeLineForModelWithRelativePath("this;box"); // an empty timeline goes even though box exists
    ASSERT_EQ(t->timelines().size(), 3u);
    const auto menu = o.owner->modelWithRelativePath("this;menu");
    t->changeOwnerViewFrom(*o.owner, *menu);
    ASSERT_EQ(t->timelines().size(), 1u);
    EXPECT_EQ(t->timelines()[0].objectAs<VDModelAnimationTimeline>()->target(), "this;btn");

    // Keyframes have no "targetViewState", so a timeline with keyframes can't be turned around;
    // nothing changes when the read fails.
    EXPECT_THROW(t->reverseAnimationWithOwner(*menu), std::invalid_argument);
    EXPECT_EQ(t->timelines().size(), 1u);
    t->setTimelines(Array{Value(VDModelAnimationTimeline::create())});
    t->timelines()[0].objectAs<VDModelAnimationTimeline>()->setTarget("this;btn");
    EXPECT_NO_THROW(t->reverseAnimationWithOwner(*menu));
    EXPECT_TRUE(t->isEmpty());
}
