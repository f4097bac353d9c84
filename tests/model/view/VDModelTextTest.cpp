#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "ValuePrinting.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/core/VDModelDecoder.h"
#include "velmo/model/records/VDModelSpan.h"
#include "velmo/model/records/VDModelTheme.h"
#include "velmo/model/view/VDModelLabel.h"
#include "velmo/model/view/VDModelTextView.h"

using namespace velmo;

namespace {

std::shared_ptr<VDModel> decode(std::string_view json) {
    return VDModelDecoder::modelObjectFromDictionary(Json::parse(json).dictionary());
}

// The names a class appends to `VDModelView`'s (or `VDModel`'s) list, in order.
std::vector<std::string_view> ownFieldNames(const VDModel& model, std::size_t inherited) {
    const auto names = model.fieldNames();
    return {names.begin() + static_cast<std::ptrdiff_t>(inherited), names.end()};
}

} // namespace

class VDModelTextFixture : public ::testing::Test {
protected:
    void SetUp() override { VDModelDecoder::sharedInstance(); }
};

TEST_F(VDModelTextFixture, NewTextModelsHaveTheirDefaultsAndFieldOrder) {
    const std::size_t viewFields = VDModelView::create()->fieldNames().size();
    const std::size_t baseFields = VDModel::create()->fieldNames().size();
    const struct {
        std::shared_ptr<VDModel> model;
        std::size_t inherited;
        const char* idPrefix;
        const char* ownFields;
        const char* json; // what the encoded form holds, among other keys
        std::vector<const char*> absent;
    } cases[] = {
        {VDModelLabel::create(),
         viewFields,
         "Label_",
         R"(["text","font","fontWeight","textSize","textColor","lines","linebreak","alignment","kern",
             "lineHeight","pSpacing","isMinWidth","isAutoWidth","hasUnderline","hasBullets","hasNumbers",
             "hasStrike","spans","vAlignment"])",
         R"({"text":"Text","font":"System","textSize":"12","lines":0,"alignment":0,"kern":0,"viewName":"Label",
             "width":100,"height":100,
             "textColor":{"model_class":"VDModelColor","model_version":0,"red":0,"green":0,"blue":0,"alpha":1}})",
         {"fontWeight", "spans", "vAlignment"}},
        {VDModelTextView::create(),
         viewFields,
         "Text_",
         R"(["text","font","fontWeight","textSize","textColor","linebreak","alignment","kern","lineHeight",
             "pSpacing","keyboardType","keyboardAppearance","keyboardReturnType","isPassword","nativeBackground",
             "placeHolder","phColor","inputType","inputRequired","inputPlaceholder"])",
         R"({"text":"","font":"System","textSize":"12","alignment":2,"nativeBackground":1,"placeHolder":"",
             "isPassword":0,"viewName":"Text","width":150,"height":30,
             "color":{"model_class":"VDModelColor","model_version":0,"red":1,"green":1,"blue":1,"alpha":1},
             "textColor":{"model_class":"VDModelColor","model_version":0,"red":0,"green":0,"blue":0,"alpha":1}})",
         {"fontWeight", "phColor", "inputType", "inputPlaceholder", "lines"}},
        {VDModelSpan::create(),
         baseFields,
         "span_",
         R"(["isEqualToParent","text","font","fontWeight","textSize","textColor","linebreak","alignment","kern",
             "lineHeight","pSpacing","hasUnderline","hasStrike"])",
         R"({"isEqualToParent":0,"alignment":0,"hasStrike":0})",
         {"text", "font", "textSize", "textColor", "lines"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.model->modelClass().name());
        ASSERT_TRUE(c.model->modelID());
        EXPECT_TRUE(c.model->modelID()->starts_with(c.idPrefix)) << *c.model->modelID();
        Array own = Array::create();
        for (std::string_view n : ownFieldNames(*c.model, c.inherited))
            own.push_back(Value(std::string(n)));
        EXPECT_EQ(Value(own), Json::parse(c.ownFields));
        const Dictionary encoded = c.model->toDictionary();
        for (const auto& [key, value] : Json::parse(c.json).dictionary()) {
            EXPECT_EQ(encoded.get(key.stringView()), value) << key.stringView();
        }
        for (const char* key : c.absent)
            EXPECT_FALSE(encoded.contains(key)) << key;
    }
    // Neither adds to the fields that states override.
    EXPECT_EQ(VDModelLabel::create()->stateAffectedFields(), VDModelView::create()->stateAffectedFields());
    EXPECT_EQ(VDModelTextView::create()->stateAffectedFields(), VDModelView::create()->stateAffectedFields());
}

TEST_F(VDModelTextFixture, SettingTextNamesALabelOnlyWhileItHasAViewsName) {
    const struct {
        std::optional<std::string> name;
        bool userChanged;
        std::optional<std::string> text;
        std::optional<std::string> expectedName;
        std::optional<std::string> expectedText;
    } cases[] = {
        {"View", false, "Hi", "Label: Hi", "Hi"},
        {std::nullopt, false, "Hi", "Label: Hi", "Hi"},
        {"Title", false, "Hi", "Title", "Hi"},
        {"Title", false, "", "Title", ""},
        {"Label", false, "Hi", "Label", "Hi"}, // a new label keeps its name
        {"View", true, "Hi", "View", "Hi"},
        {"View", true, "", "Label", ""},
        {"View", false, std::nullopt, "Label", std::nullopt},
        // The separator becomes a line end in the text, not in the name.
        {"View", false, "a\u2028b\u2028", "Label: a\u2028b\u2028", "a\nb\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name.value_or("(nil)") + " / " + c.text.value_or("(nil)"));
        auto label = VDModelLabel::create();
        label->setViewName(c.name);
        label->setUserChangedViewName(c.userChanged);
        label->setText(c.text);
        EXPECT_EQ(label->viewName(), c.expectedName);
        EXPECT_EQ(label->text(), c.expectedText);
    }
}

TEST_F(VDModelTextFixture, SettingTextNamesATextViewWhateverItsName) {
    const struct {
        std::optional<std::string> name;
        bool userChanged;
        std::string text;
        std::optional<std::string> expectedName;
    } cases[] = {
        {"Text", false, "Hi", "Text: Hi"},  {"Text: Hi", false, "", "Text"},
        {"Email", false, "Hi", "Text: Hi"}, {"Email", true, "Hi", "Email"},
        {"Email", true, "", "Text"},        {"Text", false, "a\u2028b", "Text: a\u2028b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name.value_or("(nil)") + " / " + c.text);
        auto field = VDModelTextView::create();
        field->setViewName(c.name);
        field->setUserChangedViewName(c.userChanged);
        field->setText(c.text);
        EXPECT_EQ(field->viewName(), c.expectedName);
        EXPECT_EQ(field->text(), c.text) << "stored as it is";
    }
    // The setter runs while decoding, after the name: a named field with an empty text loses
    // its name, a named label keeps its own.
    auto field = std::dynamic_pointer_cast<VDModelTextView>(
        decode(R"({"model_class":"VDModelTextView","viewName":"Email","userChangedViewName":1,"text":""})"));
    ASSERT_TRUE(field);
    EXPECT_EQ(field->viewName(), "Text");
    auto label = std::dynamic_pointer_cast<VDModelLabel>(
        decode(R"({"model_class":"VDModelLabel","viewName":"Email","text":""})"));
    ASSERT_TRUE(label);
    EXPECT_EQ(label->viewName(), "Email");
}

TEST_F(VDModelTextFixture, TextWithSpansAndFontsRoundTrips) {
    const Value spans = Json::parse(R"([
        {"model_class":"VDModelSpan","model_version":0,"modelID":"span_1","isEqualToParent":1,"text":"Sign ",
         "font":"Avenir-Heavy","fontWeight":"800","textSize":"18","linebreak":0,"alignment":1,"kern":0.5,
         "lineHeight":22,"pSpacing":0,"hasUnderline":0,"hasStrike":0},
        {"model_class":"VDModelSpan","model_version":0,"modelID":"span_2","isEqualToParent":0,"text":"up",
         "font":"Georgia-Italic","textSize":"18.5","linebreak":0,"alignment":1,"kern":0,"lineHeight":0,
         "pSpacing":2.25,"hasUnderline":1,"hasStrike":1,
         "textColor":{"model_class":"VDModelColor","model_version":0,"red":1,"green":0.5,"blue":0,"alpha":1}}])");
    const Value fonts = Json::parse(R"([
        {"model_class":"VDModelFont","model_version":0,"modelID":"font_1","familyName":"Avenir-Heavy",
         "fileName":"Avenir-Heavy.ttf","weight":"800","fontName":"Avenir","size":18,"lineSpacing":1.25,
         "letterSpacing":0.5,"style":"normal","originalFontName":"Avenir","originalStyle":"Heavy",
         "md5":"0123456789abcdef0123456789abcdef"},
        {"model_class":"VDModelFont","model_version":0,"modelID":"font_2","familyName":"Georgia-Italic",
         "cssLink":"https://fonts.example/css?family=Georgia","size":18.5,"style":"italic"}])");
    Dictionary in = Json::parse(R"({"model_class":"VDModelLabel","text":"Sign up","lines":2,"hasBullets":1,
                                    "vAlignment":"center"})")
                        .dictionary();
    in.set("spans", spans);
    auto label = std::dynamic_pointer_cast<VDModelLabel>(VDModelDecoder::modelObjectFromDictionary(in));
    ASSERT_TRUE(label);
    ASSERT_EQ(label->spans().size(), 2u);
    auto second = label->spans()[1].objectAs<VDModelSpan>();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->pSpacing(), 2.25f);
    EXPECT_TRUE(second->hasStrike());
    EXPECT_EQ(second->textColor()->green(), 0.5f);

    const Dictionary out = Json::parse(Json::write(Value(label->toDictionary()))).dictionary();
    EXPECT_EQ(out.get("spans"), spans);
    for (const char* key : {"text", "lines", "hasBullets", "vAlignment"}) {
        EXPECT_EQ(out.get(key), in.get(key)) << key;
    }

    auto theme = VDModelTheme::create();
    theme->setFonts(VDModel::decodeItem(fonts).array());
    const Dictionary themeOut = Json::parse(Json::write(Value(theme->toDictionary()))).dictionary();
    EXPECT_EQ(themeOut.get("fonts"), fonts);
    EXPECT_TRUE(themeOut.get("fonts").array()[0].dictionary().get("size").isIntegral())
        << "numbers keep their kind";
}

TEST_F(VDModelTextFixture, TextPropertiesAreReachedWithoutKnowingTheClass) {
    const std::shared_ptr<VDModel> models[] = {VDModelLabel::create(), VDModelTextView::create(),
                                               VDModelSpan::create()};
    for (const auto& model : models) {
        SCOPED_TRACE(model->modelClass().name());
        auto text = std::dynamic_pointer_cast<VDModelWithTextProperties>(model);
        ASSERT_TRUE(text);
        text->setFont("Menlo-Bold");
        text->setKern(1.5f);
        text->setLines(3);
        EXPECT_EQ(model->valueForKey("font"), Value("Menlo-Bold"));
        EXPECT_EQ(model->valueForKey("kern"), Value(1.5f));
        const bool label = model->modelClass().isSubclassOf(VDModelLabel::classObject());
        EXPECT_EQ(text->respondsToLines(), label);
        EXPECT_EQ(text->lines(), label ? 3 : 0);
    }
}

TEST(VDModelTextView, KeyboardNamesReadBothWays) {
    using T = VDModelTextView;
    const struct {
        std::string (*name)(std::int32_t);
        std::int32_t (*value)(std::string_view);
        std::vector<std::string> names;
    } tables[] = {
        {&T::nameForKeyboardType, &T::keyboardTypeForName, {"Default", "Email", "Number", "URL", "Social"}},
        {&T::nameForKeyboardReturnType,
         &T::keyboardReturnTypeForName,
         {"Done", "Return", "Search", "Next", "Send", "Go"}},
        {&T::nameForKeyboardAppearance, &T::keyboardAppearanceForName, {"Light", "Dark"}},
    };
    for (const auto& t : tables) {
        SCOPED_TRACE(t.names[0]);
        for (std::size_t i = 0; i < t.names.size(); ++i) {
            EXPECT_EQ(t.name(static_cast<std::int32_t>(i)), t.names[i]);
            EXPECT_EQ(t.value(t.names[i]), static_cast<std::int32_t>(i));
        }
        EXPECT_EQ(t.name(static_cast<std::int32_t>(t.names.size())), "");
        EXPECT_EQ(t.name(-1), "");
        for (const char* unknown : {"", "email", "Emoji"})
            EXPECT_EQ(t.value(unknown), 0) << unknown;
    }
}

TEST(VDModelLabelFonts, FixFontNameForMacOS) {
    const std::pair<const char*, const char*> cases[] = {
        {".SFUIText", "SFUIText"}, // one rule only: the result isn't tried again
        {".SFUIText-Bold", "SFUIText-Bold"},
        {"SFUIText", "SFUIText-Regular"},
        {"System", "SF UI Text"},
        {"Georgia", "Georgia"},
        {"", ""},
    };
    for (const auto& [in, out] : cases)
        EXPECT_EQ(VDModelLabel::fixFontNameForMacOS(in), out) << in;
}

TEST(VDModelLabelFonts, FamilyTablesAgree) {
    const Array& families = VDModelLabel::familyNames();
    const Dictionary& byFont = VDModelLabel::fontsToFamilyNames();
    const Dictionary& byFamily = VDModelLabel::familyNamesToFonts();
    ASSERT_EQ(families.size(), 77u);
    EXPECT_EQ(families.first(), Value("System"));
    EXPECT_EQ(families.last(), Value("Zapfino"));
    ASSERT_EQ(byFont.size(), 265u);
    ASSERT_EQ(byFamily.size(), 77u);
    EXPECT_EQ(&VDModelLabel::fontsToFamilyNames(), &byFont) << "made once and kept";

    EXPECT_EQ((byFont.begin() + 2)->key.stringView(), ".SFUIText-HeavyItalic") << "the table's order";
    EXPECT_EQ((byFont.end() - 1)->key.stringView(), "BodoniSvtyTwoOSITCTT-BookIt");
    const std::pair<const char*, const char*> rows[] = {
        {"System", R"(["System","Normal"])"},
        {".SFUIText", R"(["SF UI Text","Normal"])"},
        {".SFUIText-HeavyItalic", R"(["SF UI Text","HeavyItalic"])"},
        {"CourierNewPS-BoldMT", R"(["Courier New","Bold"])"},
    };
    for (const auto& [font, pair] : rows)
        EXPECT_EQ(byFont.get(font), Json::parse(pair)) << font;
    EXPECT_EQ(byFamily.get("System"), Json::parse(R"([["Normal","System"]])"));
    const Array sf = byFamily.get("SF UI Text").array();
    ASSERT_GE(sf.size(), 4u);
    EXPECT_EQ(
        Value(Array{sf[0], sf[1], sf[2], sf[3]}),
        Json::parse(R"([["Normal",".SFUIText"],["Light",".SFUIText-Light"],["Medium",".SFUIText-Medium"],
                              ["Heavy",".SFUIText-Heavy"]])"));

    // One table turned round is the other, family by family in the order of `familyNames`.
    std::set<std::tuple<std::string, std::string, std::string>> forward, back;
    std::set<std::string> familySet;
    for (const Value& f : families)
        familySet.insert(f.str());
    for (const auto& [font, pair] : byFont) {
        const Array p = pair.array();
        EXPECT_TRUE(familySet.contains(p[0].str())) << p[0].str();
        forward.emplace(p[0].str(), p[1].str(), std::string(font.stringView()));
    }
    std::size_t i = 0;
    for (const auto& [family, faces] : byFamily) {
        EXPECT_EQ(Value(std::string(family.stringView())), families[i++]);
        for (const Value& face : faces.array()) {
            back.emplace(std::string(family.stringView()), face.array()[0].str(), face.array()[1].str());
        }
    }
    EXPECT_EQ(forward, back);
}
