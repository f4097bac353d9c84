#include "velmo/foundation/Utf8.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

namespace velmo {

namespace {
struct NullSink {
    void Put(char) {}
};
} // namespace

bool Utf8::isValid(std::string_view text) {
    rapidjson::MemoryStream in(text.data(), text.size());
    NullSink sink;
    while (in.Tell() < text.size()) {
        if (!rapidjson::UTF8<>::Validate(in, sink)) return false;
    }
    return true;
}

char32_t Utf8::next(std::string_view text, std::size_t& at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    int length = 0;
    char32_t cp = 0;
    if (lead < 0x80) {
        ++at;
        return lead;
    } else if ((lead & 0xE0) == 0xC0) {
        length = 2;
        cp = lead & 0x1F;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        cp = lead & 0x0F;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        cp = lead & 0x07;
    } else {
        ++at;
        return U'\uFFFD';
    }
    if (at + static_cast<std::size_t>(length) > text.size()) {
        ++at;
        return U'\uFFFD';
    }
    for (int i = 1; i < length; ++i) {
        const unsigned char c = byte(at + static_cast<std::size_t>(i));
        if ((c & 0xC0) != 0x80) {
            ++at;
            return U'\uFFFD';
        }
        cp = (cp << 6) | (c & 0x3F);
    }
    at += static_cast<std::size_t>(length);
    return cp;
}

void Utf8::append(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

std::string Utf8::sanitized(std::string_view text) {
    if (isValid(text)) return std::string(text);
    std::string out;
    out.reserve(text.size() + 8);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        char32_t cp = next(text, at);
        // `next` also decodes forms that UTF-8 forbids: longer than needed, surrogates, past U+10FFFF.
        const std::size_t shortest = cp < 0x80 ? 1 : cp < 0x800 ? 2 : cp < 0x10000 ? 3 : 4;
        if (at - start != shortest || (cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF) cp = U'\uFFFD';
        append(out, cp);
    }
    return out;
}

} // namespace velmo
