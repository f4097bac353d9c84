#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/model/records/VDModelColor.h"
#include "velmo/model/records/VDModelFont.h"
#include "velmo/model/records/VDModelTheme.h"

using namespace velmo;

TEST(VDModelFont, EqualityLeavesStylesOutAndTellsNilFromAValue) {
    const auto make = [] {
        auto f = VDModelFont::create();
        f->setFamilyName("Avenir-Heavy");
        f->setFileName("Avenir-Heavy.ttf");
        f->setWeight("800");
        f->setSize(18);
        f->setStyle("normal");
        return f;
    };
    const struct {
        const char* what;
        void (*change)(VDModelFont&);
        bool equal;
    } cases[] = {
        {"nothing", [](VDModelFont&) {}, true},
        {"style", [](VDModelFont& f) { f.setStyle("italic"); }, true},
        {"originalStyle", [](VDModelFont& f) { f.setOriginalStyle("Bold"); }, true},
        {"identity and digest", [](VDModelFont& f) { f.setModelID("font_x"), f.setMd5("00"); }, true},
        {"size of another kind", [](VDModelFont& f) { f.setSize(18.0); }, true},
        {"familyName", [](VDModelFont& f) { f.setFamilyName("Avenir-Book"); }, false},
        {"fileName gone", [](VDModelFont& f) { f.setFileName(std::nullopt); }, false},
        {"cssLink added", [](VDModelFont& f) { f.setCssLink("https://fonts.example/a.css"); }, false},
        {"originalFontName added", [](VDModelFont& f) { f.setOriginalFontName("Avenir"); }, false},
        {"weight", [](VDModelFont& f) { f.setWeight("900"); }, false},
        {"fontName added", [](VDModelFont& f) { f.setFontName("Avenir"); }, false},
        {"size gone", [](VDModelFont& f) { f.setSize(VDNumber()); }, false},
        {"lineSpacing added", [](VDModelFont& f) { f.setLineSpacing(1.5); }, false},
        {"letterSpacing added", [](VDModelFont& f) { f.setLetterSpacing(0); }, false},
    };
    const auto base = make();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto other = make();
        c.change(*other);
        EXPECT_EQ(base->isEqual(*other), c.equal);
        EXPECT_EQ(other->isEqual(*base), c.equal);
        if (c.equal) {
            EXPECT_EQ(base->hash(), other->hash());
        }
    }
    EXPECT_FALSE(base->isEqual(*VDModelColor::create())) << "of exactly this class";

    // A merge of themes keeps the first of two fonts that differ only in style.
    auto mine = VDModelTheme::create();
    auto theirs = VDModelTheme::create();
    auto italic = make();
    italic->setStyle("italic");
    auto other = make();
    other->setFamilyName("Georgia");
    mine->setFonts(Array{Value(base)});
    theirs->setFonts(Array{Value(italic), Value(other)});
    mine->mergeFonts(*theirs);
    ASSERT_EQ(mine->fonts().size(), 2u);
    EXPECT_EQ(mine->fonts()[0].objectAs<VDModelFont>()->style(), "normal");
    EXPECT_EQ(mine->fonts()[1].objectAs<VDModelFont>()->familyName(), "Georgia");
}
