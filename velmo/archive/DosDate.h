#pragma once

#include <cstdint>
#include <ctime>

#include "velmo/foundation/DateFormatter.h"

namespace velmo {

/// MS-DOS date and time, as ZIP entries carry them: one 32-bit word in local time with
/// two-second steps, years 1980 to 2107. Bits: year-1980 (7 from bit 25), month (4 from bit 21),
/// day (5 from bit 16), hour (5 from bit 11), minute (6 from bit 5), seconds/2 (5).
class DosDate {
public:
    static Date dateFromDosDate(std::uint32_t dosDate);
    /// 0 for a date the form can't hold (before 1980 or after 2107).
    static std::uint32_t dosDateFromDate(Date date);
    static std::uint32_t dosDateFromTime(std::time_t time);
};

} // namespace velmo
