#include "velmo/model/records/VDModelTheme.h"

#include <algorithm>

namespace velmo {

const VDModelClass& VDModelTheme::classObject() {
    using C = VDModelTheme;
    static const VDModelClass cls(
        "VDModelTheme", &VDModel::classObject(), [] { return std::static_pointer_cast<Object>(create()); },
        {
            field<&C::navBar, &C::setNavBar>("navBar"),
            field<&C::statusbarType, &C::setStatusbarType>("statusbarType"),
            field<&C::name, &C::setName>("name"),
            field<&C::recentFonts, &C::setRecentFonts>("recentFonts"),
            field<&C::recentFontsFamilies, &C::setRecentFontsFamilies>("recentFontsFamilies"),
            field<&C::fonts, &C::setFonts>("fonts"),
            field<&C::fontsCssMapping, &C::setFontsCssMapping>("fontsCssMapping"),
            field<&C::globalColors, &C::setGlobalColors>("globalColors"),
            field<&C::documentColors, &C::setDocumentColors>("documentColors"),
            field<&C::textStyles, &C::setTextStyles>("textStyles"),
        });
    return cls;
}

void VDModelTheme::fillDefaultValues() {
    VDModel::fillDefaultValues();
    navBar_ = VDModelBar::create();
    statusbarType_ = 2;
    name_ = "Untitled Theme";
    recentFonts_ = Array::create();
    recentFontsFamilies_ = Array::create();
}

namespace {
constexpr std::size_t kRecentFontsKept = 5;

Array withRecent(const Array& list, const Value& entry) {
    Array out = Array::create(kRecentFontsKept);
    out.push_back(entry);
    for (const Value& v : list) {
        if (out.size() == kRecentFontsKept) break;
        if (!(v == entry)) out.push_back(v);
    }
    return out;
}
} // namespace

void VDModelTheme::addRecentFont(const std::string& font, const std::string& family) {
    setRecentFonts(withRecent(recentFonts_, Value(font)));
    setRecentFontsFamilies(withRecent(recentFontsFamilies_, Value(family)));
}

void VDModelTheme::mergeFonts(const VDModelTheme& other) {
    if (fonts_.isNil()) return;
    Array merged = fonts_.copy();
    for (const Value& font : other.fonts()) {
        const bool present =
            std::any_of(merged.begin(), merged.end(), [&](const Value& v) { return v == font; });
        if (!present) merged.push_back(font);
    }
    setFonts(merged);
}

} // namespace velmo
