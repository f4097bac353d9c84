#pragma once

#include <string_view>

namespace velmo {

/// UTF-8 checks on byte strings, for text that arrives as raw bytes (JSON output, process output).
class Utf8 {
public:
    /// True when every byte belongs to a well-formed UTF-8 sequence; the empty text is valid.
    static bool isValid(std::string_view bytes);
};

} // namespace velmo
