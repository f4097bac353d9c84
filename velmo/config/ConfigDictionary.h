#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "velmo/foundation/Value.h"

namespace velmo::config {

/// The text under the key; a value of another kind counts as absent, as the configuration's
/// tolerant readers take it.
inline std::optional<std::string> stringForKey(const Dictionary& d, std::string_view key) {
    const Value& v = d.get(key);
    return v.isString() ? std::optional<std::string>(v.str()) : std::nullopt;
}

/// Sets the text under the key; an absent one leaves the key out.
inline void setString(Dictionary& map, std::string_view key, const std::optional<std::string>& s) {
    if (s) map.set(key, Value(*s));
}

} // namespace velmo::config
