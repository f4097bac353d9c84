#include "velmo/model/values/ColorExtensions.h"

#include <cmath>

#include <fmt/format.h>

#include "velmo/foundation/Utf8.h"
#include "velmo/model/values/StringExtensions.h"

namespace velmo {

PlatformColor colorFromHexString(std::string_view hex, double alpha) {
    const auto digits = detail::hexColorDigits(hex);
    if (!digits || digits->size() != 6) return PlatformColor::rgb(0, 0, 0, 1);
    int r = 0, g = 0, b = 0;
    detail::readHexTriple(*digits, r, g, b);
    return PlatformColor::rgb(r / 255.0, g / 255.0, b / 255.0, alpha);
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

namespace detail {

void readHexTriple(std::u32string_view digits, int& red, int& green, int& blue) {
    const auto pair = [&](std::size_t at) {
        int value = 0;
        for (std::size_t i = at; i < at + 2 && i < digits.size(); ++i) {
            const char32_t c = digits[i];
            int digit;
            if (c >= '0' && c <= '9')
                digit = c - '0';
            else if (c >= 'A' && c <= 'F')
                digit = c - 'A' + 10;
            else if (c >= 'a' && c <= 'f')
                digit = c - 'a' + 10;
            else
                break;
            value = value * 16 + digit;
        }
        return value;
    };
    red = pair(0);
    green = pair(2);
    blue = pair(4);
}

std::optional<std::u32string> hexColorDigits(std::string_view text) {
    const std::string upper = toUpperAscii(trimBlanks(text));
    std::u32string s;
    for (std::size_t at = 0; at < upper.size();)
        s += Utf8::next(upper, at);
    if (s.size() <= 5) return std::nullopt;
    if (s.starts_with(U"0X")) s.erase(0, 2);
    if (s.starts_with(U"#")) s.erase(0, 1);
    return s;
}

} // namespace detail

} // namespace velmo
