#include <gtest/gtest.h>

#include <string>

#include "TestViews.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/document/VDModelApp.h"
#include "velmo/model/document/VDModelTabBarScreen.h"

using namespace velmo;

class VDModelTabBarScreenTest : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelTabBarScreenTest, ANewScreenHoldsOneNewTabBar) {
    auto screen = VDModelTabBarScreen::create();
    EXPECT_TRUE(screen->modelID()->starts_with("TabBarScreen_"));
    EXPECT_EQ(screen->width(), 375.0f) << "a screen's defaults first";
    ASSERT_EQ(screen->subviews().size(), 1u);
    EXPECT_EQ(screen->tabbar(), screen->subviews()[0].objectAs<VDModelTabBar>());
    EXPECT_TRUE(screen->tabbar());

    const auto decoded =
        std::static_pointer_cast<VDModelTabBarScreen>(VDModelDecoder::modelObjectFromDictionary(
            Json::parse(R"({"model_class":"VDModelTabBarScreen","subviews":[]})").dictionary()));
    EXPECT_FALSE(decoded->tabbar()) << "a document's list replaces the default";
}

// Subviews given as letters, back to front; "T" is a tab bar.
TEST_F(VDModelTabBarScreenTest, TheViewJustBelowTheTabBar) {
    const struct {
        const char* layout;
        const char* below;
    } cases[] = {
        {"abTc", "b"}, {"Tab", ""}, {"ab", "b"}, {"", ""}, {"aTbT", "a"},
    };
    for (const auto& c : cases) {
        auto screen = VDModelTabBarScreen::create();
        Array subviews = Array::create();
        for (const char* p = c.layout; *p; ++p) {
            std::shared_ptr<VDModelView> v =
                *p == 'T' ? std::static_pointer_cast<VDModelView>(VDModelTabBar::create())
                          : VDModelView::create();
            v->setVariableID(std::string(1, *p));
            subviews.push_back(Value(v));
        }
        screen->setSubviews(subviews);
        const auto below = screen->highestViewBelowTabbar();
        EXPECT_EQ(below ? *below->variableID() : "", c.below) << c.layout;
    }
}

TEST_F(VDModelTabBarScreenTest, ADocumentHasATabBarWhenAScreenIsATabBarScreen) {
    auto app = VDModelApp::create();
    EXPECT_FALSE(app->hasTabBar());
    app->setScreens(Array{app->screens()[0], Value(VDModelTabBarScreen::create())});
    EXPECT_TRUE(app->hasTabBar());
    EXPECT_TRUE(modelCopy(app)->hasTabBar());
}
