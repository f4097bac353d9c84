#include <gtest/gtest.h>

#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/interaction/VDModelActionPresentScreen.h"
#include "velmo/model/interaction/VDModelActionReference.h"
#include "velmo/model/interaction/VDModelViewState.h"
#include "velmo/model/records/VDModelColor.h"

using namespace velmo;

namespace {

std::shared_ptr<VDModelScreen> screen(VDModelApp& app, const char* variableID) {
    auto s =
        std::static_pointer_cast<VDModelScreen>(app.createInstanceOfModelClass(VDModelScreen::classObject()));
    s->setVariableID(variableID);
    return s;
}

// A document of three screens "a", "b", "c".
std::shared_ptr<VDModelApp> threeScreens() {
    auto app = VDModelApp::create();
    app->setScreens(Array{Value(screen(*app, "a")), Value(screen(*app, "b")), Value(screen(*app, "c"))});
    return app;
}

struct Posted {
    std::vector<Dictionary> userInfos;
    NotificationCenter::Token token;
    Posted(const char* name, const Object* object)
        : token(NotificationCenter::defaultCenter().addObserver(
              name, object, [this](const Notification& n) { userInfos.push_back(n.userInfo); })) {}
    ~Posted() { NotificationCenter::defaultCenter().removeObserver(token); }
};

} // namespace

class VDModelAppTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelAppTest, ANewDocumentNumbersWhatItMakes) {
    auto app = VDModelApp::create();
    ASSERT_EQ(app->screens().size(), 1u);
    const auto first = app->screens()[0].objectAs<VDModelScreen>();
    EXPECT_EQ(first->modelID(), "screen_1");
    EXPECT_EQ(first->viewName(), "Screen 1");
    EXPECT_EQ(first->width(), 375.0f);
    EXPECT_EQ(app->views()[0].objectAs<VDModelView>()->modelID(), "View_1");
    EXPECT_EQ(app->theme()->name(), "Default Theme");
    EXPECT_TRUE(app->modelID()->starts_with("app_"));
    EXPECT_EQ(app->name(), "Untitled");

    // Nothing is reserved until entered; the group's size decides the next number.
    EXPECT_EQ(app->generateUniqueIDForClass(VDModelView::classObject()), "View_2");
    EXPECT_EQ(app->generateUniqueIDForClass(VDModelView::classObject()), "View_2");
    EXPECT_EQ(app->createInstanceOfModelClass(VDModelView::classObject())->modelID(), "View_2");
    EXPECT_EQ(app->generateUniqueIDForClass(VDModelView::classObject()), "View_3");
}

TEST_F(VDModelAppTest, TheRegistryCountsEveryEntryAndForgetsOnlyOnChange) {
    auto app = VDModelApp::create();
    for (const char* id :
         {"Label_1", "Label_2", "Label_3", "hero", "image_3f2b8c1e-0a4d-4b6e-9f10-7c5d2e8a1b3c"})
        app->addItemID(id);
    struct Case {
        const char* prefix;
        const char* next;
    };
    // A removal only announces: the identifier keeps counting until a rebuild.
    Posted removed(kVDModelAppItemIDRemovedNotification, app.get());
    app->removeItemID("Label_2");
    ASSERT_EQ(removed.userInfos.size(), 1u);
    EXPECT_EQ(removed.userInfos[0].get("removedId"), Value("Label_2"));
    for (const Case& c : std::vector<Case>{{"Label", "Label_4"}, {"image", "image_2"}, {"hero", "hero_2"}}) {
        const VDModelClass cls(std::string("VDModelX") + c.prefix, &VDModel::classObject(), nullptr, {},
                               {.prefix = c.prefix});
        EXPECT_EQ(app->generateUniqueIDForClass(cls), c.next) << c.prefix;
    }
    EXPECT_EQ(Value(app->existingIDsByPrefix().get("hero")), Json::parse(R"(["hero"])"));

    Posted changed(kVDModelAppItemIDUpdatedNotification, app.get());
    app->changeItemID("Label_3", "Label_9");
    EXPECT_EQ(changed.userInfos.at(0).get("newId"), Value("Label_9"));
    EXPECT_EQ(changed.userInfos.at(0).get("oldId"), Value("Label_3"));
    EXPECT_EQ(Value(app->existingIDsByPrefix().get("Label")),
              Json::parse(R"(["Label_1", "Label_2", "Label_9"])"));

    // A rebuild knows only what the document holds.
    EXPECT_FALSE(app->isModelIdTaken("Label_1"));
    EXPECT_TRUE(app->isModelIdTaken("screen_1"));
}

TEST_F(VDModelAppTest, DecodingBuildsTheRegistryFromEverythingInside) {
    // Models inside a state's change set count, and two objects with one identifier count twice.
    auto app = VDModelApp::appWithDictionary(Json::parse(R"({"model_class": "VDModelApp", "appID": "p1",
        "screens": [{"model_class": "VDModelScreen", "modelID": "screen_4", "variableID": "home",
            "states": [{"model_class": "VDModelViewState", "name": "s",
                "overrides": {"this;x": {"constraints": {"model_class": "VDModelViewConstraints", "modelID": "viewConstraints_7"}}}}],
            "subviews": [{"model_class": "VDModelView", "modelID": "View_1", "variableID": "x"},
                         {"model_class": "VDModelView", "modelID": "View_1", "variableID": "y"}]}],
        "views": []})")
                                                 .dictionary());
    auto doc = std::dynamic_pointer_cast<VDModelApp>(app);
    ASSERT_TRUE(doc);
    const Dictionary ids = doc->existingIDsByPrefix();
    EXPECT_EQ(Value(ids.get("View")), Json::parse(R"(["View_1", "View_1"])"));
    EXPECT_EQ(Value(ids.get("viewConstraints")), Json::parse(R"(["viewConstraints_7"])"));
    EXPECT_EQ(doc->generateUniqueIDForClass(VDModelView::classObject()), "View_3");

    // A round trip through JSON: compact, the same document, links present and empty.
    const std::string json = doc->toJson();
    EXPECT_EQ(json.find('\n'), std::string::npos);
    auto back =
        std::dynamic_pointer_cast<VDModelApp>(VDModelApp::appWithDictionary(Json::parse(json).dictionary()));
    ASSERT_TRUE(back);
    EXPECT_EQ(Value(back->toDictionary()), Value(doc->toDictionary()));
    EXPECT_TRUE(back->isEqual(*doc));
    EXPECT_TRUE(back->links());
    EXPECT_FALSE(back->toDictionary().get("links").dictionary().contains("lastShareLink"));
    EXPECT_FALSE(back->raceFlag());
    back->postUpdateNotification();
    EXPECT_TRUE(back->raceFlag()) << "a plain update leaves the marker raised";

    auto unnamed = VDModelApp::create();
    EXPECT_FALSE(unnamed->isEqual(*unnamed)) << "without an appID a document equals nothing";
}

TEST_F(VDModelAppTest, ScreensComeAndGoWithTheirNotifications) {
    auto app = threeScreens();
    Posted updates(kModelUpdatedNotification, app.get());
    auto d = screen(*app, "d");
    app->addScreen(d, 1000);
    app->removeScreenWithVarID("b");
    ASSERT_EQ(updates.userInfos.size(), 2u);
    EXPECT_EQ(updates.userInfos[0].get("type"), Value(kModelUpdateTypeScreenAdded));
    EXPECT_EQ(updates.userInfos[0].get("screenIndex"), Value(3));
    EXPECT_EQ(updates.userInfos[0].get("screen").objectAs<VDModelScreen>(), d);
    EXPECT_EQ(updates.userInfos[1].get("type"), Value(kModelUpdateTypeScreenRemoved));
    EXPECT_EQ(updates.userInfos[1].get("screenIndex"), Value(1));
    EXPECT_EQ(Value(app->allScreenNames()), Json::parse(R"(["a", "c", "d"])"));
    EXPECT_THROW(app->removeScreenWithVarID("nope"), std::invalid_argument);

    // The last screen marked as home wins; with no mark, the first.
    EXPECT_EQ(app->homepageVarId(), "a");
    app->screenWithVarID("c")->setIsAppRoot(true);
    app->screenWithVarID("d")->setIsAppRoot(true);
    EXPECT_EQ(app->homepageVarId(), "d");
    auto empty = VDModelApp::create();
    empty->setScreens(Array::create());
    EXPECT_EQ(empty->homepageName(), std::nullopt);
}

TEST_F(VDModelAppTest, CopiesGetNewIdentifiersAndUniqueNames) {
    auto app = threeScreens();
    auto box = view("box", {view("inner")});
    box->setViewName("Box");
    box->clearConstraints();
    box->constraints()->left()->setEnabled(true);
    auto inner = box->subviews()[0].objectAs<VDModelView>();
    inner->clearConstraints();
    inner->constraints()->top()->setEnabled(true);
    auto a = app->screenWithVarID("a");
    a->setSubviews(Array{Value(box)});

    auto copy = std::static_pointer_cast<VDModelView>(app->createCopyOfModel(box));
    EXPECT_EQ(copy->viewName(), "Box copy");
    EXPECT_EQ(std::static_pointer_cast<VDModelView>(app->createCopyOfModel(copy))->viewName(), "Box copy");
    EXPECT_TRUE(copy->constraints()->isEmpty()) << "the root's constraints are cleared";
    const auto innerCopy = copy->subviews()[0].objectAs<VDModelView>();
    EXPECT_FALSE(innerCopy->constraints()->isEmpty()) << "the views below keep theirs";
    EXPECT_NE(innerCopy->modelID(), inner->modelID());
    EXPECT_TRUE(innerCopy->modelID()->starts_with("View_"));
    EXPECT_TRUE(copy->color()->modelID()->starts_with("color_")) << "records are numbered too";
    EXPECT_EQ(innerCopy->variableID(), "inner") << "variable names stay, so paths hold";

    const auto twin = app->duplicateScreen(a);
    EXPECT_EQ(app->screens()[1].objectAs<VDModelScreen>(), twin);
    EXPECT_NE(twin->variableID(), a->variableID());
    EXPECT_TRUE(app->isLegalScreenVarName("e"));
    EXPECT_FALSE(app->isLegalScreenVarName("A"));
}

TEST_F(VDModelAppTest, RootAndActionNamesAtDocumentLevel) {
    auto app = threeScreens();
    auto open = VDModelActionPresentScreen::create();
    open->setName("open");
    app->screenWithVarID("a")->setActions(Array{Value(open)});
    auto root = VDModelScreen::create();
    root->setViewName("B");
    // A free suggestion is taken as it is; a clash numbers the root's own name.
    EXPECT_EQ(app->uniqueVarNameForRootView(*root, std::string("Fresh Start")), "freshStart");
    EXPECT_EQ(app->uniqueVarNameForRootView(*root, std::string("C")), "b1");
    EXPECT_EQ(app->uniqueNameForAction(*open, std::string("Open")), "open1");
    EXPECT_EQ(app->uniqueNameForAction(*open, std::nullopt), "open1") << "the class's pretty name, numbered";
    EXPECT_EQ(app->uniqueNameForAction(*open, std::string("close")), "close");

    auto unnamed = VDModelScreen::create();
    unnamed->setViewName("Sign Up");
    unnamed->setSubviews(Array{Value(VDModelView::create())});
    app->setScreens(Array{app->screens()[0], Value(unnamed)});
    app->fillMissingVarNamesRecursive();
    EXPECT_EQ(unnamed->variableID(), "signUp");
    EXPECT_EQ(unnamed->subviews()[0].objectAs<VDModelView>()->variableID(), "view");
}

TEST_F(VDModelAppTest, LookupsByPathAndByReference) {
    auto app = threeScreens();
    auto button = view("button");
    auto open = VDModelActionPresentScreen::create();
    open->setName("go");
    button->setActions(Array{Value(open)});
    app->screenWithVarID("b")->setSubviews(Array{Value(view("form", {button}))});
    auto host = VVHostTree::attachDocument(app);
    EXPECT_EQ(app->viewWithAbsolutePath("b;form;button"), button);
    EXPECT_EQ(app->viewWithAbsolutePath("b"), app->screenWithVarID("b"));
    EXPECT_EQ(app->viewWithAbsolutePath("zz;form"), nullptr);
    EXPECT_EQ(host->ownerAppModelViewOfView(*button), app);

    auto ref = VDModelActionReference::create();
    ref->setViewModelPath("this;parent;button");
    ref->setActionName("go");
    EXPECT_EQ(app->actionForRef(*ref, *button), open);
}

TEST_F(VDModelAppTest, MetadataFromTheServiceAndWhatACopyKeeps) {
    auto app = threeScreens();
    app->setSketchPageID("page");
    app->fillMetadata(Json::parse(R"({"id": "p9", "version": 3, "slug": "demo", "is_private": true,
        "assets_file_version": 7, "assets_file_url": "https://x/a.zip", "latest_release_version": 12,
        "updated_at": "2020-01-02T03:04:05"})")
                          .dictionary());
    EXPECT_EQ(app->appID(), "p9");
    EXPECT_EQ(app->appVersion(), "3") << "a number where text is expected is kept";
    EXPECT_TRUE(app->isPrivate());
    EXPECT_EQ(app->latestReleaseVersion(), 12);
    EXPECT_EQ(app->sketchPageID(), "page") << "a missing page keeps the one in force";
    ASSERT_TRUE(app->appServerLastUpdate());
    EXPECT_EQ(VDModel::dateFormatter().stringFromDate(*app->appServerLastUpdate()), "2020-01-02T03:04:05");

    auto copy = std::static_pointer_cast<VDModelApp>(app->copy());
    EXPECT_EQ(copy->appID(), "p9");
    EXPECT_EQ(copy->assetsVersion(), 7);
    EXPECT_EQ(copy->assetsZipFileUrl(), "https://x/a.zip");
    EXPECT_EQ(copy->appServerLastUpdate(), app->appServerLastUpdate());
    EXPECT_FALSE(copy->slug()) << "the rest of the metadata is lost";
    EXPECT_TRUE(copy->isEqual(*app));

    // A partial record blanks what it doesn't name, but for the page and the last update.
    app->fillMetadata(Dictionary::create());
    EXPECT_FALSE(app->name());
    EXPECT_FALSE(app->isPrivate());
    EXPECT_EQ(app->assetsVersion(), 0);
    EXPECT_EQ(app->sketchPageID(), "page");
    EXPECT_TRUE(app->appServerLastUpdate());

    app->links()->setLastShareLink("https://share");
    app->links()->setLastShareLinkValid(true);
    app->setGithubRepoName("repo");
    app->handleFileLocationChange();
    EXPECT_EQ(app->links()->lastShareLink(), "https://share");
    EXPECT_FALSE(app->links()->lastShareLinkValid());
    EXPECT_FALSE(app->githubRepoName());
}

TEST_F(VDModelAppTest, WholeDocumentPassesReachScreensAndComponentsAsTheySay) {
    auto app = threeScreens();
    auto card = view("card", {view("card")});
    auto master = view("master", {view("inner")});
    master->setBorderWidth(2);
    app->screenWithVarID("a")->setSubviews(Array{Value(card)});
    app->screenWithVarID("a")->setIsForm(false);
    app->fixModelAfterSketchExport(); // components are nil: the screens alone
    EXPECT_EQ(card->borderPosition(), "inside");

    app->setComponents(Array{Value(master)});
    app->markFormsAccordingToSubmitButtons();
    EXPECT_TRUE(app->screenWithVarID("a")->isForm());
    EXPECT_FALSE(master->isForm()) << "forms inside components aren't reached";
    app->enforceChildrenNamesDistinctFromParents();
    EXPECT_EQ(card->subviews()[0].objectAs<VDModelView>()->variableID(), "card1");
    app->fixModelAfterSketchExport();
    EXPECT_EQ(master->borderPosition(), "inside");
}
