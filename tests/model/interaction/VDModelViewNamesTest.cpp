#include <gtest/gtest.h>

#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelActionCallAction.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/interaction/VDModelActionScriptAnimation.h"
#include "velmo/model/interaction/VDModelAnimationTimeline.h"
#include "velmo/model/interaction/VDModelEventListener.h"
#include "velmo/model/interaction/VDModelSubmitAction.h"
#include "velmo/model/interaction/VDModelViewState.h"

using namespace velmo;

class VDModelViewNamesTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelViewNamesTest, NamesAreLegalAndUniqueInTheirParent) {
    auto parent = view("parent", {view("title"), view("Title1"), view("rectangle")});
    auto send = VDModelSubmitAction::create();
    send->setName("send");
    parent->setActions(Array{Value(send)});
    auto child = VDModelView::create();
    struct Case {
        const char* suggestion; // nullptr: none
        std::vector<std::string> forbidden;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"Sign Up!", {}, "signUp"},
        {"TITLE", {}, "tITLE2"}, // case doesn't count: "title" and "Title1" are taken
        {"Rectangle", {}, "rectangle1"},
        {"Send", {}, "send1"},          // actions share the namespace
        {nullptr, {}, "view1"},         // the class's prefix, never bare
        {"fresh", {"fresh"}, "fresh1"}, // forbidden from outside
        {"title1", {}, "title11"},      // trailing digits aren't read
    };
    for (const auto& c : cases) {
        const auto suggestion = c.suggestion ? std::optional<std::string>(c.suggestion) : std::nullopt;
        EXPECT_EQ(parent->uniqueNameForVariable(*child, suggestion, c.forbidden), c.expected)
            << (c.suggestion ? c.suggestion : "(nil)");
    }
    EXPECT_FALSE(parent->isLegalVariableOrActionName("SEND"));
    EXPECT_TRUE(parent->isLegalVariableOrActionName("footer"));
}

TEST_F(VDModelViewNamesTest, MissingNamesAreFilledPerParentOrPerContainer) {
    const auto unnamed = [](const char* viewName, std::vector<std::shared_ptr<VDModelView>> children = {}) {
        auto v = view("x", std::move(children));
        v->setVariableID(std::nullopt);
        v->setViewName(viewName);
        return v;
    };
    auto perParent = view("root", {unnamed("Card", {unnamed("Card")}), unnamed("Card")});
    perParent->fillMissingVarNamesForSubViewsRecursive();
    const auto& first = *perParent->subviews()[0].objectAs<VDModelView>();
    EXPECT_EQ(first.variableID(), "card");
    EXPECT_EQ(first.subviews()[0].objectAs<VDModelView>()->variableID(), "card")
        << "another parent, another scope";
    EXPECT_EQ(perParent->subviews()[1].objectAs<VDModelView>()->variableID(), "card1");

    auto perContainer = view("root", {unnamed("Card", {unnamed("Card")}), unnamed("Card")});
    perContainer->fillVarNamesUniquePerContainer();
    const auto& top = *perContainer->subviews()[0].objectAs<VDModelView>();
    EXPECT_EQ(top.variableID(), "card");
    EXPECT_EQ(top.subviews()[0].objectAs<VDModelView>()->variableID(), "card1");
    EXPECT_EQ(perContainer->subviews()[1].objectAs<VDModelView>()->variableID(), "card2");

    auto empty = view("root", {view("")});
    empty->fillMissingVarNamesForSubViewsRecursive();
    EXPECT_EQ(empty->subviews()[0].objectAs<VDModelView>()->variableID(), "")
        << "only a missing name is filled";
}

TEST_F(VDModelViewNamesTest, ChildrenApartFromParentsAndTheRenameReachesEveryPath) {
    // card ─ card ─ title
    //      └ other
    auto title = view("title");
    auto inner = view("card", {title});
    auto other = view("other");
    auto root = view("card", {inner, other});
    auto host = VVHostTree::attach(root);

    auto state = root->addStateWithSuggestedName(std::nullopt);
    state->setOverrides(
        Json::parse(R"({"card;title": {"x": 1}, "this;card": {"y": 2}, "this;cardx": {"y": 3}})")
            .dictionary());
    auto move = VDModelActionScriptAnimation::create();
    move->setOriginStateName("keyframe1");
    move->addListenerWithTarget("this;card;title", "click");
    move->timeLineForModelWithRelativePath("this;card");
    auto call = VDModelActionCallAction::create();
    auto ref = VDModelActionReference::create();
    ref->setViewModelPath("this;parent;card");
    call->setActionRefs(Array{Value(ref)});
    root->setActions(Array{Value(move)});
    other->setActions(Array{Value(call)});

    root->enforceChildrenNamesDistinctFromParents();
    EXPECT_EQ(inner->variableID(), "card1");
    EXPECT_EQ(
        Value(state->overrides()),
        Json::parse(R"({"this;cardx": {"y": 3}, "this;card1;title": {"x": 1}, "this;card1": {"y": 2}})"))
        << "a key without the \"this\" lead comes out with it";
    EXPECT_EQ(move->listenerWithEvent("click")->target(), "this;card1;title");
    EXPECT_EQ(move->timelines()[0].objectAs<VDModelAnimationTimeline>()->target(), "this;card1");
    EXPECT_EQ(ref->viewModelPath(), "this;parent;card1")
        << "relative paths of actions below follow the rename";
}

TEST_F(VDModelViewNamesTest, NamesFromViewNamesKeepTheOldOneOnAClash) {
    auto a = view("a"), b = view("b");
    auto parent = view("parent", {a, b});
    auto host = VVHostTree::attach(parent);
    b->setViewName("A");
    b->updateVarIdFromName();
    EXPECT_EQ(b->variableID(), "b");
    b->setViewName("Bee Gee");
    b->updateVarIdFromName();
    EXPECT_EQ(b->variableID(), "beeGee");

    // An unknown old state name still renames the default state's name.
    parent->setDefaultStateName("gone");
    parent->refactorStateNameFrom("gone", "here");
    EXPECT_EQ(parent->defaultStateName(), "here");
}
