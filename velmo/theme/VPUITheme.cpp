#include "velmo/theme/VPUITheme.h"

#include <stdexcept>
#include <string>

#include "velmo/foundation/NotificationCenter.h"
#include "velmo/runtime/VPLogging.h"
#include "velmo/theme/VPDesktopAppearance.h"

namespace velmo {

namespace {

// One cell of the colour table: what a load does to one colour.
struct Cell {
    enum class Kind : std::uint8_t { Leave, RGB, White, Null, SameAs };
    Kind kind = Kind::Leave;
    // 8-bit components, or the grey level in `red`.
    int red = 0, green = 0, blue = 0;
    double alpha = 1;
    // For SameAs: the colour whose value is taken at that moment of the load.
    std::string_view other;
};

constexpr Cell rgb(int red, int green, int blue, double alpha = 1) {
    return {Cell::Kind::RGB, red, green, blue, alpha, {}};
}
constexpr Cell white(int level) {
    return {Cell::Kind::White, level, 0, 0, 1, {}};
}
// The fully transparent colour.
constexpr Cell clear() {
    return {Cell::Kind::White, 0, 0, 0, 0, {}};
}
constexpr Cell same(std::string_view other) {
    return {Cell::Kind::SameAs, 0, 0, 0, 1, other};
}
constexpr Cell none() {
    return {Cell::Kind::Null, 0, 0, 0, 1, {}};
}
constexpr Cell leave() {
    return {};
}

struct Row {
    std::string_view name;
    Cell base, bright, dark;
};

constexpr int kBaseColumn = 0;
constexpr int kBrightColumn = 1;
constexpr int kDarkColumn = 2;

// The colours in the order the loads set them.
constexpr std::array<Row, VPUITheme::kColorCount> kRows = {{
    {"barsBorderColor", rgb(216, 217, 220, 0), leave(), leave()},
    {"topBarBgColor", rgb(245, 245, 245), leave(), leave()},
    {"topBarButtonsColor", rgb(125, 128, 130), leave(), leave()},
    {"actionsBarBgColor", rgb(255, 255, 255), leave(), leave()},
    {"actionsBarSelectedBgColor", rgb(244, 242, 253), leave(), leave()},
    {"animationBarBgColor", rgb(26, 26, 26), leave(), leave()},
    {"animationBarAlternateColor", rgb(35, 35, 35), leave(), leave()},
    {"animationBarTextColor", rgb(255, 255, 255), leave(), leave()},
    {"animationNoteColor", rgb(85, 85, 85), leave(), leave()},
    {"sketchBarsBorderColor", rgb(184, 184, 184), rgb(184, 184, 184), rgb(0, 0, 0)},
    {"rightClickImagesTintColor", rgb(102, 106, 109), leave(), leave()},
    {"buttonsTint", rgb(83, 10, 147), leave(), leave()},
    {"timeCorsurColor", rgb(4, 122, 255), leave(), leave()},
    {"selectedTimelineCellBgColor", rgb(222, 236, 255), leave(), leave()},
    {"hoverBorderColor", rgb(69, 192, 255), leave(), leave()},
    {"hoverFillColor", rgb(69, 192, 255, 0.3), leave(), leave()},
    {"notificationColor", rgb(64, 175, 255), leave(), leave()},
    {"vduiTextFieldBorderColor", rgb(200, 201, 202), leave(), leave()},
    {"placeholderViewBorderColor", rgb(200, 201, 202, 0.5), leave(), leave()},
    {"animationSelectedTint", rgb(255, 255, 255), leave(), leave()},
    {"animationUnselectedTint", rgb(80, 167, 247), leave(), leave()},
    {"previewSettingsColor", clear(), leave(), rgb(59, 59, 59)},
    {"defaultColor", leave(), white(242), rgb(47, 47, 47)},
    {"panelBackground", leave(), clear(), rgb(47, 47, 47)},
    {"panelSecondaryBackground", leave(), clear(), same("panelBackground")},
    {"panelBorder", leave(), white(217), rgb(67, 67, 67)},
    {"panelBoldContent", leave(), rgb(81, 81, 81), rgb(230, 230, 230)},
    {"panelSemiBoldContent", leave(), same("panelBoldContent"), rgb(177, 177, 177)},
    {"panelMediumContent", leave(), same("panelBoldContent"), rgb(155, 155, 155)},
    {"panelSelectedTab", leave(), same("panelBackground"), same("panelBorder")},
    {"panelUnselectedTab", leave(), rgb(246, 246, 246), same("panelBackground")},
    {"panelPolarBackground", leave(), rgb(255, 255, 255), rgb(0, 0, 0)},
    {"panelSelectedIconTint", leave(), rgb(254, 102, 86), rgb(255, 90, 77)},
    {"textPropertyBackground", leave(), rgb(255, 255, 255), none()},
    {"textPropertyText", leave(), rgb(0, 0, 0), rgb(255, 255, 255)},
    {"layerListArtboadCell", leave(), rgb(250, 250, 250), rgb(69, 70, 71)},
    {"layerListArtboadBorder", leave(), rgb(204, 204, 204), rgb(87, 88, 89)},
    {"layerListCellOdd", leave(), rgb(240, 240, 240), rgb(46, 47, 48)},
    {"layerListCellEven", leave(), rgb(240, 240, 240), rgb(46, 47, 48)},
    {"layerListSelection", leave(), rgb(0, 122, 255), rgb(0, 122, 255)},
    {"canvasBackground", leave(), rgb(230, 230, 230), rgb(29, 30, 31)},
    {"panelMainHeader", leave(), white(118), white(177)},
    {"panelMainHeaderDisabled", leave(), white(182), white(105)},
    {"panelLabel", leave(), white(0), white(215)},
    {"panelControlBorder", leave(), white(201), white(87)},
    {"panelPropertyBackground", leave(), white(255), white(69)},
    {"panelTopBar", leave(), white(255), same("panelSelectedTab")},
    {"panelContent", leave(), white(106), white(145)},
}};

constexpr std::size_t kDefaultColorIndex = 22;
static_assert(kRows[kDefaultColorIndex].name == "defaultColor");

// The index of the named colour, or kColorCount.
constexpr std::size_t indexOf(std::string_view name) {
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        if (kRows[i].name == name) return i;
    }
    return kRows.size();
}

// Every colour that another one takes comes before it, so a load reads its value as set.
constexpr bool copiesComeFromEarlierRows() {
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        for (const Cell& cell : {kRows[i].base, kRows[i].bright, kRows[i].dark}) {
            if (cell.kind == Cell::Kind::SameAs && indexOf(cell.other) >= i) return false;
        }
    }
    return true;
}
static_assert(copiesComeFromEarlierRows());

const Cell& cellOf(const Row& row, int column) {
    return column == kBaseColumn ? row.base : column == kBrightColumn ? row.bright : row.dark;
}

} // namespace

const VDClass& VPUITheme::classObject() {
    static const VDClass cls("VPUITheme", nullptr, nullptr);
    return cls;
}

std::shared_ptr<VPUITheme> VPUITheme::sharedInstance() {
    // Never destroyed: the desktop's watcher reports to it until the process ends.
    static const auto* shared = new std::shared_ptr<VPUITheme>(make(VPDesktopAppearance::create()));
    return *shared;
}

std::shared_ptr<VPUITheme> VPUITheme::make(std::shared_ptr<VPAppearanceSource> source) {
    std::shared_ptr<VPUITheme> theme(new VPUITheme());
    theme->source_ = std::move(source);
    theme->updateAccordingToApp();
    if (theme->source_) {
        std::weak_ptr<VPUITheme> weak = theme;
        theme->source_->watch([weak] {
            if (const auto self = weak.lock()) self->appearanceDidChange();
        });
    }
    return theme;
}

const std::array<std::string_view, VPUITheme::kColorCount>& VPUITheme::colorNames() {
    static const auto names = [] {
        std::array<std::string_view, kColorCount> list{};
        for (std::size_t i = 0; i < kColorCount; ++i)
            list[i] = kRows[i].name;
        return list;
    }();
    return names;
}

std::optional<PlatformColor> VPUITheme::colorForName(std::optional<std::string_view> name) const {
    if (!name) return colors_[kDefaultColorIndex];
    VP_TRY
    const std::size_t index = indexOf(*name);
    if (index == kColorCount)
        throw std::invalid_argument("VPUITheme has no colour named \"" + std::string(*name) + "\"");
    return colors_[index];
    VP_CATCH(colors_[kDefaultColorIndex])
}

void VPUITheme::setType(std::int32_t type) {
    type_ = type;
    if (type != Bright) {
        loadDarkTheme();
    } else {
        loadBrightTheme();
    }
}

void VPUITheme::updateAccordingToApp() {
    const std::int32_t variant = source_ && source_->isDark() ? Dark : Bright;
    loadDefalut();
    setType(variant);
}

void VPUITheme::appearanceDidChange() {
    const std::int32_t before = type_;
    updateAccordingToApp();
    // A change between two appearances of one variant shows nothing and says nothing.
    if (type_ != before) NotificationCenter::defaultCenter().post(kVPUIThemeUpdatedNotification);
}

void VPUITheme::loadDefalut() {
    load(kBaseColumn);
}

void VPUITheme::loadBrightTheme() {
    load(kBrightColumn);
}

void VPUITheme::loadDarkTheme() {
    load(kDarkColumn);
}

void VPUITheme::load(int column) {
    for (std::size_t i = 0; i < kColorCount; ++i) {
        const Cell& cell = cellOf(kRows[i], column);
        switch (cell.kind) {
        case Cell::Kind::Leave:
            break;
        case Cell::Kind::RGB:
            colors_[i] =
                PlatformColor::rgb(cell.red / 255.0, cell.green / 255.0, cell.blue / 255.0, cell.alpha);
            break;
        case Cell::Kind::White:
            colors_[i] = PlatformColor::gray(cell.red / 255.0, cell.alpha);
            break;
        case Cell::Kind::Null:
            colors_[i].reset();
            break;
        case Cell::Kind::SameAs:
            colors_[i] = colors_[indexOf(cell.other)];
            break;
        }
    }
}

} // namespace velmo
