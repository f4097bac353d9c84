#include "velmo/model/VDNumber.h"

#include "velmo/model/VDField.h"

namespace velmo {

VDNumber VDNumber::fromValue(const Value& value) {
    VDNumber number;
    if (value.isNone()) return number;
    if (!value.isNumber()) detail::throwFieldMismatch("number", value);
    number.value_ = value;
    return number;
}

} // namespace velmo
