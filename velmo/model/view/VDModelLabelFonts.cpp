// The label's font tables: the phone platform's font families, for the host's font pickers.
#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "velmo/model/view/VDModelLabel.h"

namespace velmo {

namespace {

struct FontRow {
    std::string_view fontName; // PostScript name
    std::string_view family;
    std::string_view style; // the word the family names the face by
};

// Every font, in the order `fontsToFamilyNames` keeps them.
constexpr FontRow kFonts[] = {
    {"System", "System", "Normal"},
    {".SFUIText", "SF UI Text", "Normal"},
    {".SFUIText-HeavyItalic", "SF UI Text", "HeavyItalic"},
    {".SFUIText-BoldItalic", "SF UI Text", "BoldItalic"},
    {".SFUIText-SemiboldItalic", "SF UI Text", "SemiboldItalic"},
    {".SFUIText-Heavy", "SF UI Text", "Heavy"},
    {".SFUIText-Bold", "SF UI Text", "Bold"},
    {".SFUIText-Semibold", "SF UI Text", "Semibold"},
    {".SFUIText-LightItalic", "SF UI Text", "LightItalic"},
    {".SFUIText-MediumItalic", "SF UI Text", "MediumItalic"},
    {".SFUIText-Italic", "SF UI Text", "Italic"},
    {".SFUIText-Light", "SF UI Text", "Light"},
    {".SFUIText-Medium", "SF UI Text", "Medium"},
    {"Copperplate", "Copperplate", "Regular"},
    {"Copperplate-Bold", "Copperplate", "Bold"},
    {"Copperplate-Light", "Copperplate", "Light"},
    {"HeitiSC", "Heiti SC", "Regular"},
    {"IowanOldStyle-Bold", "Iowan Old Style", "Bold"},
    {"IowanOldStyle-BoldItalic", "Iowan Old Style", "BoldItalic"},
    {"IowanOldStyle-Italic", "Iowan Old Style", "Italic"},
    {"IowanOldStyle-Roman", "Iowan Old Style", "Roman"},
    {"KohinoorTelugu-Light", "Kohinoor Telugu", "Light"},
    {"KohinoorTelugu-Medium", "Kohinoor Telugu", "Medium"},
    {"KohinoorTelugu-Regular", "Kohinoor Telugu", "Regular"},
    {"Thonburi", "Thonburi", "Regular"},
    {"Thonburi-Bold", "Thonburi", "Bold"},
    {"Thonburi-Light", "Thonburi", "Light"},
    {"HeitiTC", "Heiti TC", "Regular"},
    {"CourierNewPS-BoldItalicMT", "Courier New", "BoldItalic"},
    {"CourierNewPS-BoldMT", "Courier New", "Bold"},
    {"CourierNewPS-ItalicMT", "Courier New", "Italic"},
    {"CourierNewPSMT", "Courier New", "Regular"},
    {"GillSans", "Gill Sans", "Regular"},
    {"GillSans-Bold", "Gill Sans", "Bold"},
    {"GillSans-BoldItalic", "Gill Sans", "BoldItalic"},
    {"GillSans-Italic", "Gill Sans", "Italic"},
    {"GillSans-Light", "Gill Sans", "Light"},
    {"GillSans-LightItalic", "Gill Sans", "LightItalic"},
    {"GillSans-SemiBold", "Gill Sans", "SemiBold"},
    {"GillSans-SemiBoldItalic", "Gill Sans", "SemiBoldItalic"},
    {"GillSans-UltraBold", "Gill Sans", "UltraBold"},
    {"AppleSDGothicNeo-Bold", "Apple SD Gothic Neo", "Bold"},
    {"AppleSDGothicNeo-Light", "Apple SD Gothic Neo", "Light"},
    {"AppleSDGothicNeo-Medium", "Apple SD Gothic Neo", "Medium"},
    {"AppleSDGothicNeo-Regular", "Apple SD Gothic Neo", "Regular"},
    {"AppleSDGothicNeo-SemiBold", "Apple SD Gothic Neo", "SemiBold"},
    {"AppleSDGothicNeo-Thin", "Apple SD Gothic Neo", "Thin"},
    {"AppleSDGothicNeo-UltraLight", "Apple SD Gothic Neo", "UltraLight"},
    {"MarkerFelt-Thin", "Marker Felt", "Thin"},
    {"MarkerFelt-Wide", "Marker Felt", "Wide"},
    {"AvenirNextCondensed-Bold", "Avenir Next Condensed", "Bold"},
    {"AvenirNextCondensed-BoldItalic", "Avenir Next Condensed", "BoldItalic"},
    {"AvenirNextCondensed-DemiBold", "Avenir Next Condensed", "DemiBold"},
    {"AvenirNextCondensed-DemiBoldItalic", "Avenir Next Condensed", "DemiBoldItalic"},
    {"AvenirNextCondensed-Heavy", "Avenir Next Condensed", "Heavy"},
    {"AvenirNextCondensed-HeavyItalic", "Avenir Next Condensed", "HeavyItalic"},
    {"AvenirNextCondensed-Italic", "Avenir Next Condensed", "Italic"},
    {"AvenirNextCondensed-Medium", "Avenir Next Condensed", "Medium"},
    {"AvenirNextCondensed-MediumItalic", "Avenir Next Condensed", "MediumItalic"},
    {"AvenirNextCondensed-Regular", "Avenir Next Condensed", "Regular"},
    {"AvenirNextCondensed-UltraLight", "Avenir Next Condensed", "UltraLight"},
    {"AvenirNextCondensed-UltraLightItalic", "Avenir Next Condensed", "UltraLightItalic"},
    {"TamilSangamMN", "Tamil Sangam MN", "Regular"},
    {"TamilSangamMN-Bold", "Tamil Sangam MN", "Bold"},
    {"HelveticaNeue", "Helvetica Neue", "Regular"},
    {"HelveticaNeue-Bold", "Helvetica Neue", "Bold"},
    {"HelveticaNeue-BoldItalic", "Helvetica Neue", "BoldItalic"},
    {"HelveticaNeue-CondensedBlack", "Helvetica Neue", "CondensedBlack"},
    {"HelveticaNeue-CondensedBold", "Helvetica Neue", "CondensedBold"},
    {"HelveticaNeue-Italic", "Helvetica Neue", "Italic"},
    {"HelveticaNeue-Light", "Helvetica Neue", "Light"},
    {"HelveticaNeue-LightItalic", "Helvetica Neue", "LightItalic"},
    {"HelveticaNeue-Medium", "Helvetica Neue", "Medium"},
    {"HelveticaNeue-MediumItalic", "Helvetica Neue", "MediumItalic"},
    {"HelveticaNeue-Thin", "Helvetica Neue", "Thin"},
    {"HelveticaNeue-ThinItalic", "Helvetica Neue", "ThinItalic"},
    {"HelveticaNeue-UltraLight", "Helvetica Neue", "UltraLight"},
    {"HelveticaNeue-UltraLightItalic", "Helvetica Neue", "UltraLightItalic"},
    {"GurmukhiMN", "Gurmukhi MN", "Regular"},
    {"GurmukhiMN-Bold", "Gurmukhi MN", "Bold"},
    {"TimesNewRomanPS-BoldItalicMT", "Times New Roman", "BoldItalic"},
    {"TimesNewRomanPS-BoldMT", "Times New Roman", "Bold"},
    {"TimesNewRomanPS-ItalicMT", "Times New Roman", "Italic"},
    {"TimesNewRomanPSMT", "Times New Roman", "Regular"},
    {"Georgia", "Georgia", "Regular"},
    {"Georgia-Bold", "Georgia", "Bold"},
    {"Georgia-BoldItalic", "Georgia", "BoldItalic"},
    {"Georgia-Italic", "Georgia", "Italic"},
    {"AppleColorEmoji", "Apple Color Emoji", "Regular"},
    {"ArialRoundedMTBold", "Arial Rounded MT Bold", "Regular"},
    {"Kailasa", "Kailasa", "Regular"},
    {"Kailasa-Bold", "Kailasa", "Bold"},
    {"KohinoorDevanagari-Light", "Kohinoor Devanagari", "Light"},
    {"KohinoorDevanagari-Regular", "Kohinoor Devanagari", "Regular"},
    {"KohinoorDevanagari-Semibold", "Kohinoor Devanagari", "Semibold"},
    {"KohinoorBangla-Light", "Kohinoor Bangla", "Light"},
    {"KohinoorBangla-Regular", "Kohinoor Bangla", "Regular"},
    {"KohinoorBangla-Semibold", "Kohinoor Bangla", "Semibold"},
    {"ChalkboardSE-Bold", "Chalkboard SE", "Bold"},
    {"ChalkboardSE-Light", "Chalkboard SE", "Light"},
    {"ChalkboardSE-Regular", "Chalkboard SE", "Regular"},
    {"SinhalaSangamMN", "Sinhala Sangam MN", "Regular"},
    {"SinhalaSangamMN-Bold", "Sinhala Sangam MN", "Bold"},
    {"PingFangTC-Light", "PingFang TC", "Light"},
    {"PingFangTC-Medium", "PingFang TC", "Medium"},
    {"PingFangTC-Regular", "PingFang TC", "Regular"},
    {"PingFangTC-Semibold", "PingFang TC", "Semibold"},
    {"PingFangTC-Thin", "PingFang TC", "Thin"},
    {"PingFangTC-Ultralight", "PingFang TC", "Ultralight"},
    {"GujaratiSangamMN", "Gujarati Sangam MN", "Regular"},
    {"GujaratiSangamMN-Bold", "Gujarati Sangam MN", "Bold"},
    {"Damascus", "Damascus", "Regular"},
    {"DamascusBold", "Damascus", "Bold"},
    {"DamascusLight", "Damascus", "Light"},
    {"DamascusMedium", "Damascus", "Medium"},
    {"DamascusSemiBold", "Damascus", "SemiBold"},
    {"Noteworthy-Bold", "Noteworthy", "Bold"},
    {"Noteworthy-Light", "Noteworthy", "Light"},
    {"GeezaPro", "Geeza Pro", "Regular"},
    {"GeezaPro-Bold", "Geeza Pro", "Bold"},
    {"Avenir-Black", "Avenir", "Black"},
    {"Avenir-BlackOblique", "Avenir", "BlackOblique"},
    {"Avenir-Book", "Avenir", "Book"},
    {"Avenir-BookOblique", "Avenir", "BookOblique"},
    {"Avenir-Heavy", "Avenir", "Heavy"},
    {"Avenir-HeavyOblique", "Avenir", "HeavyOblique"},
    {"Avenir-Light", "Avenir", "Light"},
    {"Avenir-LightOblique", "Avenir", "LightOblique"},
    {"Avenir-Medium", "Avenir", "Medium"},
    {"Avenir-MediumOblique", "Avenir", "MediumOblique"},
    {"Avenir-Oblique", "Avenir", "Oblique"},
    {"Avenir-Roman", "Avenir", "Roman"},
    {"AcademyEngravedLetPlain", "Academy Engraved LET", "Plain"},
    {"DiwanMishafi", "Mishafi", "Regular"},
    {"Futura-CondensedExtraBold", "Futura", "CondensedExtraBold"},
    {"Futura-CondensedMedium", "Futura", "CondensedMedium"},
    {"Futura-Medium", "Futura", "Medium"},
    {"Futura-MediumItalic", "Futura", "MediumItalic"},
    {"Farah", "Farah", "Regular"},
    {"KannadaSangamMN", "Kannada Sangam MN", "Regular"},
    {"KannadaSangamMN-Bold", "Kannada Sangam MN", "Bold"},
    {"ArialHebrew", "Arial Hebrew", "Regular"},
    {"ArialHebrew-Bold", "Arial Hebrew", "Bold"},
    {"ArialHebrew-Light", "Arial Hebrew", "Light"},
    {"Arial-BoldItalicMT", "Arial", "BoldItalic"},
    {"Arial-BoldMT", "Arial", "Bold"},
    {"Arial-ItalicMT", "Arial", "Italic"},
    {"ArialMT", "Arial", "Regular"},
    {"PartyLetPlain", "Party LET", "Plain"},
    {"Chalkduster", "Chalkduster", "Regular"},
    {"HoeflerText-Black", "Hoefler Text", "Black"},
    {"HoeflerText-BlackItalic", "Hoefler Text", "BlackItalic"},
    {"HoeflerText-Italic", "Hoefler Text", "Italic"},
    {"HoeflerText-Regular", "Hoefler Text", "Regular"},
    {"Optima-Bold", "Optima", "Bold"},
    {"Optima-BoldItalic", "Optima", "BoldItalic"},
    {"Optima-ExtraBlack", "Optima", "ExtraBlack"},
    {"Optima-Italic", "Optima", "Italic"},
    {"Optima-Regular", "Optima", "Regular"},
    {"Palatino-Bold", "Palatino", "Bold"},
    {"Palatino-BoldItalic", "Palatino", "BoldItalic"},
    {"Palatino-Italic", "Palatino", "Italic"},
    {"Palatino-Roman", "Palatino", "Roman"},
    {"LaoSangamMN", "Lao Sangam MN", "Regular"},
    {"MalayalamSangamMN", "Malayalam Sangam MN", "Regular"},
    {"MalayalamSangamMN-Bold", "Malayalam Sangam MN", "Bold"},
    {"AlNile", "Al Nile", "Regular"},
    {"AlNile-Bold", "Al Nile", "Bold"},
    {"BradleyHandITCTT-Bold", "Bradley Hand", "Bold"},
    {"PingFangHK-Light", "PingFang HK", "Light"},
    {"PingFangHK-Medium", "PingFang HK", "Medium"},
    {"PingFangHK-Regular", "PingFang HK", "Regular"},
    {"PingFangHK-Semibold", "PingFang HK", "Semibold"},
    {"PingFangHK-Thin", "PingFang HK", "Thin"},
    {"PingFangHK-Ultralight", "PingFang HK", "Ultralight"},
    {"Helvetica", "Helvetica", "Regular"},
    {"Helvetica-Bold", "Helvetica", "Bold"},
    {"Helvetica-BoldOblique", "Helvetica", "BoldOblique"},
    {"Helvetica-Light", "Helvetica", "Light"},
    {"Helvetica-LightOblique", "Helvetica", "LightOblique"},
    {"Helvetica-Oblique", "Helvetica", "Oblique"},
    {"Courier", "Courier", "Regular"},
    {"Courier-Bold", "Courier", "Bold"},
    {"Courier-BoldOblique", "Courier", "BoldOblique"},
    {"Courier-Oblique", "Courier", "Oblique"},
    {"Cochin", "Cochin", "Regular"},
    {"Cochin-Bold", "Cochin", "Bold"},
    {"Cochin-BoldItalic", "Cochin", "BoldItalic"},
    {"Cochin-Italic", "Cochin", "Italic"},
    {"Trebuchet-BoldItalic", "Trebuchet MS", "BoldItalic"},
    {"TrebuchetMS", "Trebuchet MS", "Regular"},
    {"TrebuchetMS-Bold", "Trebuchet MS", "Bold"},
    {"TrebuchetMS-Italic", "Trebuchet MS", "Italic"},
    {"HiraMinProN-W3", "Hiragino Mincho ProN", "W3"},
    {"HiraMinProN-W6", "Hiragino Mincho ProN", "W6"},
    {"DevanagariSangamMN", "Devanagari Sangam MN", "Regular"},
    {"DevanagariSangamMN-Bold", "Devanagari Sangam MN", "Bold"},
    {"OriyaSangamMN", "Oriya Sangam MN", "Regular"},
    {"OriyaSangamMN-Bold", "Oriya Sangam MN", "Bold"},
    {"SnellRoundhand", "Snell Roundhand", "Regular"},
    {"SnellRoundhand-Black", "Snell Roundhand", "Black"},
    {"SnellRoundhand-Bold", "Snell Roundhand", "Bold"},
    {"ZapfDingbatsITC", "Zapf Dingbats", "Regular"},
    {"BodoniSvtyTwoITCTT-Bold", "Bodoni 72", "Bold"},
    {"BodoniSvtyTwoITCTT-Book", "Bodoni 72", "Book"},
    {"BodoniSvtyTwoITCTT-BookIta", "Bodoni 72", "BookItalic"},
    {"Verdana", "Verdana", "Regular"},
    {"Verdana-Bold", "Verdana", "Bold"},
    {"Verdana-BoldItalic", "Verdana", "BoldItalic"},
    {"Verdana-Italic", "Verdana", "Italic"},
    {"AmericanTypewriter", "American Typewriter", "Regular"},
    {"AmericanTypewriter-Bold", "American Typewriter", "Bold"},
    {"AmericanTypewriter-Condensed", "American Typewriter", "Condensed"},
    {"AmericanTypewriter-CondensedBold", "American Typewriter", "CondensedBold"},
    {"AmericanTypewriter-CondensedLight", "American Typewriter", "CondensedLight"},
    {"AmericanTypewriter-Light", "American Typewriter", "Light"},
    {"AvenirNext-Bold", "Avenir Next", "Bold"},
    {"AvenirNext-BoldItalic", "Avenir Next", "BoldItalic"},
    {"AvenirNext-DemiBold", "Avenir Next", "DemiBold"},
    {"AvenirNext-DemiBoldItalic", "Avenir Next", "DemiBoldItalic"},
    {"AvenirNext-Heavy", "Avenir Next", "Heavy"},
    {"AvenirNext-HeavyItalic", "Avenir Next", "HeavyItalic"},
    {"AvenirNext-Italic", "Avenir Next", "Italic"},
    {"AvenirNext-Medium", "Avenir Next", "Medium"},
    {"AvenirNext-MediumItalic", "Avenir Next", "MediumItalic"},
    {"AvenirNext-Regular", "Avenir Next", "Regular"},
    {"AvenirNext-UltraLight", "Avenir Next", "UltraLight"},
    {"AvenirNext-UltraLightItalic", "Avenir Next", "UltraLightItalic"},
    {"Baskerville", "Baskerville", "Regular"},
    {"Baskerville-Bold", "Baskerville", "Bold"},
    {"Baskerville-BoldItalic", "Baskerville", "BoldItalic"},
    {"Baskerville-Italic", "Baskerville", "Italic"},
    {"Baskerville-SemiBold", "Baskerville", "SemiBold"},
    {"Baskerville-SemiBoldItalic", "Baskerville", "SemiBoldItalic"},
    {"KhmerSangamMN", "Khmer Sangam MN", "Regular"},
    {"Didot", "Didot", "Regular"},
    {"Didot-Bold", "Didot", "Bold"},
    {"Didot-Italic", "Didot", "Italic"},
    {"SavoyeLetPlain", "Savoye LET", "Plain"},
    {"BodoniOrnamentsITCTT", "Bodoni Ornaments", "Regular"},
    {"Symbol", "Symbol", "Regular"},
    {"Menlo-Bold", "Menlo", "Bold"},
    {"Menlo-BoldItalic", "Menlo", "BoldItalic"},
    {"Menlo-Italic", "Menlo", "Italic"},
    {"Menlo-Regular", "Menlo", "Regular"},
    {"BodoniSvtyTwoSCITCTT-Book", "Bodoni 72 Smallcaps", "Book"},
    {"Papyrus", "Papyrus", "Regular"},
    {"Papyrus-Condensed", "Papyrus", "Condensed"},
    {"HiraginoSans-W3", "Hiragino Sans", "W3"},
    {"HiraginoSans-W6", "Hiragino Sans", "W6"},
    {"PingFangSC-Light", "PingFang SC", "Light"},
    {"PingFangSC-Medium", "PingFang SC", "Medium"},
    {"PingFangSC-Regular", "PingFang SC", "Regular"},
    {"PingFangSC-Semibold", "PingFang SC", "Semibold"},
    {"PingFangSC-Thin", "PingFang SC", "Thin"},
    {"PingFangSC-Ultralight", "PingFang SC", "Ultralight"},
    {"EuphemiaUCAS", "Euphemia UCAS", "Regular"},
    {"EuphemiaUCAS-Bold", "Euphemia UCAS", "Bold"},
    {"EuphemiaUCAS-Italic", "Euphemia UCAS", "Italic"},
    {"TeluguSangamMN", "Telugu Sangam MN", "Regular"},
    {"BanglaSangamMN", "Bangla Sangam MN", "Regular"},
    {"Zapfino", "Zapfino", "Regular"},
    {"BodoniSvtyTwoOSITCTT-Bold", "Bodoni 72 Oldstyle", "Bold"},
    {"BodoniSvtyTwoOSITCTT-Book", "Bodoni 72 Oldstyle", "Book"},
    {"BodoniSvtyTwoOSITCTT-BookIt", "Bodoni 72 Oldstyle", "BookItalic"},
};

constexpr std::string_view kFamilyNames[] = {
    "System",
    "Academy Engraved LET",
    "Al Nile",
    "American Typewriter",
    "Apple Color Emoji",
    "Apple SD Gothic Neo",
    "Arial",
    "Arial Hebrew",
    "Arial Rounded MT Bold",
    "Avenir",
    "Avenir Next",
    "Avenir Next Condensed",
    "Bangla Sangam MN",
    "Baskerville",
    "Bodoni 72",
    "Bodoni 72 Oldstyle",
    "Bodoni 72 Smallcaps",
    "Bodoni Ornaments",
    "Bradley Hand",
    "Chalkboard SE",
    "Chalkduster",
    "Cochin",
    "Copperplate",
    "Courier",
    "Courier New",
    "Damascus",
    "Devanagari Sangam MN",
    "Didot",
    "Euphemia UCAS",
    "Farah",
    "Futura",
    "Geeza Pro",
    "Georgia",
    "Gill Sans",
    "Gujarati Sangam MN",
    "Gurmukhi MN",
    "Heiti SC",
    "Heiti TC",
    "Helvetica",
    "Helvetica Neue",
    "Hiragino Mincho ProN",
    "Hiragino Sans",
    "Hoefler Text",
    "Iowan Old Style",
    "Kailasa",
    "Kannada Sangam MN",
    "Khmer Sangam MN",
    "Kohinoor Bangla",
    "Kohinoor Devanagari",
    "Kohinoor Telugu",
    "Lao Sangam MN",
    "Malayalam Sangam MN",
    "Marker Felt",
    "Menlo",
    "Mishafi",
    "Noteworthy",
    "Optima",
    "Oriya Sangam MN",
    "Palatino",
    "Papyrus",
    "Party LET",
    "PingFang HK",
    "PingFang SC",
    "PingFang TC",
    "Savoye LET",
    "SF UI Text",
    "Sinhala Sangam MN",
    "Snell Roundhand",
    "Symbol",
    "Tamil Sangam MN",
    "Telugu Sangam MN",
    "Thonburi",
    "Times New Roman",
    "Trebuchet MS",
    "Verdana",
    "Zapf Dingbats",
    "Zapfino",
};

// A picker offers a family's plain face first; then the light, medium and heavy cuts, the
// weights the system font is mostly set in; then the other upright faces; then the slanted ones.
// Faces of one group keep the table's order.
int pickerGroup(std::string_view style) {
    static constexpr std::string_view plain[] = {"Normal", "Regular", "Roman", "Book", "Plain"};
    static constexpr std::string_view first[] = {"Light", "Medium", "Heavy"};
    if (std::find(std::begin(plain), std::end(plain), style) != std::end(plain)) return 0;
    if (const auto* it = std::find(std::begin(first), std::end(first), style); it != std::end(first)) {
        return 1 + static_cast<int>(it - std::begin(first));
    }
    const bool slanted =
        style.find("Italic") != std::string_view::npos || style.find("Oblique") != std::string_view::npos;
    return slanted ? 5 : 4;
}

Array pair(std::string_view a, std::string_view b) {
    return Array{Value(std::string(a)), Value(std::string(b))};
}

} // namespace

const Array& VDModelLabel::familyNames() {
    static const Array names = [] {
        Array list = Array::create(std::size(kFamilyNames));
        for (std::string_view family : kFamilyNames)
            list.push_back(Value(std::string(family)));
        return list;
    }();
    return names;
}

const Dictionary& VDModelLabel::fontsToFamilyNames() {
    static const Dictionary table = [] {
        Dictionary map = Dictionary::create(std::size(kFonts));
        for (const FontRow& row : kFonts)
            map.set(row.fontName, Value(pair(row.family, row.style)));
        return map;
    }();
    return table;
}

const Dictionary& VDModelLabel::familyNamesToFonts() {
    static const Dictionary table = [] {
        Dictionary map = Dictionary::create(std::size(kFamilyNames));
        std::vector<const FontRow*> faces;
        for (std::string_view family : kFamilyNames) {
            faces.clear();
            for (const FontRow& row : kFonts) {
                if (row.family == family) faces.push_back(&row);
            }
            std::stable_sort(faces.begin(), faces.end(), [](const FontRow* a, const FontRow* b) {
                return pickerGroup(a->style) < pickerGroup(b->style);
            });
            Array list = Array::create(faces.size());
            for (const FontRow* row : faces)
                list.push_back(Value(pair(row->style, row->fontName)));
            map.set(family, Value(list));
        }
        return map;
    }();
    return table;
}

} // namespace velmo
