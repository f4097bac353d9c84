#include "velmo/archive/DosDate.h"

namespace velmo {

Date DosDate::dateFromDosDate(std::uint32_t dosDate) {
    std::tm tm{};
    tm.tm_year = static_cast<int>((dosDate >> 25) & 0x7f) + 80;
    tm.tm_mon = static_cast<int>((dosDate >> 21) & 0x0f) - 1;
    tm.tm_mday = static_cast<int>((dosDate >> 16) & 0x1f);
    tm.tm_hour = static_cast<int>((dosDate >> 11) & 0x1f);
    tm.tm_min = static_cast<int>((dosDate >> 5) & 0x3f);
    tm.tm_sec = static_cast<int>(dosDate & 0x1f) * 2;
    // Local time, daylight saving as the calendar has it on that day.
    tm.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&tm));
}

std::uint32_t DosDate::dosDateFromDate(Date date) {
    return dosDateFromTime(std::chrono::system_clock::to_time_t(date));
}

std::uint32_t DosDate::dosDateFromTime(std::time_t time) {
    std::tm tm{};
    if (localtime_r(&time, &tm) == nullptr) return 0;
    if (tm.tm_year < 80 || tm.tm_year > 207) return 0;
    return static_cast<std::uint32_t>(tm.tm_year - 80) << 25 |
           static_cast<std::uint32_t>(tm.tm_mon + 1) << 21 | static_cast<std::uint32_t>(tm.tm_mday) << 16 |
           static_cast<std::uint32_t>(tm.tm_hour) << 11 | static_cast<std::uint32_t>(tm.tm_min) << 5 |
           static_cast<std::uint32_t>(tm.tm_sec / 2);
}

} // namespace velmo
