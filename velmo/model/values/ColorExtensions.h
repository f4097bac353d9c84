#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "velmo/foundation/PlatformColor.h"

namespace velmo {

class VDModelColor;

// Operations on the platform's colours that the rest of the library calls by name.

/// `+colorFromHexString:alpha:` — trimmed and upper-cased; five characters or fewer give opaque
/// black; "0X" then "#" stripped; exactly six digits left give the colour with the alpha,
/// anything else opaque black.
PlatformColor colorFromHexString(std::string_view hex, double alpha);
/// `+colorFromModelColor:` — the four components as they are.
PlatformColor colorFromModelColor(const VDModelColor& color);
/// The colour's four components after conversion to device RGB.
std::shared_ptr<VDModelColor> modelColor(const PlatformColor& color);
/// "#rrggbb": each device-RGB component times 255.999, cut to an integer, lower case.
std::string hex(const PlatformColor& color);
/// "#rrggbbaa" the same way, alpha last.
std::string hexWithAlpha(const PlatformColor& color);
/// "#RRGGBB": upper case, each component times 255 rounded to nearest; a colour whose model
/// isn't RGB takes its first component for all three. Differs from `hex` in case and rounding,
/// both on purpose.
std::string _vp_asHexString(const PlatformColor& color);

} // namespace velmo
