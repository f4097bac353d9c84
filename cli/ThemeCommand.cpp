// velmo theme [--dark|--bright] [--json]: the named colours of the interface theme.
#include <cmath>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "velmo/foundation/Json.h"
#include "velmo/model/values/ColorExtensions.h"
#include "velmo/theme/VPDesktopAppearance.h"
#include "velmo/theme/VPUITheme.h"

namespace velmo::cli {

namespace {

struct ThemeOptions {
    bool dark = false;
    bool bright = false;
    bool json = false;
};

Value colorJson(const std::optional<PlatformColor>& color) {
    if (!color) return Value::null();
    const PlatformColor rgb = color->usingDeviceRGB();
    return Value(Dictionary{{"red", Value(rgb.components[0])},
                            {"green", Value(rgb.components[1])},
                            {"blue", Value(rgb.components[2])},
                            {"alpha", Value(rgb.alpha())}});
}

std::string colorText(const std::optional<PlatformColor>& color) {
    if (!color) return "none";
    const double alpha = color->alpha();
    return alpha == 1 ? hex(*color)
                      : fmt::format("{} alpha {:g}", hex(*color), std::round(alpha * 1000) / 1000);
}

std::string originText(VPDesktopAppearance::Origin origin) {
    switch (origin) {
    case VPDesktopAppearance::Origin::Portal:
        return "the desktop's colour scheme";
    case VPDesktopAppearance::Origin::Environment:
        return "VELMO_APPEARANCE";
    case VPDesktopAppearance::Origin::Default:
        break;
    }
    return "no preference found";
}

int runTheme(const ThemeOptions& o) {
    std::shared_ptr<VPUITheme> theme;
    std::string origin;
    if (o.dark || o.bright) {
        theme = VPUITheme::make(nullptr);
        theme->setType(o.dark ? VPUITheme::Dark : VPUITheme::Bright);
        origin = o.dark ? "--dark" : "--bright";
    } else {
        const auto desktop = VPDesktopAppearance::create();
        theme = VPUITheme::make(desktop);
        origin = originText(desktop->origin());
    }
    if (o.json) {
        Dictionary colors = Dictionary::create(VPUITheme::kColorCount);
        for (const auto name : VPUITheme::colorNames())
            colors.set(name, colorJson(theme->colorForName(name)));
        Console::out(Json::write(Value(colors), true) + "\n");
        return kExitOK;
    }
    Console::out(
        fmt::format("{} appearance ({})\n", theme->type() == VPUITheme::Dark ? "dark" : "bright", origin));
    for (const auto name : VPUITheme::colorNames())
        Console::out(fmt::format("  {:<28} {}\n", name, colorText(theme->colorForName(name))));
    return kExitOK;
}

} // namespace

CommandRun addThemeCommand(CLI::App& app) {
    auto options = std::make_shared<ThemeOptions>();
    auto* cmd = app.add_subcommand("theme", "Print the interface theme's named colours");
    auto* dark = cmd->add_flag("--dark", options->dark, "The dark appearance");
    auto* bright = cmd->add_flag("--bright", options->bright, "The bright appearance");
    dark->excludes(bright);
    cmd->add_flag("--json", options->json,
                  "Print {name: {\"red\", \"green\", \"blue\", \"alpha\"}} with components from 0 to 1");
    cmd->footer("Without --dark or --bright: the desktop's colour scheme (the XDG desktop portal), else "
                "VELMO_APPEARANCE=dark|light, else bright.");
    return [options] { return runTheme(*options); };
}

} // namespace velmo::cli
