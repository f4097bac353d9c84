#include "velmo/foundation/DateFormatter.h"

#include <charconv>

#include <fmt/format.h>

namespace velmo {

namespace {
bool readNumber(std::string_view text, std::size_t at, std::size_t digits, int& out) {
    if (at + digits > text.size()) return false;
    for (std::size_t i = at; i < at + digits; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
    }
    std::from_chars(text.data() + at, text.data() + at + digits, out);
    return true;
}
} // namespace

std::optional<Date> DateFormatter::dateFromString(std::string_view text) const {
    using namespace std::chrono;
    if (text.size() != 19 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' ||
        text[16] != ':') {
        return std::nullopt;
    }
    int y, mo, d, h, mi, s;
    if (!readNumber(text, 0, 4, y) || !readNumber(text, 5, 2, mo) || !readNumber(text, 8, 2, d) ||
        !readNumber(text, 11, 2, h) || !readNumber(text, 14, 2, mi) || !readNumber(text, 17, 2, s)) {
        return std::nullopt;
    }
    const year_month_day ymd{year{y}, month{static_cast<unsigned>(mo)}, day{static_cast<unsigned>(d)}};
    if (!ymd.ok() || h > 23 || mi > 59 || s > 59) return std::nullopt;
    return sys_days{ymd} + hours{h} + minutes{mi} + seconds{s};
}

std::string DateFormatter::stringFromDate(Date date) const {
    using namespace std::chrono;
    const auto secs = floor<seconds>(date);
    const auto days = floor<std::chrono::days>(secs);
    const year_month_day ymd{days};
    const hh_mm_ss hms{secs - days};
    return fmt::format("{:04d}-{:02d}-{:02d}T{:02d}:{:02d}:{:02d}", static_cast<int>(ymd.year()),
                       static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                       hms.hours().count(), hms.minutes().count(), hms.seconds().count());
}

} // namespace velmo
