#include "velmo/model/values/ColorExtensions.h"

#include <cmath>

#include <fmt/format.h>

#include "velmo/model/VDModelColor.h"

namespace velmo {

PlatformColor colorFromHexString(std::string_view hex, double alpha) {
    const auto digits = detail::hexColorDigits(hex);
    if (!digits || digits->size() != 6) return PlatformColor::rgb(0, 0, 0, 1);
    int r = 0, g = 0, b = 0;
    detail::readHexTriple(*digits, r, g, b);
    return PlatformColor::rgb(r / 255.0, g / 255.0, b / 255.0, alpha);
}

PlatformColor colorFromModelColor(const VDModelColor& color) {
    return PlatformColor::rgb(color.red(), color.green(), color.blue(), color.alpha());
}

std::shared_ptr<VDModelColor> modelColor(const PlatformColor& color) {
    const PlatformColor rgb = color.usingDeviceRGB();
    const auto& c = rgb.components;
    return VDModelColor::colorWithRed(static_cast<float>(c[0]), static_cast<float>(c[1]),
                                      static_cast<float>(c[2]), static_cast<float>(c[3]));
}

namespace {
unsigned cut(double component) {
    return static_cast<unsigned>(static_cast<int>(component * 255.999));
}
} // namespace

std::string hex(const PlatformColor& color) {
    const PlatformColor rgb = color.usingDeviceRGB();
    const auto& c = rgb.components;
    return fmt::format("#{:02x}{:02x}{:02x}", cut(c[0]), cut(c[1]), cut(c[2]));
}

std::string hexWithAlpha(const PlatformColor& color) {
    const PlatformColor rgb = color.usingDeviceRGB();
    const auto& c = rgb.components;
    return fmt::format("#{:02x}{:02x}{:02x}{:02x}", cut(c[0]), cut(c[1]), cut(c[2]), cut(c[3]));
}

std::string _vp_asHexString(const PlatformColor& color) {
    const auto& c = color.components;
    const bool rgb = color.model == PlatformColor::ColorSpaceModel::RGB;
    const auto round = [](double v) { return static_cast<long>(std::lround(v * 255.0)); };
    const double r = c[0];
    const double g = rgb ? c[1] : c[0];
    const double b = rgb ? c[2] : c[0];
    return fmt::format("#{:02X}{:02X}{:02X}", round(r), round(g), round(b));
}

} // namespace velmo
