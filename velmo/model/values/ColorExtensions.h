#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/foundation/PlatformColor.h"

namespace velmo {

// Operations on the platform's colours that the rest of the library calls by name.

/// `+colorFromHexString:alpha:` — trimmed and upper-cased; five characters or fewer give opaque
/// black; "0X" then "#" stripped; exactly six digits left give the colour with the alpha,
/// anything else opaque black.
PlatformColor colorFromHexString(std::string_view hex, double alpha);
/// "#rrggbb": each device-RGB component times 255.999, cut to an integer, lower case.
std::string hex(const PlatformColor& color);
/// "#rrggbbaa" the same way, alpha last.
std::string hexWithAlpha(const PlatformColor& color);
/// "#RRGGBB": upper case, each component times 255 rounded to nearest; a colour whose model
/// isn't RGB takes its first component for all three. Differs from `hex` in case and rounding,
/// both on purpose.
std::string _vp_asHexString(const PlatformColor& color);

namespace detail {
/// The three two-digit hexadecimal numbers at the start of `digits`, each a pair that doesn't
/// read counting as 0 (a pair read as far as its digits go).
void readHexTriple(std::u32string_view digits, int& red, int& green, int& blue);
/// The common front of the hex colour readers: trimmed, upper-cased, without "0X" then "#", as
/// characters. Gives nothing for text of five characters or fewer.
std::optional<std::u32string> hexColorDigits(std::string_view text);
} // namespace detail

} // namespace velmo
