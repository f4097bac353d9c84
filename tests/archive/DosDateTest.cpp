#include <gtest/gtest.h>

#include <ctime>

#include "velmo/archive/DosDate.h"

using velmo::DosDate;

namespace {

std::time_t localTime(int year, int month, int day, int hour, int minute, int second) {
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_sec = second;
    tm.tm_isdst = -1;
    return std::mktime(&tm);
}

} // namespace

TEST(DosDate, FieldsSitWhereTheFormatPutsThem) {
    // 2020-06-15 10:20:30: year 40, month 6, day 15, hour 10, minute 20, 15 two-second steps.
    const std::uint32_t expected = (40u << 25) | (6u << 21) | (15u << 16) | (10u << 11) | (20u << 5) | 15u;
    EXPECT_EQ(DosDate::dosDateFromTime(localTime(2020, 6, 15, 10, 20, 30)), expected);
    EXPECT_EQ(std::chrono::system_clock::to_time_t(DosDate::dateFromDosDate(expected)),
              localTime(2020, 6, 15, 10, 20, 30));
}

TEST(DosDate, RoundTripsToTwoSecondStepsWithinTheFormatsYears) {
    struct Case {
        std::time_t time;
        std::time_t expected;
    };
    const Case cases[] = {
        {localTime(1980, 1, 1, 0, 0, 0), localTime(1980, 1, 1, 0, 0, 0)},
        {localTime(1999, 12, 31, 23, 59, 59), localTime(1999, 12, 31, 23, 59, 58)},
        {localTime(2024, 2, 29, 12, 0, 1), localTime(2024, 2, 29, 12, 0, 0)},
        {localTime(2107, 12, 31, 23, 59, 58), localTime(2107, 12, 31, 23, 59, 58)},
    };
    for (const auto& c : cases) {
        const std::uint32_t dos = DosDate::dosDateFromTime(c.time);
        ASSERT_NE(dos, 0u);
        EXPECT_EQ(std::chrono::system_clock::to_time_t(DosDate::dateFromDosDate(dos)), c.expected);
    }
}

TEST(DosDate, DatesOutsideTheFormatBecomeZero) {
    EXPECT_EQ(DosDate::dosDateFromTime(localTime(1979, 12, 31, 23, 59, 59)), 0u);
    EXPECT_EQ(DosDate::dosDateFromTime(localTime(2108, 1, 1, 0, 0, 0)), 0u);
    EXPECT_EQ(DosDate::dosDateFromTime(0), 0u);
}
