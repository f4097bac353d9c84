#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace velmo {

using Date = std::chrono::system_clock::time_point;

/// Reads and writes dates in the one fixed form the service uses, "yyyy-MM-dd'T'HH:mm:ss",
/// in UTC, with no offset written or expected. Text that doesn't match the form exactly gives
/// nothing.
class DateFormatter {
public:
    std::optional<Date> dateFromString(std::string_view text) const;
    std::string stringFromDate(Date date) const;
};

} // namespace velmo
