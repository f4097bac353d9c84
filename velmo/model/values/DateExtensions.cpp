#include "velmo/model/values/DateExtensions.h"

#include <ctime>

namespace velmo {

namespace {
// Days since the epoch of the local calendar day that holds the date.
long localDayNumber(Date date) {
    const std::time_t t = std::chrono::system_clock::to_time_t(date);
    std::tm local{};
    localtime_r(&t, &local);
    const std::chrono::year_month_day ymd{std::chrono::year{local.tm_year + 1900},
                                          std::chrono::month{static_cast<unsigned>(local.tm_mon + 1)},
                                          std::chrono::day{static_cast<unsigned>(local.tm_mday)}};
    return std::chrono::sys_days{ymd}.time_since_epoch().count();
}
} // namespace

long daysBetweenDate(Date from, Date to) {
    return localDayNumber(to) - localDayNumber(from);
}

bool isEarlierThan(Date receiver, Date other) {
    return receiver <= other;
}

bool isLaterThan(Date receiver, Date other) {
    return receiver >= other;
}

} // namespace velmo
