#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmo {

/// Standard base64 without line breaks.
class Base64 {
public:
    static std::string encode(std::string_view bytes);
    /// Nothing when the text isn't base64. White space is ignored.
    static std::optional<std::string> decode(std::string_view text);
};

} // namespace velmo
