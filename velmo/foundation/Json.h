#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "velmo/foundation/Value.h"

namespace velmo {

/// A JSON text that doesn't parse: the reason and the byte offset where reading stopped.
class JsonParseError : public std::runtime_error {
public:
    JsonParseError(std::string reason, std::size_t offset);
    const std::string& reason() const noexcept { return reason_; }
    std::size_t offset() const noexcept { return offset_; }

private:
    std::string reason_;
    std::size_t offset_;
};

/// A value that JSON can't hold: a non-finite number, binary data, an object reference.
class JsonWriteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// JSON reading and writing straight between text and `Value`.
class Json {
public:
    struct ReadOptions {
        /// Accept a top-level value that is neither an array nor an object.
        bool allowFragments = false;
        /// Deeper nesting is refused, so hostile input can't exhaust memory or the stack.
        unsigned maxDepth = 512;
    };

    /// Parses UTF-8 JSON text; invalid UTF-8 and trailing garbage are errors.
    /// Throws `JsonParseError`.
    static Value parse(std::string_view text, const ReadOptions& options);
    static Value parse(std::string_view text) { return parse(text, ReadOptions{}); }

    /// As `parse`, but gives nil on failure and fills `error` when given.
    static Value tryParse(std::string_view text, const ReadOptions& options, JsonParseError* error = nullptr);
    static Value tryParse(std::string_view text) { return tryParse(text, ReadOptions{}); }

    /// Compact or pretty (two-space indent) text. Floats are written in the shortest form that
    /// reads back to the same float. nil inside a container is written as null.
    /// Throws `JsonWriteError` for values that JSON can't hold.
    static std::string write(const Value& value, bool pretty = false);

    /// True when `write` would succeed: strings, finite numbers, null, and arrays and
    /// dictionaries of those.
    static bool isValidJSONObject(const Value& value);
};

} // namespace velmo
