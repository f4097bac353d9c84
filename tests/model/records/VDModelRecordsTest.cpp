#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/UserDefaults.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/records/VDModelAnimationWeb.h"
#include "velmo/model/records/VDModelAutoAnimate.h"
#include "velmo/model/records/VDModelBar.h"
#include "velmo/model/records/VDModelBorder.h"
#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelDataList.h"
#include "velmo/model/records/VDModelFill.h"
#include "velmo/model/records/VDModelFrame.h"
#include "velmo/model/records/VDModelGradientStop.h"
#include "velmo/model/records/VDModelGuide.h"
#include "velmo/model/records/VDModelHover.h"
#include "velmo/model/records/VDModelShadow.h"
#include "velmo/model/records/VDModelSpecsInfo.h"
#include "velmo/model/records/VDModelTheme.h"
#include "velmo/model/records/VPAnimationExportSettings.h"
#include "velmo/model/values/ColorExtensions.h"
#include "velmo/model/view/VDModelView.h"
#include "velmo/model/view/VDModelViewConstraints.h"
#include "velmo/model/view/VDModelViewPadding.h"

using namespace velmo;

namespace {
std::shared_ptr<VDModel> decode(std::string_view json) {
    return VDModelDecoder::modelObjectFromDictionary(Json::parse(json).dictionary());
}
template <class T> std::shared_ptr<T> decodeAs(std::string_view json) {
    return std::dynamic_pointer_cast<T>(decode(json));
}
} // namespace

TEST(VDModelRecords, BaseFieldsAndIdentifiersPerClass) {
    const struct {
        std::shared_ptr<VDModel> model;
        bool hasVariableID;
        const char* idPrefix; // nullptr: no generated identifier
    } cases[] = {
        {VDModelColor::create(), false, nullptr},
        {VDModelFrame::create(), false, nullptr},
        {VDModelPoint::create(), false, "point_"},
        {VDModelFill::create(), false, "fill_"},
        {VDModelGradient::create(), false, "gradient_"},
        {VDModelGradientStop::create(), false, "gradientStop_"},
        {VDModelBorder::create(), false, nullptr},
        {VDModelShadow::create(), false, nullptr},
        {VDModelSpecsInfo::create(), false, nullptr},
        {VDModelHover::create(), false, nullptr},
        {VDModelViewPadding::create(), true, "viewPadding_"},
        {VDModelGuide::create(), true, "guide_"},
        {VDModelBar::create(), true, "bar_"},
        {VDModelDataList::create(), true, "dataList_"},
        {VDModelTheme::create(), true, "theme_"},
        {VPAnimationExportSettings::create(), true, "vPAnimationExportSettings_"},
        {VDModelConstraint::create(), false, nullptr},
        {VDModelViewConstraints::create(), false, nullptr},
        {VDModelAnimationWeb::create(), true, "animationWeb_"},
        {VDModelAutoAnimate::create(), true, "autoAnimate_"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.model->modelClass().name());
        const auto names = c.model->fieldNames();
        EXPECT_EQ(std::count(names.begin(), names.end(), "variableID"), c.hasVariableID ? 1 : 0);
        EXPECT_EQ(names[0], "modelID");
        if (c.idPrefix) {
            ASSERT_TRUE(c.model->modelID());
            EXPECT_TRUE(c.model->modelID()->starts_with(c.idPrefix)) << *c.model->modelID();
        } else {
            EXPECT_FALSE(c.model->modelID());
        }
    }
}

TEST(VDModelRecords, ColorDefaultsAndNamedColours) {
    auto white = decodeAs<VDModelColor>(R"({"model_class":"VDModelColor"})");
    ASSERT_TRUE(white);
    EXPECT_TRUE(white->isEqual(*VDModelColor::whiteColor()));
    auto clear = decodeAs<VDModelColor>(R"({"model_class":"VDModelColor","alpha":0})");
    EXPECT_TRUE(clear->isEqual(*VDModelColor::clearColor())) << "clear is white with alpha 0";
    EXPECT_EQ(VDModelColor::navBarDefaultColor()->red(), 250.0f / 255.0f);
    EXPECT_EQ(VDModelColor::navBarDefaultTintColor()->green(), 107.0f / 255.0f);
    EXPECT_EQ(VDModelColor::tableSeperatorDefaultColor()->blue(), 204.0f / 255.0f);
    EXPECT_EQ(VDModelColor::placeHolderColor()->green(), 187.0f / 255.0f);
    // Single precision shows in the JSON: 250/255 as a float, not as a double.
    EXPECT_NE(VDModelColor::navBarDefaultColor()->toJson().find("\"red\": 0.98039216"), std::string::npos);
}

TEST(VDModelRecords, ColorHexForms) {
    const struct {
        const char* text;
        float alpha;
        float r, g, b, a;
    } cases[] = {
        {"#FFF", 0.5f, 0, 0, 0, 1},      // five characters or fewer: opaque black
        {"0x#112", 0.5f, 0, 0, 0, 0.5f}, // stripped to two digits: black, given alpha
        {"#11223344", 1, 0x11 / 255.0f, 0x22 / 255.0f, 0x33 / 255.0f, 1},
        {"  0xff8000\n", 0.25f, 1, 128 / 255.0f, 0, 0.25f},
        {"#ZZ00FF", 1, 0, 0, 1, 1},                      // a pair that doesn't scan is 0
        {"#1G0000", 1, 1 / 255.0f, 0, 0, 1},             // a pair reads as far as its digits go
        {"#\xC3\xA9\xC3\xA9\xC3\xA9", 0.5f, 0, 0, 0, 1}, // four characters, however many bytes
    };
    for (const auto& c : cases) {
        auto color = VDModelColor::colorFromHex(c.text, c.alpha);
        EXPECT_TRUE(color->isEqual(*VDModelColor::colorWithRed(c.r, c.g, c.b, c.a)))
            << c.text << " " << color->toJson();
    }
    EXPECT_EQ(VDModelColor::colorWithRed(1, 0.5f, 0, 1)->hex(), "#ff7f00");
}

TEST(VDModelRecords, ColorTestsInSinglePrecision) {
    EXPECT_TRUE(VDModelColor::colorWithRed(1, 1, 1, 0.04f)->isTransparent()) << "0.04f is 0.0399999991";
    EXPECT_FALSE(VDModelColor::colorWithRed(1, 1, 1, 0.05f)->isTransparent());
    EXPECT_FALSE(VDModelColor::colorWithRed(1, 1, 1, 0.5f)->isWhite());
    EXPECT_TRUE(VDModelColor::colorWithRed(0.97f, 0.97f, 0.97f, 0.97f)->isWhite());
    EXPECT_FALSE(VDModelColor::colorWithRed(0.96f, 1, 1, 1)->isWhite());
}

TEST(VDModelRecords, ColorEqualityAndHash) {
    auto a = VDModelColor::colorWithRed(0.2f, 0.4f, 0.6f, 1);
    auto b = VDModelColor::colorWithRed(0.2f, 0.4f, 0.6f, 1);
    auto shuffled = VDModelColor::colorWithRed(0.6f, 0.4f, 0.2f, 1);
    EXPECT_TRUE(a->isEqual(*b));
    EXPECT_EQ(a->hash(), b->hash());
    EXPECT_FALSE(a->isEqual(*shuffled));
    EXPECT_EQ(a->hash(), shuffled->hash()) << "same sum, same hash";
    EXPECT_EQ(VDModelColor::whiteColor()->hash(), 1020u);
    EXPECT_FALSE(a->isEqual(*VDModelColor::colorWithRed(0.2f, 0.4f, 0.6f, 0.99999994f))) << "no tolerance";
}

TEST(VDModelRecords, FrameEqualityNeedsEveryNumber) {
    auto a = decodeAs<VDModelFrame>(R"({"model_class":"VDModelFrame","x":1,"y":2,"width":3,"height":4})");
    auto b = decodeAs<VDModelFrame>(R"({"model_class":"VDModelFrame","x":1.0,"y":2,"width":3,"height":4})");
    EXPECT_TRUE(a->isEqual(*b));
    EXPECT_EQ(a->hash(), b->hash());
    auto partial = decodeAs<VDModelFrame>(R"({"model_class":"VDModelFrame","x":1,"y":2,"width":3})");
    auto partial2 = decodeAs<VDModelFrame>(R"({"model_class":"VDModelFrame","x":1,"y":2,"width":3})");
    EXPECT_FALSE(partial->isEqual(*partial2)) << "a nil side never compares equal";
    EXPECT_TRUE(partial->isEqual(*partial)) << "but the same object is";
    EXPECT_EQ(Value(partial->toDictionary()),
              Json::parse(R"({"model_class":"VDModelFrame","model_version":0,"x":1,"y":2,"width":3})"));
}

TEST(VDModelRecords, FieldsOutsideTheListAreNotCopied) {
    VDModelDecoder::sharedInstance(); // copying needs the mapping
    auto shadow = VDModelShadow::create();
    shadow->setRadius(4);
    shadow->setBlur(2);
    auto padding = VDModelViewPadding::create();
    padding->setUserInputs(3);
    auto guide = VDModelGuide::create();
    guide->setType(2);
    guide->setTop(VDModelConstraint::create());
    EXPECT_EQ(modelCopy(shadow)->radius(), 0.0f);
    EXPECT_EQ(modelCopy(shadow)->blur(), 2.0f);
    EXPECT_EQ(modelCopy(padding)->userInputs(), 0);
    EXPECT_FALSE(modelCopy(guide)->top());
    EXPECT_FALSE(guide->toDictionary().contains("type"));
}

TEST(VDModelRecords, SpecsInfoEmptiness) {
    auto specs = VDModelSpecsInfo::create();
    EXPECT_TRUE(specs->isEmpty());
    specs->setAssets(Dictionary::create());
    specs->setFills(Array::create());
    EXPECT_TRUE(specs->isEmpty());
    specs->setShadows(Array{Value(1)});
    EXPECT_FALSE(specs->isEmpty());
}

TEST(VDModelRecords, BarAndThemeDefaults) {
    auto theme = VDModelTheme::create();
    ASSERT_TRUE(theme->navBar());
    EXPECT_TRUE(theme->navBar()->tint()->isEqual(*VDModelColor::navBarDefaultTintColor()));
    EXPECT_TRUE(theme->navBar()->titleColor()->isEqual(*VDModelColor::blackColor()));
    EXPECT_EQ(theme->navBar()->titleTextSize(), "16");
    EXPECT_EQ(theme->navBar()->titleFont(), "System");
    EXPECT_EQ(theme->statusbarType(), 2);
    EXPECT_EQ(theme->name(), "Untitled Theme");
    EXPECT_TRUE(theme->recentFonts().empty());
    EXPECT_TRUE(theme->fonts().isNil());
}

TEST(VDModelRecords, RecentFontsKeepFiveMostRecentFirst) {
    auto theme = VDModelTheme::create();
    for (int i = 1; i <= 5; ++i)
        theme->addRecentFont("Font" + std::to_string(i), "Family");
    EXPECT_EQ(Value(theme->recentFonts()), Json::parse(R"(["Font5","Font4","Font3","Font2","Font1"])"));
    EXPECT_EQ(Value(theme->recentFontsFamilies()), Json::parse(R"(["Family"])")) << "the lists shrink apart";
    theme->addRecentFont("Font3", "Other");
    EXPECT_EQ(Value(theme->recentFonts()), Json::parse(R"(["Font3","Font5","Font4","Font2","Font1"])"));
    theme->addRecentFont("Font6", "Other");
    EXPECT_EQ(Value(theme->recentFonts()), Json::parse(R"(["Font6","Font3","Font5","Font4","Font2"])"));
    EXPECT_EQ(Value(theme->recentFontsFamilies()), Json::parse(R"(["Other","Family"])"));
}

TEST(VDModelRecords, MergeFontsAppendsWhatIsMissing) {
    auto mine = VDModelTheme::create();
    auto other = VDModelTheme::create();
    auto shared = VDModelColor::whiteColor(); // any model stands in for a font here
    other->setFonts(Array{Value(shared), Value(VDModelColor::blackColor())});
    mine->mergeFonts(*other);
    EXPECT_TRUE(mine->fonts().isNil()) << "nil stays nil";
    mine->setFonts(Array{Value(VDModelColor::whiteColor())});
    mine->mergeFonts(*other);
    EXPECT_EQ(mine->fonts().size(), 2u);
}

TEST(VDModelRecords, DataListTypeNames) {
    EXPECT_EQ(VDModelDataList::nameForType(0), "Empty List");
    EXPECT_EQ(VDModelDataList::nameForType(3), "RSS");
    EXPECT_EQ(VDModelDataList::nameForType(9), "");
    EXPECT_EQ(VDModelDataList::nameForType(-1), "");
    EXPECT_EQ(VDModelDataList::typeForName("JSON"), 2);
    EXPECT_EQ(VDModelDataList::typeForName("XML"), 0);
}

TEST(VDModelRecords, ExportSettingsSaveAndLoad) {
    auto defaults = VPAnimationExportSettings::load();
    EXPECT_EQ(defaults->fps(), 30);
    EXPECT_EQ(defaults->scale(), 100);
    EXPECT_EQ(defaults->loopCount(), 0);
    EXPECT_FALSE(defaults->transparency());

    auto settings = VPAnimationExportSettings::create();
    settings->setFps(60);
    settings->setScale(200);
    settings->setLoopCount(3);
    settings->setTransparency(true);
    ASSERT_TRUE(settings->save());
    auto loaded = VPAnimationExportSettings::load();
    EXPECT_EQ(loaded->fps(), 60);
    EXPECT_EQ(loaded->scale(), 200);
    EXPECT_EQ(loaded->loopCount(), 3);
    EXPECT_TRUE(loaded->transparency());
    EXPECT_EQ(Value(settings->archive()),
              Json::parse(R"({"fps":60,"scale":200,"loopCount":3,"transparency":true})"));
    UserDefaults::standardUserDefaults().removeObjectForKey(kAnimationExportSettingsDefaultsKey);
}

TEST(ColorExtensions, PlatformColourForms) {
    EXPECT_EQ(colorFromHexString("#FFF", 0.5), PlatformColor::rgb(0, 0, 0, 1));
    EXPECT_EQ(colorFromHexString("#1122334", 0.5), PlatformColor::rgb(0, 0, 0, 1)) << "exactly six digits";
    EXPECT_EQ(colorFromHexString(" #ff0080 ", 0.5), PlatformColor::rgb(1, 0, 128 / 255.0, 0.5));
    const PlatformColor c = PlatformColor::rgb(0.5, 0.2, 1.0, 0.5);
    EXPECT_EQ(hex(c), "#7f33ff");
    EXPECT_EQ(hexWithAlpha(c), "#7f33ff7f");
    EXPECT_EQ(_vp_asHexString(c), "#8033FF") << "rounded, upper case";
    EXPECT_EQ(_vp_asHexString(PlatformColor::gray(0.5, 1)), "#808080");
    EXPECT_EQ(hex(PlatformColor::gray(1, 1)), "#ffffff");
    auto model = modelColor(PlatformColor::gray(0.25, 0.5));
    EXPECT_TRUE(model->isEqual(*VDModelColor::colorWithRed(0.25f, 0.25f, 0.25f, 0.5f)));
    EXPECT_EQ(colorFromModelColor(*model), PlatformColor::rgb(0.25, 0.25, 0.25, 0.5));
}

TEST(VDModelRecords, ViewEnterAnimationIsACopyOfAnAnimationRecord) {
    auto view = decodeAs<VDModelView>(R"({"model_class":"VDModelView",
        "enterAnimation":{"model_class":"VDModelAnimationWeb","name":"fade","duration":0.3}})");
    ASSERT_TRUE(view && view->enterAnimation());
    EXPECT_EQ(view->enterAnimation()->name(), "fade");
    EXPECT_EQ(view->enterAnimation()->duration(), 0.3f);

    auto wrongClass = decodeAs<VDModelView>(
        R"({"model_class":"VDModelView","enterAnimation":{"model_class":"VDModelColor"}})");
    ASSERT_TRUE(wrongClass);
    EXPECT_FALSE(wrongClass->enterAnimation()) << "only an animation record fits the field";

    auto animation = VDModelAnimationWeb::create();
    view->setEnterAnimation(animation);
    EXPECT_NE(view->enterAnimation(), animation);
    EXPECT_TRUE(view->enterAnimation()->isEqual(*animation));
}
