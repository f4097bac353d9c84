#include "ByteSize.h"

#include <array>
#include <cctype>
#include <charconv>

namespace velmo::cli {

namespace {

constexpr std::array<char, 5> kSuffixes = {'\0', 'K', 'M', 'G', 'T'};

} // namespace

std::optional<std::uint64_t> parseByteSize(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (ec != std::errc() || end == text.data()) return std::nullopt;
    std::string unit;
    for (const char* c = end; c != text.data() + text.size(); ++c)
        unit += static_cast<char>(std::toupper(static_cast<unsigned char>(*c)));
    if (unit.ends_with("IB"))
        unit.resize(unit.size() - 2);
    else if (unit.ends_with("B"))
        unit.resize(unit.size() - 1);
    if (unit.size() > 1) return std::nullopt;
    const char suffix = unit.empty() ? '\0' : unit[0];
    for (std::size_t power = 0; power < kSuffixes.size(); ++power) {
        if (kSuffixes[power] != suffix) continue;
        const unsigned shift = static_cast<unsigned>(power) * 10;
        if (shift > 0 && number > (UINT64_MAX >> shift)) return std::nullopt;
        return number << shift;
    }
    return std::nullopt;
}

std::string byteSizeText(std::uint64_t bytes) {
    std::size_t power = 0;
    while (power + 1 < kSuffixes.size() && bytes != 0 && bytes % 1024 == 0) {
        bytes /= 1024;
        ++power;
    }
    std::string text = std::to_string(bytes);
    if (kSuffixes[power] != '\0') text += kSuffixes[power];
    return text;
}

} // namespace velmo::cli
