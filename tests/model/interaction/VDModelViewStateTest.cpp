#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/view/VDModelView.h"

using namespace velmo;

namespace {

// The document's tree and the same tree as the designer shaped it in a state, both attached:
// owner ─ card ─ title
//         │      └ icon
//         └ footer
struct StatePair {
    std::shared_ptr<VDModelView> original =
        view("owner", {view("card", {view("title"), view("icon")}), view("footer")});
    std::shared_ptr<VDModelView> shaped = modelCopy(original);
    std::shared_ptr<VVHostTree> originalHost = VVHostTree::attach(original);
    std::shared_ptr<VVHostTree> shapedHost = VVHostTree::attach(shaped);

    std::shared_ptr<VDModelView> in(const char* path) { return shaped->modelWithRelativePath(path); }
};

} // namespace

class VDModelViewStateTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelViewStateTest, FullRecordingKeepsWhatDiffersNow) {
    struct Case {
        const char* what;
        std::function<void(StatePair&)> edit;
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"a move", [](StatePair& p) { p.in("this;card;title")->setX(10); },
         R"({"this;card;title": {"x": 10}})"},
        {"the owner's own fields stay out", [](StatePair& p) { p.shaped->setWidth(500); }, "{}"},
        {"a move and its way back",
         [](StatePair& p) {
             p.in("this;card")->setY(3);
             p.in("this;card")->setY(0);
         },
         "{}"},
        {"a view deleted in the state has no entry",
         [](StatePair& p) {
             p.in("this;card;icon")->setAlpha(0.5f);
             p.in("this;card")->setSubviews(Array{Value(p.in("this;card;title"))});
         },
         "{}"},
        {"a view added in the state has no entry",
         [](StatePair& p) {
             auto extra = view("extra");
             extra->setX(40);
             Array subviews = p.shaped->subviews().copy();
             subviews.push_back(Value(extra));
             p.shaped->setSubviews(subviews);
         },
         "{}"},
        {"a resize records the size and what moved below",
         [](StatePair& p) {
             p.in("this;card")->setWidth(200);
             p.in("this;card;icon")->setRotation(90);
         },
         R"({"this;card;icon": {"rotation": 90}, "this;card": {"width": 200}})"},
        {"overrides-only fields count", [](StatePair& p) { p.in("this;footer")->setRotationX(30); },
         R"({"this;footer": {"rotationX": 30}})"},
    };
    for (const auto& c : cases) {
        StatePair pair;
        c.edit(pair);
        auto state = VDModelViewState::create();
        state->updateWithOriginalModel(*pair.original, *pair.shaped);
        EXPECT_EQ(Value(state->overrides()), Json::parse(c.expected)) << c.what;
        EXPECT_FALSE(state->overrides().isNil()) << c.what;
    }
}

TEST_F(VDModelViewStateTest, ConstraintsAreRecordedAsWholeSets) {
    StatePair pair;
    pair.in("this;footer")->clearConstraints();
    pair.in("this;footer")->constraints()->left()->setEnabled(true);
    auto state = VDModelViewState::create();
    state->updateWithOriginalModel(*pair.original, *pair.shaped);
    const Value recorded = state->overrides().get("this;footer").dictionary().get("constraints");
    ASSERT_TRUE(recorded.objectAs<VDModelViewConstraints>());

    // Through JSON and back, the set is a model again.
    auto decoded = VDModelViewState::createWithDictionary(
        Json::parse(Json::write(Value(state->toDictionary()))).dictionary());
    EXPECT_TRUE(decoded->overrides()
                    .get("this;footer")
                    .dictionary()
                    .get("constraints")
                    .objectAs<VDModelViewConstraints>());
}

TEST_F(VDModelViewStateTest, IncrementalUpdateReexaminesASubtreeOnlyWhenItsRecordedSizeChanged) {
    struct Case {
        const char* what;
        const char* before; // overrides from an earlier recording
        std::function<void(StatePair&)> edit;
        const char* changed; // the view handed to the update
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"a fade leaves stale entries below as they are", R"({"this;card;title": {"x": 99}})",
         [](StatePair& p) { p.in("this;card")->setAlpha(0.5f); }, "this;card",
         R"({"this;card;title": {"x": 99}, "this;card": {"alpha": 0.5}})"},
        {"a width that first appears re-records the subtree", R"({"this;card;title": {"x": 99}})",
         [](StatePair& p) { p.in("this;card")->setWidth(300); }, "this;card",
         R"({"this;card": {"width": 300}})"},
        {"a width that went back counts as a change",
         R"({"this;card": {"width": 300}, "this;card;icon": {"y": 7}})", [](StatePair&) {}, "this;card",
         "{}"},
        {"a view moved back loses its entry", R"({"this;footer": {"x": 5}, "this;card": {"alpha": 0.5}})",
         [](StatePair& p) { p.in("this;card")->setAlpha(0.5f); }, "this;footer",
         R"({"this;card": {"alpha": 0.5}})"},
        {"a deleted view keeps its old entry", R"({"this;card": {"height": 40}, "this;card;icon": {"y": 7}})",
         [](StatePair& p) {
             p.in("this;card")->setHeight(40);
             p.in("this;card")->setSubviews(Array{Value(p.in("this;card;title"))});
         },
         "this;card", R"({"this;card": {"height": 40}, "this;card;icon": {"y": 7}})"},
        {"the owner's own entry never stays, but its resize reaches below", "{}",
         [](StatePair& p) {
             p.shaped->setHeight(1);
             p.in("this;footer")->setX(8);
         },
         "this", R"({"this;footer": {"x": 8}})"},
    };
    for (const auto& c : cases) {
        StatePair pair;
        c.edit(pair);
        auto state = VDModelViewState::create();
        state->setOverrides(Json::parse(c.before).dictionary());
        const Dictionary heldByCaller = state->overrides();
        const Value before = Value(heldByCaller).deepCopy();
        state->updateWithOriginalModel(*pair.original, *pair.shaped, *pair.in(c.changed));
        EXPECT_EQ(Value(state->overrides()), Json::parse(c.expected)) << c.what;
        EXPECT_EQ(Value(heldByCaller), before) << c.what << ": a set someone holds is replaced, not changed";
    }
}

TEST_F(VDModelViewStateTest, TheWayBackAndApplyingAState) {
    StatePair pair;
    pair.in("this;card;title")->setX(10);
    pair.in("this;footer")->setAlpha(0.25f);
    pair.in("this;footer")->clearConstraints();
    auto state = VDModelViewState::create();
    state->updateWithOriginalModel(*pair.original, *pair.shaped);

    // The way back names the original's values; a field already at the state's value adds nothing,
    // and a path that finds nothing is left out.
    Dictionary overrides = state->overrides().copy();
    overrides.set("this;gone", Value(Dictionary{{"x", Value(1)}}));
    overrides.set("this;card", Value(Dictionary{{"x", Value(0.0f)}}));
    state->setOverrides(overrides);
    const Dictionary back = state->reversedOverridesWithModel(*pair.original);
    EXPECT_EQ(back.get("this;card;title"), Json::parse(R"({"x": 0})"));
    EXPECT_EQ(back.get("this;card"), Json::parse("{}"));
    EXPECT_FALSE(back.contains("this;gone"));

    // Applying writes the permanent fields, with models copied.
    pair.original->applyModelState(*state);
    EXPECT_EQ(pair.original->modelWithRelativePath("this;card;title")->x(), 10.0f);
    const auto footer = pair.original->modelWithRelativePath("this;footer");
    EXPECT_EQ(footer->alpha(), 0.25f);
    ASSERT_TRUE(footer->constraints());
    EXPECT_NE(footer->constraints().get(), pair.in("this;footer")->constraints().get());

    // And the reverse brings the original's values back below the owner, not on it.
    StatePair fresh;
    pair.original->setWidth(1234);
    pair.original->reverseStateWithOriginalModel(*fresh.original);
    EXPECT_EQ(pair.original->modelWithRelativePath("this;card;title")->x(), 0.0f);
    EXPECT_EQ(pair.original->width(), 1234.0f);
}

TEST_F(VDModelViewStateTest, OldDotDelimitedStatesStillApply) {
    // The first key decides the repair; the other key keeps its dots and still applies.
    auto state = VDModelViewState::createWithDictionary(Json::parse(R"({"model_class": "VDModelViewState",
        "name": "old", "overrides": {"this;card": {"y": 4}, "this.card.title": {"x": 6}, "this": {"alpha": 0.5}}})")
                                                            .dictionary());
    EXPECT_TRUE(state->overrides().contains("this.card.title"));
    StatePair pair;
    pair.original->applyModelState(*state);
    EXPECT_EQ(pair.original->modelWithRelativePath("this;card")->y(), 4.0f);
    EXPECT_EQ(pair.original->modelWithRelativePath("this;card;title")->x(), 6.0f);
    EXPECT_EQ(pair.original->alpha(), 0.5f) << "\"this\" alone is the owner";

    auto repaired = VDModelViewState::createWithDictionary(
        Json::parse(
            R"({"model_class": "VDModelViewState", "overrides": {"this.a": {"x": 1}, "this;b": {"x": 2}}})")
            .dictionary());
    EXPECT_EQ(Value(repaired->overrides()), Json::parse(R"({"this;a": {"x": 1}, "this;b": {"x": 2}})"));
    EXPECT_FALSE(repaired->modelID()) << "a state has no identifier";
}

TEST_F(VDModelViewStateTest, RefactorPathMovesAPathAndWhatIsBelowIt) {
    auto state = VDModelViewState::create();
    state->setOverrides(
        Json::parse(R"({"this;a": {"x": 1}, "this;a;c": {"x": 2}, "this;ab": {"x": 3}})").dictionary());
    const Dictionary before = state->overrides();
    state->refactorPath("this;a", "this;b");
    EXPECT_EQ(Value(state->overrides()),
              Json::parse(R"({"this;ab": {"x": 3}, "this;b": {"x": 1}, "this;b;c": {"x": 2}})"));
    state->refactorPath("this;zzz", "this;y");
    EXPECT_FALSE(state->overrides().sameAs(before));
}

TEST_F(VDModelViewStateTest, AddingNamingAndRenamingStates) {
    auto owner = view("owner");
    std::vector<std::string> order;
    auto& center = NotificationCenter::defaultCenter();
    auto updated = center.addObserver(kModelUpdatedNotification, owner.get(),
                                      [&](const Notification&) { order.push_back("update"); });
    auto added = center.addObserver(kTimelineStateAdded, owner.get(), [&](const Notification& n) {
        order.push_back("added:" + std::to_string(owner->states().size()));
        EXPECT_TRUE(n.userInfo.isNil());
    });

    EXPECT_EQ(owner->generateUniqueStateName(std::nullopt), "keyframe1");
    auto first = owner->addStateWithSuggestedName(std::nullopt);
    auto second = owner->addStateWithSuggestedName(std::nullopt);
    auto hover = owner->addStateWithSuggestedName("hover");
    EXPECT_EQ(first->name(), "keyframe1");
    EXPECT_EQ(second->name(), "keyframe2");
    EXPECT_EQ(hover->name(), "hover1");
    EXPECT_TRUE(first->overrides().isNil());
    EXPECT_EQ(order,
              (std::vector<std::string>{"update", "added:1", "update", "added:2", "update", "added:3"}));
    center.removeObserver(updated);
    center.removeObserver(added);

    auto unnamed = VDModelViewState::create();
    unnamed->setName("");
    owner->addState(unnamed);
    EXPECT_EQ(owner->stateNamed(""), nullptr);
    EXPECT_EQ(owner->stateNamed("keyframe2"), second);

    owner->setDefaultStateName("keyframe2");
    EXPECT_EQ(owner->defaultState(), second);
    owner->refactorStateNameFrom("keyframe2", "pressed");
    EXPECT_EQ(second->name(), "pressed");
    EXPECT_EQ(owner->defaultStateName(), "pressed");
    EXPECT_EQ(owner->defaultState(), second);

    // Only states enter the list.
    owner->setStates(Array{Value(first), Value(VDModelView::create())});
    EXPECT_EQ(owner->states().size(), 1u);
}
