#pragma once

#include <concepts>

#include "velmo/foundation/Value.h"

namespace velmo {

/// A number object or nil, for fields that carry a number as it was given: an integer stays an
/// integer, a boolean a boolean, and nothing is widened or rounded on the way through.
class VDNumber {
public:
    VDNumber() = default;
    template <class T>
    requires std::is_arithmetic_v<T> VDNumber(T number) : value_(number) {}
    /// Throws `std::invalid_argument` for a value that is neither a number nor nothing.
    static VDNumber fromValue(const Value& value);

    bool isNil() const { return value_.isNil(); }
    explicit operator bool() const { return !isNil(); }
    double doubleValue() const { return value_.doubleValue(); }
    /// The number as a value of its own kind, or nil.
    const Value& value() const { return value_; }

    /// Number equality across kinds; nil equals nil.
    friend bool operator==(const VDNumber& a, const VDNumber& b) { return a.value_ == b.value_; }

private:
    Value value_;
};

} // namespace velmo
