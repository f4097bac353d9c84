#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "TestViews.h"
#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/host/VVHostTree.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/view/VDModelBlurView.h"
#include "velmo/model/view/VDModelCellView.h"
#include "velmo/model/view/VDModelCollectionView.h"
#include "velmo/model/view/VDModelGradientView.h"
#include "velmo/model/view/VDModelImageView.h"
#include "velmo/model/view/VDModelMapView.h"
#include "velmo/model/view/VDModelProgressView.h"
#include "velmo/model/view/VDModelSliceView.h"
#include "velmo/model/view/VDModelSliderView.h"
#include "velmo/model/view/VDModelStackView.h"
#include "velmo/model/view/VDModelSwitchView.h"
#include "velmo/model/view/VDModelTabBar.h"
#include "velmo/model/view/VDModelTabBarItem.h"
#include "velmo/model/view/VDModelTableView.h"
#include "velmo/model/view/VDModelVideoView.h"
#include "velmo/model/view/VDModelWebView.h"
#include "velmo/model/view/VDModelWidget.h"

using namespace velmo;

namespace {

class VDModelViewKindsTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }

    static std::shared_ptr<VDModel> decode(std::string_view json) {
        return VDModelDecoder::modelObjectFromDictionary(Json::parse(json).dictionary());
    }
};

using Fields = std::vector<std::pair<std::string_view, Value>>;

Value color(std::shared_ptr<VDModelColor> c) {
    return Value(std::move(c));
}

} // namespace

TEST_F(VDModelViewKindsTest, NewViewsHaveTheirDefaultsPrefixesAndFlags) {
    const Value clear = color(VDModelColor::clearColor());
    const struct {
        const VDModelClass& cls;
        const char* prefix;
        Fields fields;
        // The behaviour flags that are off: "hiding", "generating", "width", "height".
        std::string_view off = "";
    } cases[] = {
        {VDModelImageView::classObject(),
         "image",
         {{"viewName", Value("Image")},
          {"imageName", Value("")},
          {"imageMode", Value(2)},
          {"isTintOn", Value(0)},
          {"tintColor", color(VDModelColor::blackColor())},
          {"color", clear}}},
        {VDModelSliceView::classObject(),
         "sliceView",
         {{"viewName", Value("Image")}, {"imageMode", Value(2)}}},
        {VDModelVideoView::classObject(),
         "video",
         {{"viewName", Value("Video")},
          {"color", color(VDModelColor::blackColor())},
          {"videoName", Value("")},
          {"allowFullScreen", Value(1)},
          {"autoplay", Value(0)}}},
        {VDModelWebView::classObject(),
         "webView",
         {{"viewName", Value("WebView")}, {"color", color(VDModelColor::whiteColor())}, {"url", Value("")}}},
        {VDModelMapView::classObject(), "map", {{"viewName", Value("Map")}, {"address", Value("")}}},
        {VDModelStackView::classObject(),
         "stackView",
         {{"viewName", Value("Stack")}, {"color", clear}, {"type", Value(0)}, {"spacing", Value(0)}}},
        {VDModelTableView::classObject(),
         "Table",
         {{"viewName", Value("Table")},
          {"width", Value(320)},
          {"height", Value(320)},
          {"hasSeperator", Value(1)},
          {"seperatorOffset", Value(15)},
          {"seperatorColor", color(VDModelColor::tableSeperatorDefaultColor())},
          {"cells", Json::parse("[]")}},
         "generating"},
        {VDModelCellView::classObject(), "Cell", {{"viewName", Value("View")}, {"height", Value(55)}}},
        {VDModelTabBar::classObject(),
         "TabBar",
         {{"viewName", Value("TabBar")},
          {"height", Value(49)},
          {"color", color(VDModelColor::navBarDefaultColor())},
          {"tabbarButtonsColor", color(VDModelColor::navBarDefaultTintColor())},
          {"firstSelectedTabIndex", Value(0)}},
         "generating"},
        {VDModelTabBarItem::classObject(),
         "TabBarItem",
         {{"viewName", Value("TabBar Item")},
          {"color", clear},
          {"screenId", Value("")},
          {"title", Value("")}},
         "hiding"},
        {VDModelSwitchView::classObject(),
         "switch",
         {{"viewName", Value("Switch")},
          {"width", Value(51)},
          {"height", Value(31)},
          {"defaultValue", Value(1)}},
         "width height"},
        {VDModelSliderView::classObject(),
         "slider",
         {{"viewName", Value("Slider")}, {"width", Value(150)}, {"height", Value(31)}},
         "height"},
        {VDModelProgressView::classObject(),
         "progressBar",
         {{"viewName", Value("progressBar")}, {"width", Value(200)}, {"height", Value(2)}},
         "height"},
        {VDModelGradientView::classObject(),
         "gradient",
         {{"viewName", Value("Gradient")},
          {"color1", color(VDModelColor::colorWithRed(0, 0, 0, 0))},
          {"color2", color(VDModelColor::colorWithRed(0, 0, 0, 0.5f))}}},
        {VDModelBlurView::classObject(), "blurView", {{"viewName", Value("Blur")}, {"isDark", Value(0)}}},
        {VDModelCollectionView::classObject(), "collectionView", {{"viewName", Value("View")}}},
        {VDModelWidget::classObject(), "widget", {{"viewName", Value("View")}, {"width", Value(100)}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cls.name());
        const auto v = std::dynamic_pointer_cast<VDModelView>(c.cls.create());
        ASSERT_TRUE(v);
        EXPECT_TRUE(v->modelID()->starts_with(std::string(c.prefix) + "_")) << *v->modelID();
        for (const auto& [key, expected] : c.fields)
            EXPECT_EQ(v->valueForKey(key), expected) << key;
        const auto on = [&](std::string_view flag) { return c.off.find(flag) == std::string_view::npos; };
        EXPECT_EQ(v->supportsHiding(), on("hiding"));
        EXPECT_EQ(v->builderShouldGenerateSubviews(), on("generating"));
        EXPECT_EQ(v->resizableWidth(), on("width"));
        EXPECT_EQ(v->resizableHeight(), on("height"));
    }
}

// The asset's name renames the view, also while decoding, since "imageName" is set after
// "viewName" and "userChangedViewName".
TEST_F(VDModelViewKindsTest, ImageNameRenamesTheViewUnlessAPersonNamedIt) {
    const struct {
        const char* json;
        const char* viewName;
    } cases[] = {
        {R"({"model_class":"VDModelImageView","viewName":"Old","imageName":"hero.png"})", "Image: hero.png"},
        {R"({"model_class":"VDModelImageView","viewName":"Old","userChangedViewName":1,"imageName":"hero.png"})",
         "Old"},
        {R"({"model_class":"VDModelImageView","viewName":"Old","userChangedViewName":1,"imageName":""})",
         "Image"},
        {R"({"model_class":"VDModelImageView","viewName":"Old"})", "Old"},
        {R"({"model_class":"VDModelSliceView","viewName":"Old","imageName":"cut.png"})", "Image: cut.png"},
    };
    for (const auto& c : cases) {
        const auto image = std::dynamic_pointer_cast<VDModelImageView>(decode(c.json));
        ASSERT_TRUE(image) << c.json;
        EXPECT_EQ(image->viewName(), c.viewName) << c.json;
    }

    auto named = VDModelImageView::create();
    named->setViewName("Hero");
    named->setUserChangedViewName(true);
    named->setImageName("a.png");
    EXPECT_EQ(named->viewName(), "Hero");
    named->setImageName("");
    EXPECT_EQ(named->viewName(), "Image") << "an empty name resets whoever named it";
}

TEST_F(VDModelViewKindsTest, StackTypeHasTwoKeysAndStackTypeWinsOnReading) {
    const auto stack = std::static_pointer_cast<VDModelStackView>(
        decode(R"({"model_class":"VDModelStackView","type":1,"stackType":2})"));
    EXPECT_EQ(stack->stackType(), 2);
    EXPECT_EQ(stack->type(), 2);
    stack->setType(3);
    const Dictionary d = stack->toDictionary();
    EXPECT_EQ(d.get("type"), Value(3));
    EXPECT_EQ(d.get("stackType"), Value(3));
}

TEST_F(VDModelViewKindsTest, VideoListsTheViewsVideoURLASecondTime) {
    auto video = VDModelVideoView::create();
    const auto names = video->fieldNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), "videoURL"), 2);
    video->setVideoURL("https://example.com/a.mp4");
    const std::string json = Json::write(Value(video->toDictionary()));
    EXPECT_EQ(json.find("videoURL"), json.rfind("videoURL")) << "written once";
    EXPECT_EQ(modelCopy(video)->videoURL(), "https://example.com/a.mp4");
}

TEST_F(VDModelViewKindsTest, ANewTabBarHasThreeItemsOfItsOwnAndNoConstraints) {
    auto bar = VDModelTabBar::create();
    bar->setTabbarTransparent(true);
    const Dictionary d = bar->toDictionary();
    EXPECT_FALSE(d.contains("constraints"));
    EXPECT_FALSE(d.contains("tabbarTransparent"));
    const Array items = d.get("tabbarItems").array();
    ASSERT_EQ(items.size(), 3u);
    std::vector<std::string> ids;
    for (const Value& item : items) {
        EXPECT_EQ(item.dictionary().get("model_class"), Value("VDModelTabBarItem"));
        ids.push_back(item.dictionary().get("modelID").str());
        EXPECT_TRUE(ids.back().starts_with("TabBarItem_"));
    }
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(std::unique(ids.begin(), ids.end()), ids.end());
    EXPECT_FALSE(modelCopy(bar)->tabbarTransparent());
}

TEST_F(VDModelViewKindsTest, ATabBarShowsItsSubviewsThenItsItemsReversed) {
    auto bar = VDModelTabBar::create();
    const Array items = bar->tabbarItems();
    auto badge = view("badge");
    bar->setSubviews(Array{Value(badge)});
    EXPECT_EQ(bar->subviewsForTreeView(), (Array{Value(badge), items[2], items[1], items[0]}));
    EXPECT_EQ(bar->subviews().size(), 1u) << "the items are no subviews";
}

// Where a plain view only passes the word on, a cell posts an update of its own, then the word
// climbs on from it.
TEST_F(VDModelViewKindsTest, ACellTurnsAChangeInsideIntoItsOwnUpdate) {
    const struct {
        std::shared_ptr<VDModelView> middle;
        int posts;
    } cases[] = {{view("plain"), 0}, {VDModelCellView::create(), 1}};
    for (const auto& c : cases) {
        auto inner = view("inner");
        c.middle->setSubviews(Array{Value(inner)});
        auto root = view("root", {c.middle});
        const auto host = VVHostTree::attach(root);
        int posts = 0, rootPosts = 0;
        auto& center = NotificationCenter::defaultCenter();
        const auto t1 = center.addObserver(kModelUpdatedNotification, c.middle.get(),
                                           [&](const Notification&) { ++posts; });
        const auto t2 = center.addObserver(kModelUpdatedNotification, root.get(),
                                           [&](const Notification&) { ++rootPosts; });
        inner->postUpdateNotification();
        center.removeObserver(t1);
        center.removeObserver(t2);
        EXPECT_EQ(posts, c.posts) << c.middle->modelClass().name();
        EXPECT_EQ(rootPosts, 0) << "the root is told through subviewDidUpdate, not by a post";
    }
}
