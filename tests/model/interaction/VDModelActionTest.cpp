#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelActionCallAction.h"
#include "velmo/model/interaction/VDModelActionDismissScreen.h"
#include "velmo/model/interaction/VDModelActionPresentScreen.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelActionSelectTab.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelSubmitAction.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"

using namespace velmo;

namespace {

std::shared_ptr<VDModelActionScriptAnimation> transition(const char* from, const char* to) {
    auto t = VDModelActionScriptAnimation::create();
    t->setOriginStateName(from ? std::optional<std::string>(from) : std::nullopt);
    t->setTargetStateName(to);
    return t;
}

std::vector<std::string> names(const Array& actions) {
    std::vector<std::string> out;
    for (const Value& v : actions)
        out.push_back(v.objectAs<VDModelAction>()->name().value_or("?"));
    return out;
}

std::shared_ptr<VDModelView> withSubmit(std::shared_ptr<VDModelView> v) {
    v->setActions(Array{Value(VDModelSubmitAction::create())});
    return v;
}

} // namespace

class VDModelActionTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelActionTest, TitlesAndLinkedScreensOfEachKind) {
    EXPECT_EQ(VDModelAction::shortTitleForTrigger(12), "Swipe-Down");
    EXPECT_EQ(VDModelAction::shortTitleForTrigger(13), std::nullopt);
    EXPECT_EQ(VDModelAction::shortTitleForTrigger(-1), std::nullopt);

    auto open = VDModelActionPresentScreen::create();
    EXPECT_EQ(open->layerTitle(), "Never: Open ");
    EXPECT_EQ(Value(open->linkedScreenIDs()), Json::parse(R"([""])"));
    open->setScreenId(std::nullopt);
    open->setTrigger(4);
    EXPECT_EQ(open->layerTitle(), "Tap: Open -");
    EXPECT_TRUE(open->linkedScreenIDs().isNil());

    auto close = VDModelActionDismissScreen::create();
    EXPECT_EQ(close->layerTitle(), "Never: Close Screen");
    auto tab = VDModelActionSelectTab::create();
    tab->setTabIndex(2);
    EXPECT_EQ(tab->layerTitle(), "Never: Select Tab 2");

    auto call = VDModelActionCallAction::create();
    EXPECT_EQ(call->layerTitle(), "Never: -");
    auto a = VDModelActionReference::create(), b = VDModelActionReference::create();
    a->setActionName("fade");
    b->setActionName("spin");
    call->setActionRefs(Array{Value(a), Value(b)});
    EXPECT_EQ(call->layerTitle(), "Never: fade, spin");

    auto submit = VDModelSubmitAction::create();
    EXPECT_EQ(Value(submit->linkedScreenIDs()), Json::parse("[]"));
    submit->setFailureScreenID("oops");
    EXPECT_EQ(Value(submit->linkedScreenIDs()), Json::parse(R"(["oops"])"));
    EXPECT_EQ(submit->layerTitle(), "untitled");

    // Identifiers carry each kind's prefix; the submit action keeps the base's.
    const std::vector<std::pair<std::shared_ptr<VDModel>, std::string>> prefixes = {
        {VDModelAction::create(), "Action_"},
        {open, "OpenScreen_"},
        {close, "CloseScreen_"},
        {tab, "SelectTab_"},
        {call, "LaunchAction_"},
        {submit, "Action_"},
        {transition("a", "b"), "Transition_"},
    };
    for (const auto& [model, prefix] : prefixes)
        EXPECT_TRUE(model->modelID()->starts_with(prefix)) << *model->modelID();
}

TEST_F(VDModelActionTest, ClosingAnimationFieldsSurviveNeitherJsonNorCopy) {
    auto close = VDModelActionDismissScreen::create();
    close->setAnimation(3);
    close->setCustomAnimationId("slide");
    close->setType(2);
    auto copy = modelCopy(close);
    EXPECT_EQ(copy->type(), 2);
    EXPECT_EQ(copy->animation(), 0);
    EXPECT_FALSE(copy->customAnimationId());
    EXPECT_EQ(close->valueForKey("animation"), Value(3)) << "still reachable by name";
}

TEST_F(VDModelActionTest, ListenersAreAddedOnceAndTimersPileUp) {
    auto action = VDModelAction::create();
    EXPECT_TRUE(action->listeners().isNil());
    const Array before = action->listeners();
    EXPECT_TRUE(action->addListenerWithTarget("this;btn", "click"));
    EXPECT_FALSE(action->addListenerWithTarget("this;btn", "click"));
    EXPECT_TRUE(action->addListenerWithTarget("this;btn", "mouseenter"));
    EXPECT_TRUE(action->addListenerWithTimer(500));
    EXPECT_TRUE(action->addListenerWithTimer(500));
    EXPECT_EQ(action->listeners().size(), 4u);
    EXPECT_EQ(action->listenerWithEvent("timer")->timerMS(), 500.0);
    EXPECT_EQ(action->listenerWithEvent("mouseenter")->prettyEventName(), "Mouse enter");
    EXPECT_EQ(action->listenerWithEvent("timer")->prettyEventName(), "Timer");

    auto lonely = VDModelEventListener::create();
    lonely->setEvent("click");
    EXPECT_FALSE(lonely->isEqual(*lonely)) << "no target, equal to nothing";
    lonely->setTarget("this.a.b");
    EXPECT_EQ(lonely->target(), "this;a;b");
    EXPECT_TRUE(lonely->isEqual(*lonely));
}

TEST_F(VDModelActionTest, RenamedPathsReachListenersAndTimelines) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"this;a", "this;b"}, {"this;a;c", "this;b;c"}, {"this;ab", "this;ab"}, {"this", "this"}};
    for (const auto& [before, after] : cases) {
        auto action = transition("s1", "s2");
        action->addListenerWithTarget(before, "click");
        action->refactorPath("this;a", "this;b");
        EXPECT_EQ(action->listenerWithEvent("click")->target(), after) << before;
    }
}

TEST_F(VDModelActionTest, ConflictingListenersLeaveTheOlderTransitionOfTheSameState) {
    auto owner = view("owner");
    auto first = transition("A", "B"), second = transition("A", "C"), elsewhere = transition("Z", "C");
    first->setName("first");
    second->setName("second");
    elsewhere->setName("elsewhere");
    auto tap = VDModelActionSelectTab::create(); // relies on its trigger alone
    tap->setName("tap");
    for (const auto& t : {first, second, elsewhere})
        t->addListenerWithTarget("this;btn", "click");
    owner->setActions(Array{Value(first), Value(elsewhere), Value(second), Value(tap)});

    owner->removeConflictingListenersOf(*second, "click", "this;btn");
    EXPECT_EQ(first->listeners().size(), 0u);
    EXPECT_EQ(elsewhere->listeners().size(), 1u) << "another origin state may listen to the same event";
    EXPECT_EQ(second->listeners().size(), 1u);
    owner->removeActionsWithoutListeners();
    EXPECT_EQ(names(owner->actions()), (std::vector<std::string>{"elsewhere", "second"}));
}

TEST_F(VDModelActionTest, TimersStayOnTheActionJustGivenOne) {
    auto owner = view("owner");
    auto onlyTimer = VDModelAction::create(), mixed = VDModelAction::create(), mine = VDModelAction::create(),
         triggerOnly = VDModelAction::create();
    onlyTimer->setName("onlyTimer");
    mixed->setName("mixed");
    mine->setName("mine");
    triggerOnly->setName("triggerOnly");
    onlyTimer->addListenerWithTimer(100);
    mixed->addListenerWithTimer(100);
    mixed->addListenerWithTarget("this", "click");
    mine->addListenerWithTimer(0);
    owner->setActions(Array{Value(onlyTimer), Value(mixed), Value(mine), Value(triggerOnly)});
    owner->removeDuplicateTimersAfterAdding(*mine);
    EXPECT_EQ(names(owner->actions()), (std::vector<std::string>{"mixed", "mine", "triggerOnly"}));
    EXPECT_EQ(mixed->listeners().size(), 1u);
    EXPECT_FALSE(mixed->listenerWithEvent("timer"));
}

TEST_F(VDModelActionTest, FormsAreTheLargestContainersWithOneSubmitButton) {
    struct Case {
        const char* what;
        std::function<std::shared_ptr<VDModelView>()> build;
        std::vector<std::string> forms; // variable names with isForm set, depth first
    };
    const std::vector<Case> cases = {
        {"one button deep down", [] { return view("T", {view("G", {withSubmit(view("B"))})}); }, {"T"}},
        {"two groups of one button each",
         [] {
             return view("T", {view("C", {view("G1", {withSubmit(view("B1"))}),
                                          view("G2", {withSubmit(view("B2"))})})});
         },
         {"T", "C", "G1", "G2"}},
        {"no button at all", [] { return view("T", {view("X")}); }, {"T"}},
        {"two submit actions on one view count once",
         [] {
             auto b = view("B");
             b->setActions(Array{Value(VDModelSubmitAction::create()), Value(VDModelSubmitAction::create())});
             return view("T", {view("G", {b})});
         },
         {"T"}},
        {"a view without an actions list makes no candidate",
         [] {
             auto g = view("G");
             g->setActions(Array());
             return view("T", {g});
         },
         {}},
        {"but its subviews still do",
         [] {
             auto g = view("G", {view("X")});
             g->setActions(Array());
             return view("T", {g});
         },
         {"T"}},
    };
    for (const auto& c : cases) {
        auto top = c.build();
        top->setIsForm(true);
        top->markFormsAccordingToSubmitButtons();
        std::vector<std::string> marked;
        std::function<void(const VDModelView&)> walk = [&](const VDModelView& v) {
            if (v.isForm()) marked.push_back(*v.variableID());
            for (const Value& s : v.subviews())
                walk(*s.objectAs<VDModelView>());
        };
        walk(*top);
        EXPECT_EQ(marked, c.forms) << c.what;
    }
}

TEST_F(VDModelActionTest, RenamingAStateReachesEveryKindOfAction) {
    auto owner = view("owner");
    auto state = owner->addStateWithSuggestedName("open");
    auto move = transition("open1", "open1");
    auto tab = VDModelActionSelectTab::create();
    tab->setOriginStateName("open1");
    owner->setActions(Array{Value(move), Value(tab)});
    owner->refactorStateNameFrom("open1", "wide");
    EXPECT_EQ(state->name(), "wide");
    EXPECT_EQ(move->originStateName(), "wide");
    EXPECT_EQ(move->targetStateName(), "wide");
    EXPECT_EQ(tab->originStateName(), "wide");
}
