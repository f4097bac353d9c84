#include "velmo/model/VDNumber.h"

#include <stdexcept>

#include <fmt/format.h>

namespace velmo {

VDNumber VDNumber::fromValue(const Value& value) {
    VDNumber number;
    if (value.isNone()) return number;
    if (!value.isNumber()) {
        throw std::invalid_argument(
            fmt::format("a number field can't take a value of kind {}", Value::kindName(value.kind())));
    }
    number.value_ = value;
    return number;
}

} // namespace velmo
