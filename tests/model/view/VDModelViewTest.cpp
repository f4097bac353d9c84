#include <gtest/gtest.h>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/interaction/VDModelActionCallAction.h"
#include "velmo/model/interaction/VDModelActionPresentScreen.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/view/VDModelView.h"

using namespace velmo;

namespace {

// A view that counts what climbs through it.
class VDModelTestCountingView : public VDModelView {
    VD_MODEL_CLASS(VDModelTestCountingView)
    void subviewDidUpdate() override {
        ++updates;
        VDModelView::subviewDidUpdate();
    }
    int updates = 0;
};

const VDModelClass& VDModelTestCountingView::classObject() {
    static const VDModelClass cls("VDModelTestCountingView", &VDModelView::classObject(),
                                  [] { return std::static_pointer_cast<Object>(create()); }, {});
    return cls;
}

// An action that keeps one relative path: a call of another view's action.
std::shared_ptr<VDModelActionCallAction> action(const char* name, const char* target) {
    auto a = VDModelActionCallAction::create();
    a->setName(name);
    auto ref = VDModelActionReference::create();
    ref->setViewModelPath(target);
    a->setActionRefs(Array{Value(ref)});
    return a;
}

// root ─ a ─ b ─ e
//        │   └ c
//        └ f ─ g
struct Tree {
    std::shared_ptr<VDModelView> e = view("e"), b = view("b", {e}), c = view("c"), a = view("a", {b, c});
    std::shared_ptr<VDModelView> g = view("g"), f = view("f", {g}), root = view("root", {a, f});
    std::shared_ptr<VVHostTree> host = VVHostTree::attach(root);
};

} // namespace

class VDModelViewFixture : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelViewFixture, NewViewDefaultsAndJson) {
    auto v = VDModelView::create();
    EXPECT_TRUE(v->modelID()->starts_with("View_"));
    EXPECT_EQ(v->width(), 100.0f);
    EXPECT_EQ(v->height(), 100.0f);
    EXPECT_EQ(v->x(), 0.0f);
    EXPECT_EQ(v->alpha(), 1.0f);
    EXPECT_EQ(v->scale(), 1.0f);
    EXPECT_EQ(v->viewName(), "View");
    EXPECT_TRUE(v->color()->isEqual(*VDModelColor::clearColor()));
    EXPECT_TRUE(v->borderColor()->isEqual(*VDModelColor::colorWithRed(0, 0, 0, 0)));
    EXPECT_TRUE(v->supportsHiding());
    const Dictionary d = v->toDictionary();
    EXPECT_FALSE(d.contains("constraints"));
    EXPECT_EQ(d.get("subviews"), Json::parse("[]"));
    EXPECT_EQ(d.get("hidden"), Value(0));
    EXPECT_EQ(v->fieldNames().size(), 3u + 49u);
}

TEST_F(VDModelViewFixture, EmptyConstraintsStayOutOfTheLightForm) {
    auto parent = view("p", {view("child")});
    parent->clearConstraints();
    parent->subviews()[0].objectAs<VDModelView>()->clearConstraints();
    EXPECT_FALSE(parent->toDictionary().contains("constraints"));
    const Dictionary full = parent->toDictionaryWithAllFields();
    EXPECT_TRUE(full.contains("constraints")) << "the full form has them for the view itself";
    EXPECT_FALSE(full.get("subviews").array()[0].dictionary().contains("constraints"))
        << "subviews encode light";
    parent->constraints()->left()->setEnabled(true);
    EXPECT_TRUE(parent->toDictionary().contains("constraints"));

    auto copy = modelCopy(parent);
    EXPECT_TRUE(copy->constraints());
    EXPECT_FALSE(copy->subviews()[0].objectAs<VDModelView>()->constraints())
        << "a nested view's empty set comes back nil";
}

TEST_F(VDModelViewFixture, RotationOverridesStayOutOfTheJson) {
    auto v = VDModelView::create();
    v->applyOverrides(Dictionary{{"rotationX", Value(45.0f)}, {"x", Value(10)}});
    EXPECT_EQ(v->rotationX(), 45.0f);
    const Dictionary d = v->toDictionaryWithAllFields();
    EXPECT_FALSE(d.contains("rotationX"));
    EXPECT_EQ(d.get("x"), Value(0));
    v->clearOverrides();
    EXPECT_EQ(v->rotationX(), 0.0f);
}

TEST_F(VDModelViewFixture, FieldListsOfTheView) {
    auto v = VDModelView::create();
    EXPECT_EQ(v->stateAffectedFields(),
              (VDModel::NameList{"x", "y", "width", "height", "alpha", "rotation", "rotationX", "rotationY",
                                 "scale", "cornersRadius", "constraints"}));
    EXPECT_EQ(v->undoAffectedFields().back(), "actions");
    EXPECT_EQ(VDModelView::breakpointAffectedFields().size(), 6u);
}

TEST_F(VDModelViewFixture, PathsBetweenViews) {
    Tree t;
    EXPECT_EQ(t.root->viewPath(), "") << "the root has no component";
    EXPECT_EQ(t.e->viewPath(), "a;b;e");
    EXPECT_EQ(VDModelView::create()->viewPath(), "") << "detached";
    const struct {
        std::shared_ptr<VDModelView> from, to;
        const char* path;
    } cases[] = {
        {t.b, t.c, "this;parent;c"}, {t.e, t.g, "this;parent;parent;parent;f;g"},
        {t.b, t.b, "this"},          {t.b, t.a, "this;parent"},
        {t.root, t.e, "this;a;b;e"}, {t.e, t.root, "this;parent;parent;parent"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.from->relativePathToModel(*c.to), c.path);
        EXPECT_EQ(c.from->modelWithRelativePath(c.path), c.to) << c.path;
    }
}

TEST_F(VDModelViewFixture, ResolvingSpecialPaths) {
    Tree t;
    EXPECT_EQ(t.b->modelWithRelativePath(""), t.b);
    EXPECT_EQ(t.b->modelWithRelativePath("this"), t.b);
    EXPECT_EQ(t.root->modelWithRelativePath("this;parent"), nullptr);
    EXPECT_EQ(t.b->modelWithRelativePath("this;parent;nothing"), nullptr);
    EXPECT_EQ(t.b->modelWithRelativePath("e"), t.e) << "no leading this: straight down";
}

TEST_F(VDModelViewFixture, RelativeToAbsoluteKeepsTheRootQuirk) {
    Tree t;
    EXPECT_EQ(t.b->relativeToAbsolutePath("this;parent;c"), "a;c");
    EXPECT_EQ(t.e->relativeToAbsolutePath("this"), "a;b;e");
    EXPECT_EQ(t.root->relativeToAbsolutePath("this;a;b"), ";a;b")
        << "a root's empty path is one empty component";
    EXPECT_THROW(t.a->relativeToAbsolutePath("this;parent;parent;parent"), std::out_of_range);
}

TEST_F(VDModelViewFixture, RenamesReachEveryActionPath) {
    Tree t;
    t.c->setActions(Array{Value(action("toE", "this;parent;b;e")), Value(action("toB", "this;parent;b")),
                          Value(action("other", "this;parent;bb"))});
    t.g->setActions(Array{Value(action("far", "this;parent;parent;a;b;e"))});
    t.b->setVariableID("d");
    const auto target = [](const Value& v) {
        return *v.objectAs<VDModelActionCallAction>()
                    ->actionRefs()[0]
                    .objectAs<VDModelActionReference>()
                    ->viewModelPath();
    };
    EXPECT_EQ(target(t.c->actions()[0]), "this;parent;d;e");
    EXPECT_EQ(target(t.c->actions()[1]), "this;parent;d");
    EXPECT_EQ(target(t.c->actions()[2]), "this;parent;bb") << "a name that only starts alike is left";
    EXPECT_EQ(target(t.g->actions()[0]), "this;parent;parent;a;d;e");
    EXPECT_EQ(t.c->modelWithRelativePath(target(t.c->actions()[0])), t.e);

    auto detached = VDModelView::create();
    detached->setActions(Array{Value(action("x", "this;parent;b"))});
    detached->setVariableID("renamed");
    EXPECT_EQ(target(detached->actions()[0]), "this;parent;b") << "a detached view only renames";
    EXPECT_EQ(t.c->actionWithName("toB"), t.c->actions()[1].objectAs<VDModelAction>());
    EXPECT_FALSE(t.c->actionWithName("missing"));
}

TEST_F(VDModelViewFixture, ZOrderClampsToBothEnds) {
    const struct {
        int delta;
        std::size_t index; // of the moved view (starting at 1 of 0..3)
    } cases[] = {{100, 3}, {-100, 0}, {1, 2}, {-1, 0}, {0, 1}, {2, 3}};
    for (const auto& c : cases) {
        auto container = view("box", {view("v0"), view("v1"), view("v2"), view("v3")});
        auto host = VVHostTree::attach(container);
        int told = 0;
        host->onSubviewsOrderChanged = [&](VDModelView&) { ++told; };
        auto moved = container->subviews()[1].objectAs<VDModelView>();
        moved->changeZPositionBy(c.delta, container.get());
        EXPECT_EQ(container->subviews()[c.index].objectAs<VDModelView>(), moved) << c.delta;
        EXPECT_EQ(container->subviews().size(), 4u);
        EXPECT_EQ(told, 1);
    }
    auto stranger = VDModelView::create();
    auto box = view("box", {view("v0")});
    stranger->changeZPositionBy(1, box.get());
    stranger->changeZPositionBy(1, nullptr);
    EXPECT_EQ(box->subviews().size(), 1u);
}

TEST_F(VDModelViewFixture, BreakpointsEndNilWhenTheLastGoes) {
    auto root = view("root", {view("child")});
    Dictionary small = root->addBreakpoint("small");
    small.set("x", Value(5));
    EXPECT_TRUE(root->addBreakpoint("small").sameAs(small)) << "the same dictionary each time";
    root->addBreakpoint("large");
    root->subviews()[0].objectAs<VDModelView>()->addBreakpoint("large");
    root->removeBreakpoint("large", false);
    EXPECT_EQ(root->breakpoints().size(), 1u);
    EXPECT_FALSE(root->subviews()[0].objectAs<VDModelView>()->breakpoints().isNil());
    root->removeBreakpoint("small", false);
    EXPECT_TRUE(root->breakpoints().isNil());
    EXPECT_FALSE(root->toDictionary().contains("breakpoints"));
    root->removeBreakpoint("large", true);
    EXPECT_TRUE(root->subviews()[0].objectAs<VDModelView>()->breakpoints().isNil())
        << "recursion reaches subviews though this view had no entry";
}

TEST_F(VDModelViewFixture, UpdatesClimbToTheRoot) {
    auto root = VDModelTestCountingView::create();
    auto middle = VDModelTestCountingView::create();
    auto leaf = VDModelView::create();
    middle->setSubviews(Array{Value(leaf)});
    root->setSubviews(Array{Value(middle)});
    auto host = VVHostTree::attach(root);
    int posted = 0;
    const auto token = NotificationCenter::defaultCenter().addObserver(
        kModelUpdatedNotification, leaf.get(), [&](const Notification&) { ++posted; });
    leaf->postUpdateNotification();
    EXPECT_EQ(posted, 1);
    EXPECT_EQ(middle->updates, 1);
    EXPECT_EQ(root->updates, 1);
    leaf->postUpdateNotificationType(7);
    EXPECT_EQ(root->updates, 1) << "typed variants don't climb";
    NotificationCenter::defaultCenter().removeObserver(token);
}

TEST_F(VDModelViewFixture, TreeWalks) {
    Tree t;
    t.b->setTimelineType("animation");
    t.e->setTimelineType("animation");
    const Array nested = t.root->nestedComponents();
    ASSERT_EQ(nested.size(), 2u);
    EXPECT_EQ(nested[0].objectAs<VDModelView>(), t.b);
    EXPECT_EQ(nested[1].objectAs<VDModelView>(), t.e);
    EXPECT_EQ(Value(t.root->hierarchyTree()), Json::parse(R"({"a":{"b":{"e":{}},"c":{}},"f":{"g":{}}})"));
    t.g->setVariableID(std::nullopt);
    EXPECT_THROW(t.root->hierarchyTree(), std::invalid_argument);

    const Dictionary byPath = t.root->subviewsByPath();
    EXPECT_EQ(byPath.size(), 6u);
    const std::string key = *t.root->modelID() + ";" + *t.a->modelID() + ";" + *t.b->modelID();
    EXPECT_EQ(byPath.get(key).objectAs<VDModelView>(), t.b);

    t.e->setActions(Array{Value(action("one", "this"))});
    t.root->setActions(Array{Value(action("two", "this"))});
    std::vector<std::string> seen;
    t.root->enumerateActionsWithBlock([&](VDModelView& v, VDModelAction& a) {
        seen.push_back(v.variableID().value_or("") + ":" + *a.name());
    });
    EXPECT_EQ(seen, (std::vector<std::string>{"root:two", "e:one"}));
    EXPECT_FALSE(t.root->hasAutoAnimateAction());
    auto open = VDModelActionPresentScreen::create();
    t.e->setActions(Array{Value(open)});
    EXPECT_FALSE(t.root->hasAutoAnimateAction());
    open->setAutoAnimate(VDModelAutoAnimate::create());
    EXPECT_TRUE(t.root->hasAutoAnimateAction());
}

TEST_F(VDModelViewFixture, OverridesClearAllTheWayDown) {
    Tree t;
    t.e->applyOverrides(Dictionary{{"x", Value(9)}});
    t.root->applyOverrides(Dictionary{{"alpha", Value(0.5)}});
    t.root->clearOverridesRecursive();
    EXPECT_FALSE(t.e->hasOverrides());
    EXPECT_EQ(t.e->x(), 0.0f);
    EXPECT_EQ(t.root->alpha(), 1.0f);
}

TEST_F(VDModelViewFixture, HostTreeFollowsEdits) {
    Tree t;
    EXPECT_EQ(t.host->size(), 7u);
    EXPECT_EQ(t.host->modelViewOfRootView(*t.e), t.root);

    auto added = view("h", {view("i")});
    Array subviews = t.c->subviews().copy();
    subviews.push_back(Value(added));
    t.c->setSubviews(subviews);
    EXPECT_EQ(added->viewPath(), "a;c;h");
    EXPECT_EQ(added->subviews()[0].objectAs<VDModelView>()->viewPath(), "a;c;h;i");

    t.a->removeSubview(*t.b);
    EXPECT_EQ(t.b->viewPath(), "") << "a removed subtree is detached";
    EXPECT_EQ(t.e->viewPath(), "");
    EXPECT_FALSE(t.host->contains(*t.e));

    // A move: added under f, then taken from c.
    Array fs = t.f->subviews().copy();
    fs.push_back(Value(added));
    t.f->setSubviews(fs);
    t.c->removeSubview(*added);
    EXPECT_EQ(added->viewPath(), "f;h") << "a moved view keeps its place in the tree";
    EXPECT_EQ(added->relativePathToModel(*t.g), "this;parent;g");
    EXPECT_EQ(t.host->size(), 7u);

    std::weak_ptr<VVHostTree> weak = t.host;
    t.host.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(added->viewPath(), "") << "without the host the views are detached";
}

TEST_F(VDModelViewFixture, DescriptionNamesAddressClassAndName) {
    auto v = VDModelView::create();
    v->setViewName("Button");
    EXPECT_TRUE(v->description().ends_with("] <VDModelView> Button"));
    EXPECT_TRUE(v->description().starts_with("[0x"));
}

TEST_F(VDModelViewFixture, EveryCounterpartIsRememberedWeakly) {
    auto root = view("root", {view("child")});
    auto first = VVHostTree::attach(root);
    auto second = VVHostTree::attach(root);
    int alive = 0;
    root->allRelatedUIElements().enumerateValidObjects([&](const std::shared_ptr<Object>&) { ++alive; });
    EXPECT_EQ(alive, 2);
    first.reset();
    alive = 0;
    root->allRelatedUIElements().enumerateValidObjects([&](const std::shared_ptr<Object>&) { ++alive; });
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(root->relatedUIElement(), second);
}

TEST_F(VDModelViewFixture, LightFormIsChosenOnThePermanentState) {
    auto v = VDModelView::create();
    v->clearConstraints();
    v->constraints()->left()->setEnabled(true);
    // A state shows blank constraints for a while: the encoded form still has the permanent ones.
    v->applyOverrides(Dictionary{{"constraints", Value(VDModelViewConstraints::create())}});
    ASSERT_TRUE(v->constraints()->isEmpty());
    EXPECT_TRUE(v->toDictionary().contains("constraints"));
    v->clearOverrides();

    auto blank = VDModelView::create();
    blank->clearConstraints();
    auto shown = VDModelViewConstraints::create();
    shown->top()->setEnabled(true);
    blank->applyOverrides(Dictionary{{"constraints", Value(shown)}});
    EXPECT_FALSE(blank->toDictionary().contains("constraints"));
}

TEST_F(VDModelViewFixture, NumberFieldsKeepTheirKind) {
    auto v = std::dynamic_pointer_cast<VDModelView>(VDModelDecoder::modelObjectFromDictionary(
        Json::parse(
            R"({"model_class":"VDModelView","isGroup":true,"originalFrame":{"model_class":"VDModelFrame","x":9007199254740993}})")
            .dictionary()));
    ASSERT_TRUE(v);
    EXPECT_EQ(v->isGroup().value().kind(), Value::Kind::Bool);
    const std::string json = Json::write(Value(v->toDictionary()));
    EXPECT_NE(json.find("\"isGroup\":true"), std::string::npos);
    EXPECT_NE(json.find("\"x\":9007199254740993"), std::string::npos);
}

TEST_F(VDModelViewFixture, ZOrderFindsTheViewByEquality) {
    auto container = view("box", {view("v0"), view("v1")});
    auto stranger = VDModelView::create();
    stranger->setModelID(container->subviews()[0].objectAs<VDModelView>()->modelID());
    stranger->changeZPositionBy(1, container.get());
    EXPECT_EQ(container->subviews()[1].objectAs<VDModelView>()->variableID(), "v0")
        << "an equal view stands for the one in the list";
}
