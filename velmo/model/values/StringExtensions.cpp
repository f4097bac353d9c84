#include "velmo/model/values/StringExtensions.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <limits>
#include <locale>
#include <regex>

#include <fmt/format.h>

#include "velmo/foundation/Base64.h"
#include "velmo/foundation/Crypto.h"
#include "velmo/foundation/PlatformColor.h"
#include "velmo/foundation/Utf8.h"
#include "velmo/foundation/Uuid.h"

namespace velmo {

std::string uuidString() {
    return Uuid::string();
}

namespace {

bool isAsciiUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
bool isAsciiLower(char c) {
    return c >= 'a' && c <= 'z';
}
bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}
char lowerAscii(char c) {
    return isAsciiUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}
char upperAscii(char c) {
    return isAsciiLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isUnicodeBlank(char32_t c) {
    switch (c) {
    case U' ':
    case U'\t':
    case U'\n':
    case U'\r':
    case U'\v':
    case U'\f':
    case U'\u0085':
    case U'\u00A0':
    case U'\u1680':
    case U'\u2028':
    case U'\u2029':
    case U'\u202F':
    case U'\u205F':
    case U'\u3000':
        return true;
    default:
        return c >= U'\u2000' && c <= U'\u200A';
    }
}

bool isWordSeparator(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

std::string_view trimBlanks(std::string_view text) {
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t next = start;
        if (!isUnicodeBlank(Utf8::next(text, next))) break;
        start = next;
    }
    std::size_t end = text.size();
    while (end > start) {
        // Step back to the lead byte of the last character.
        std::size_t lead = end - 1;
        while (lead > start && (static_cast<unsigned char>(text[lead]) & 0xC0) == 0x80)
            --lead;
        std::size_t at = lead;
        if (!isUnicodeBlank(Utf8::next(text, at))) break;
        end = lead;
    }
    return text.substr(start, end - start);
}

std::string toLowerAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = lowerAscii(c);
    return out;
}

std::string toUpperAscii(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        c = upperAscii(c);
    return out;
}

bool isValidUtf8(std::string_view text) {
    return Utf8::isValid(text);
}

std::string toLegalVarName(std::string_view receiver) {
    std::string name(receiver);
    if (name.find(' ') != std::string::npos) {
        // Word capitalisation, then the blanks go.
        bool wordStart = true;
        for (char& c : name) {
            if (isWordSeparator(c)) {
                wordStart = true;
                continue;
            }
            c = wordStart ? upperAscii(c) : lowerAscii(c);
            wordStart = false;
        }
        std::erase(name, ' ');
    }
    if (name.empty()) return name;
    name[0] = lowerAscii(name[0]);
    std::erase_if(name, [](char c) { return !(isAsciiUpper(c) || isAsciiLower(c) || isAsciiDigit(c)); });
    // Only a digit can start the name here: the other two starters are gone with step 4.
    if (!name.empty() && (isAsciiDigit(name[0]) || name[0] == '-' || name[0] == '_')) name = "a" + name;
    return name;
}

Array jsonPathComponents(std::string_view path) {
    const auto special = [](char c) { return c == '\\' || c == '.' || c == '[' || c == ']'; };
    Array components = Array::create();
    std::string current; // the last string component, kept apart while it may still grow
    bool haveCurrent = false;
    const auto flush = [&] {
        if (haveCurrent) components.push_back(Value(current));
        haveCurrent = false;
        current.clear();
    };
    const auto startString = [&](std::string_view text) {
        flush();
        current = std::string(text); // (assign() trips a false -Wrestrict in g++ 12)
        haveCurrent = true;
    };
    const auto appendToLast = [&](std::string_view text) {
        if (haveCurrent) {
            current.append(text);
        } else {
            startString(text);
        }
    };

    std::size_t at = 0;
    bool cont = false;
    bool skipScan = false;
    if (!path.empty() && path[0] == '\\') {
        startString("");
        skipScan = true;
    }
    while (true) {
        if (!skipScan) {
            while (at < path.size() && special(path[at]))
                ++at;
            const std::size_t start = at;
            while (at < path.size() && !special(path[at]))
                ++at;
            if (at == start) break;
            const std::string_view run = path.substr(start, at - start);
            if (cont) {
                appendToLast(run);
            } else {
                startString(run);
            }
            if (at >= path.size()) break;
        }
        skipScan = false;
        cont = true;
        bool stop = false;
        while (at < path.size() && special(path[at])) {
            const char c = path[at];
            if (c == '.') {
                ++at;
                cont = false;
            } else if (c == '[') {
                ++at;
                std::size_t end = at;
                if (end < path.size() && (path[end] == '-' || path[end] == '+')) ++end;
                while (end < path.size() && isAsciiDigit(path[end]))
                    ++end;
                long long index = 0;
                const char* first = path.data() + at + (at < path.size() && path[at] == '+' ? 1 : 0);
                const auto [ptr, ec] = std::from_chars(first, path.data() + end, index);
                if (ptr == first || ptr != path.data() + end) {
                    // "a[x]": no number to read; the path ends with what it has so far.
                    stop = true;
                    break;
                }
                if (ec == std::errc::result_out_of_range) {
                    index = path[at] == '-' ? std::numeric_limits<long long>::min()
                                            : std::numeric_limits<long long>::max();
                }
                flush();
                components.push_back(Value(index));
                at = end;
                cont = false;
            } else if (c == ']') {
                ++at;
            } else { // backslash
                if (at + 1 < path.size()) {
                    const std::string_view literal = path.substr(at + 1, 1);
                    if (cont) {
                        appendToLast(literal);
                    } else {
                        startString(literal);
                    }
                    at += 2;
                } else {
                    ++at;
                }
                cont = true;
            }
        }
        if (stop || at >= path.size()) break;
    }
    flush();
    return components;
}

std::string stringByRemovingCharsInString(std::string_view receiver, std::string_view chars) {
    // Characters, not bytes: a multi-byte character is removed whole.
    std::u32string remove;
    for (std::size_t at = 0; at < chars.size();)
        remove += Utf8::next(chars, at);
    std::string out;
    for (std::size_t at = 0; at < receiver.size();) {
        const std::size_t start = at;
        const char32_t c = Utf8::next(receiver, at);
        if (remove.find(c) == std::u32string::npos) out.append(receiver.substr(start, at - start));
    }
    return out;
}

namespace {

// One character's case, as the platform maps it: ASCII directly, the rest through the C.UTF-8
// locale when the system has it.
char32_t changeCase(char32_t c, bool upper) {
    if (c < 0x80) {
        const char ascii = static_cast<char>(c);
        return static_cast<char32_t>(upper ? upperAscii(ascii) : lowerAscii(ascii));
    }
    try {
        static const std::locale utf8("C.UTF-8");
        const auto wide = static_cast<wchar_t>(c);
        return static_cast<char32_t>(upper ? std::toupper(wide, utf8) : std::tolower(wide, utf8));
    } catch (const std::runtime_error&) {
        return c; // without the locale only ASCII letters change
    }
}

} // namespace

std::string stringWithFirstCharCapitalized(std::string_view receiver) {
    if (receiver.empty()) return std::string();
    std::size_t at = 0;
    const char32_t first = Utf8::next(receiver, at);
    std::string out;
    Utf8::append(out, changeCase(first, true));
    out.append(receiver.substr(at));
    return out;
}

std::string lowercaseString(std::string_view receiver) {
    std::string out;
    out.reserve(receiver.size());
    for (std::size_t at = 0; at < receiver.size();) {
        const std::size_t start = at;
        const char32_t c = Utf8::next(receiver, at);
        if (c < 0x80) {
            out += lowerAscii(static_cast<char>(c));
        } else if (const char32_t lower = changeCase(c, false); lower != c) {
            Utf8::append(out, lower);
        } else {
            out.append(receiver.substr(start, at - start)); // kept byte for byte
        }
    }
    return out;
}

std::string capitalizedString(std::string_view receiver) {
    std::string out;
    out.reserve(receiver.size());
    bool wordStart = true;
    for (std::size_t at = 0; at < receiver.size();) {
        const char32_t c = Utf8::next(receiver, at);
        const bool blank = c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == 0x2028 || c == 0x2029;
        Utf8::append(out, blank ? c : changeCase(c, wordStart));
        wordStart = blank;
    }
    return out;
}

std::string stringByTrimmingBlanks(std::string_view receiver) {
    return std::string(trimBlanks(receiver));
}

bool isValidEmail(std::string_view receiver) {
    static const std::regex pattern("[A-Z0-9a-z._%+-]+@[A-Za-z0-9.-]+\\.[A-Za-z]{2,16}");
    return std::regex_match(receiver.begin(), receiver.end(), pattern);
}

std::string convertUnicode(std::string_view receiver) {
    std::string out;
    for (std::size_t at = 0; at < receiver.size();) {
        const char32_t c = Utf8::next(receiver, at);
        if (c == U'\\') {
            out += "\\\\";
        } else if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x10000) {
            out += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
        } else {
            // Outside the basic plane: a UTF-16 surrogate pair, as the platform's form writes it.
            const char32_t v = c - 0x10000;
            out += fmt::format("\\u{:04x}\\u{:04x}", static_cast<unsigned>(0xD800 + (v >> 10)),
                               static_cast<unsigned>(0xDC00 + (v & 0x3FF)));
        }
    }
    return out;
}

std::string vnSha256(std::string_view receiver) {
    const bool ascii = std::all_of(receiver.begin(), receiver.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return Base64::encode(Crypto::sha256(ascii ? receiver : std::string_view()));
}

std::string MD5(std::string_view receiver) {
    const std::size_t zero = receiver.find('\0');
    return Crypto::md5Hex(receiver.substr(0, zero));
}

PlatformColor _vp_colorFromHexString(std::string_view receiver) {
    if (receiver.empty()) return PlatformColor::clear();
    // Reads hexadecimal digits from index 1 into a 32-bit number, as a scanner would: leading
    // blanks and an "0x" are passed over, and the number stops at the first other character.
    std::size_t first = 0;
    Utf8::next(receiver, first); // the first character, whatever it is and however long
    std::string_view digits = receiver.substr(first);
    while (!digits.empty() && (digits.front() == ' ' || digits.front() == '\t' || digits.front() == '\n')) {
        digits.remove_prefix(1);
    }
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
        digits.remove_prefix(2);
    std::uint64_t value = 0;
    std::size_t used = 0;
    while (used < digits.size() && std::isxdigit(static_cast<unsigned char>(digits[used])))
        ++used;
    if (used > 0) {
        const auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + used, value, 16);
        if (ec == std::errc::result_out_of_range || value > 0xFFFFFFFFull) value = 0xFFFFFFFFull;
    }
    const auto rgb = static_cast<std::uint32_t>(value);
    return PlatformColor::rgb(((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0,
                              1.0);
}

std::optional<std::string> pathMovedFrom(std::string_view path, std::string_view oldPath,
                                         std::string_view newPath) {
    if (!path.starts_with(oldPath)) return std::nullopt;
    if (path.size() != oldPath.size() && path[oldPath.size()] != ';') return std::nullopt;
    std::string moved(newPath);
    moved += path.substr(oldPath.size());
    return moved;
}

} // namespace velmo
