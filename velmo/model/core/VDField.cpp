#include "velmo/model/core/VDField.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

namespace velmo::detail {

void throwFieldMismatch(std::string_view expected, const Value& got) {
    throw std::invalid_argument(
        fmt::format("a {} field can't take a value of kind {}", expected, Value::kindName(got.kind())));
}

namespace {

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool isBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// The numeric prefix of a text: [+-]digits[.digits][(e|E)[+-]digits], after leading blanks.
struct NumberPrefix {
    bool negative = false;
    std::string_view integer;  ///< digits before the point
    std::string_view fraction; ///< digits after it
    std::string_view number;   ///< the whole prefix without its sign: what is handed to the parser
    long exponent = 0;         ///< saturated far beyond any double's range
    bool hasExponent = false;

    bool empty() const noexcept { return integer.empty() && fraction.empty(); }
    bool integral() const noexcept { return !hasExponent && number.size() == integer.size(); }
};

NumberPrefix scan(std::string_view text) noexcept {
    NumberPrefix p;
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (i < n && isBlank(text[i]))
        ++i;
    if (i < n && (text[i] == '+' || text[i] == '-')) p.negative = text[i++] == '-';
    const std::size_t start = i;
    while (i < n && isDigit(text[i]))
        ++i;
    p.integer = text.substr(start, i - start);
    if (i < n && text[i] == '.') {
        const std::size_t from = ++i;
        while (i < n && isDigit(text[i]))
            ++i;
        p.fraction = text.substr(from, i - from);
    }
    if (p.empty()) return p;
    // An exponent counts only with digits: "12e" and "12e+" read as 12.
    if (i < n && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t j = i + 1;
        bool negative = false;
        if (j < n && (text[j] == '+' || text[j] == '-')) negative = text[j++] == '-';
        if (j < n && isDigit(text[j])) {
            p.hasExponent = true;
            for (; j < n && isDigit(text[j]); ++j) {
                if (p.exponent < 1'000'000) p.exponent = p.exponent * 10 + (text[j] - '0');
            }
            if (negative) p.exponent = -p.exponent;
            i = j;
        }
    }
    p.number = text.substr(start, i - start);
    return p;
}

double toDouble(const NumberPrefix& p) noexcept {
    if (p.empty()) return 0.0;
    double value = 0.0;
    const auto [end, ec] = std::from_chars(p.number.data(), p.number.data() + p.number.size(), value);
    if (ec == std::errc::result_out_of_range) {
        // Out of range one way or the other: the place of the first significant digit says which.
        const std::size_t intStart = p.integer.find_first_not_of('0');
        const long place =
            intStart != std::string_view::npos
                ? static_cast<long>(p.integer.size() - intStart)
                : -static_cast<long>(std::min(p.fraction.find_first_not_of('0'), p.fraction.size()));
        value = place + p.exponent > 0 ? HUGE_VAL : 0.0;
    }
    return p.negative ? -value : value;
}

std::int64_t toInteger(const NumberPrefix& p) noexcept {
    constexpr std::uint64_t limit = static_cast<std::uint64_t>(INT64_MAX) + 1;
    std::uint64_t magnitude = 0;
    for (char c : p.integer) {
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(c - '0');
        if (magnitude > limit) {
            magnitude = limit;
            break;
        }
    }
    if (p.negative) return magnitude >= limit ? INT64_MIN : -static_cast<std::int64_t>(magnitude);
    return magnitude >= limit ? INT64_MAX : static_cast<std::int64_t>(magnitude);
}

} // namespace

double doubleFromText(std::string_view text) noexcept {
    return toDouble(scan(text));
}

std::int64_t integerFromText(std::string_view text) noexcept {
    return toInteger(scan(text));
}

bool flagFromText(std::string_view text) noexcept {
    std::size_t i = 0;
    while (i < text.size() && isBlank(text[i]))
        ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    while (i < text.size() && text[i] == '0')
        ++i;
    if (i == text.size()) return false;
    const char c = text[i];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

Value numberFromText(std::string_view text) {
    const NumberPrefix p = scan(text);
    // Integers that fit stay integers, so "12" writes back as 12, not 12.0.
    if (p.integral() && p.integer.size() < 19) return Value(toInteger(p));
    return Value(toDouble(p));
}

} // namespace velmo::detail
