#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmo {

/// UTF-8 checks and code-point walking, for the few places that look at characters.
class Utf8 {
public:
    static bool isValid(std::string_view text);
    /// Decodes the code point at `at` and moves `at` past it; U+FFFD and one byte for bad input.
    static char32_t next(std::string_view text, std::size_t& at);
    static void append(std::string& out, char32_t codePoint);
    /// The text with each invalid sequence (overlong forms and surrogates included) replaced by
    /// U+FFFD, so it can travel where only valid UTF-8 may.
    static std::string sanitized(std::string_view text);
};

} // namespace velmo
