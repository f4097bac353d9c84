#include "velmo/foundation/Json.h"

#include "velmo/foundation/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/format.h>
#include <rapidjson/error/en.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace velmo {

JsonParseError::JsonParseError(std::string reason, std::size_t offset)
    : std::runtime_error(fmt::format("{} (at offset {})", reason, offset)), reason_(std::move(reason)),
      offset_(offset) {}

namespace {

// SAX handler that builds values on one stack: containers are assembled from the top of the
// stack when they close, so no element is copied twice.
class ValueBuilder {
public:
    explicit ValueBuilder(unsigned maxDepth) : maxDepth_(maxDepth) { stack_.reserve(64); }

    bool Null() { return push(Value::null()); }
    bool Bool(bool b) { return push(Value(b)); }
    bool Int(int i) { return push(Value(i)); }
    bool Uint(unsigned u) { return push(Value(u)); }
    bool Int64(int64_t i) { return push(Value(static_cast<long long>(i))); }
    bool Uint64(uint64_t u) { return push(Value(static_cast<unsigned long long>(u))); }
    bool Double(double d) { return push(Value(d)); }
    bool RawNumber(const char* s, rapidjson::SizeType n, bool) { return number(std::string_view(s, n)); }
    bool String(const char* s, rapidjson::SizeType n, bool) { return text(std::string_view(s, n)); }
    bool Key(const char* s, rapidjson::SizeType n, bool) { return text(std::string_view(s, n)); }

    bool StartObject() { return enter(); }
    bool EndObject(rapidjson::SizeType members) {
        --depth_;
        const std::size_t first = stack_.size() - 2 * static_cast<std::size_t>(members);
        Dictionary d = Dictionary::create(members);
        for (std::size_t i = first; i < stack_.size(); i += 2)
            d.setEntry(stack_[i], std::move(stack_[i + 1]));
        stack_.resize(first);
        stack_.emplace_back(d);
        return true;
    }
    bool StartArray() { return enter(); }
    bool EndArray(rapidjson::SizeType elements) {
        --depth_;
        const std::size_t first = stack_.size() - elements;
        std::vector<Value> items(std::make_move_iterator(stack_.begin() + static_cast<std::ptrdiff_t>(first)),
                                 std::make_move_iterator(stack_.end()));
        stack_.resize(first);
        stack_.emplace_back(Array::fromVector(std::move(items)));
        return true;
    }

    /// Why the builder stopped the reader, if it did.
    enum class Refusal { None, TooDeep, NumberTooBig, LoneSurrogate };
    Refusal refusal() const { return refusal_; }
    Value result() { return stack_.empty() ? Value() : std::move(stack_.back()); }

private:
    // The reader checks the bytes of strings, and pairs of escaped surrogates, but it writes the
    // escape of a lone low surrogate ("\udc00") as the three bytes of that code point, which no
    // UTF-8 text holds: such a string is refused as a bad pair. Those bytes all begin with 0xED.
    bool text(std::string_view s) {
        if (s.find('\xED') != std::string_view::npos && !Utf8::isValid(s)) {
            refusal_ = Refusal::LoneSurrogate;
            return false;
        }
        return push(Value(s));
    }

    // Numbers arrive as their text, which the reader has checked, and are converted here:
    // RapidJSON's own exact conversion reads a zero with a large negative exponent ("0e-23") as
    // a tiny number that isn't zero, and a number just past the largest double ("1.8e308") as
    // infinity. Integers stay integers while they fit in 64 bits, signed or not.
    bool number(std::string_view text) {
        const char* first = text.data();
        const char* last = first + text.size();
        // An integer reads whole; anything else stops at its ".", "e" or "E".
        if (text.front() == '-') {
            long long i = 0;
            const std::from_chars_result r = std::from_chars(first, last, i);
            if (r.ec == std::errc() && r.ptr == last) return push(Value(i));
        } else {
            unsigned long long u = 0;
            const std::from_chars_result r = std::from_chars(first, last, u);
            if (r.ec == std::errc() && r.ptr == last) return push(Value(u));
        }
        double d = 0;
        const std::from_chars_result r = std::from_chars(first, last, d);
        if (r.ec == std::errc::result_out_of_range) {
            if (!belowOne(text)) {
                refusal_ = Refusal::NumberTooBig;
                return false;
            }
            // Below the smallest double: zero, as the reader has always read it.
            d = text.front() == '-' ? -0.0 : 0.0;
        } else if (r.ec != std::errc() || r.ptr != last) {
            return false;
        }
        return push(Value(d));
    }

    // Whether a non-zero number in JSON's syntax lies below 1 in magnitude: its first non-zero
    // digit's power of ten, with the exponent added, is negative.
    static bool belowOne(std::string_view text) {
        std::size_t i = text.front() == '-' ? 1 : 0;
        const auto digit = [&](std::size_t at) {
            return at < text.size() && text[at] >= '0' && text[at] <= '9';
        };
        long long power = 0;
        bool found = false;
        while (digit(i)) {
            if (!found && text[i] != '0') {
                found = true;
                power = 0;
            } else if (found) {
                ++power;
            }
            ++i;
        }
        if (i < text.size() && text[i] == '.') {
            ++i;
            for (long long place = -1; digit(i); ++i, --place) {
                if (!found && text[i] != '0') {
                    found = true;
                    power = place;
                }
            }
        }
        long long exponent = 0;
        if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
            ++i;
            const bool negative = i < text.size() && text[i] == '-';
            if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
            for (; digit(i); ++i)
                exponent = std::min<long long>(exponent * 10 + (text[i] - '0'), 1'000'000'000);
            if (negative) exponent = -exponent;
        }
        return power + exponent < 0;
    }

    bool push(Value v) {
        stack_.push_back(std::move(v));
        return true;
    }
    bool enter() {
        if (++depth_ > maxDepth_) {
            refusal_ = Refusal::TooDeep;
            return false;
        }
        return true;
    }

    std::vector<Value> stack_;
    unsigned depth_ = 0;
    unsigned maxDepth_;
    Refusal refusal_ = Refusal::None;
};

bool isJsonSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr unsigned kParseFlags = rapidjson::kParseValidateEncodingFlag |
                                 rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseInsituFlag |
                                 rapidjson::kParseIterativeFlag | rapidjson::kParseStopWhenDoneFlag;

} // namespace

Value Json::parse(std::string_view text, const ReadOptions& options) {
    // Read in place, from a copy of the text: strings and numbers are then handed over where they
    // lie, without the reader copying them first. The reader stops at a zero byte; one inside the
    // text stops it early, which the check for what follows catches. Checking a multi-byte
    // character, it reads the three bytes after the lead before it looks at them: the copy ends
    // with four zero bytes, so that a character cut off at the end is read within the copy.
    std::string buffer;
    buffer.reserve(text.size() + 4);
    buffer.append(text).append(4, '\0');
    rapidjson::InsituStringStream stream(buffer.data());
    ValueBuilder builder(options.maxDepth);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<kParseFlags>(stream, builder);
    if (result.IsError()) {
        switch (builder.refusal()) {
        case ValueBuilder::Refusal::TooDeep:
            throw JsonParseError(fmt::format("nesting deeper than {} levels", options.maxDepth),
                                 result.Offset());
        case ValueBuilder::Refusal::NumberTooBig:
            throw JsonParseError(rapidjson::GetParseError_En(rapidjson::kParseErrorNumberTooBig),
                                 result.Offset());
        case ValueBuilder::Refusal::LoneSurrogate:
            throw JsonParseError(
                rapidjson::GetParseError_En(rapidjson::kParseErrorStringUnicodeSurrogateInvalid),
                result.Offset());
        case ValueBuilder::Refusal::None:
            break;
        }
        throw JsonParseError(rapidjson::GetParseError_En(result.Code()), result.Offset());
    }
    // The reader stops after the root value; anything but white space after it is an error,
    // including bytes hidden behind a zero byte.
    std::size_t offset = stream.Tell();
    while (offset < text.size() && isJsonSpace(text[offset]))
        ++offset;
    if (offset != text.size()) {
        throw JsonParseError("The document root must not be followed by other values.", offset);
    }
    Value value = builder.result();
    if (!options.allowFragments && !value.isArray() && !value.isDictionary()) {
        throw JsonParseError("The top-level value must be an array or an object.", 0);
    }
    return value;
}

Value Json::tryParse(std::string_view text, const ReadOptions& options, JsonParseError* error) {
    try {
        return parse(text, options);
    } catch (const JsonParseError& e) {
        if (error) *error = e;
        return Value();
    }
}

namespace {

// Text must be valid UTF-8 to be written. (The writers' own validating mode can't be used: the
// pretty writer of this RapidJSON drops the flag from its base class.)
bool isValidUtf8(std::string_view s) {
    return Utf8::isValid(s);
}

template <class Writer> void writeValue(Writer& writer, const Value& value) {
    char buffer[64];
    switch (value.kind()) {
    case Value::Kind::Nil:
    case Value::Kind::Null:
        writer.Null();
        break;
    case Value::Kind::Bool:
        writer.Bool(value.boolValue());
        break;
    case Value::Kind::Int:
        writer.Int64(value.int64Value());
        break;
    case Value::Kind::UInt:
        writer.Uint64(value.uint64Value());
        break;
    case Value::Kind::Float:
    case Value::Kind::Double: {
        // Shortest text that reads back to the same number, in the number's own precision:
        // a float widened to double would print as 0.10000000149011612.
        std::to_chars_result r;
        if (value.kind() == Value::Kind::Float) {
            const float f = value.floatValue();
            if (!std::isfinite(f))
                throw JsonWriteError("Invalid number value (infinite or NaN) in JSON write");
            r = std::to_chars(buffer, buffer + sizeof buffer, f);
        } else {
            const double d = value.doubleValue();
            if (!std::isfinite(d))
                throw JsonWriteError("Invalid number value (infinite or NaN) in JSON write");
            r = std::to_chars(buffer, buffer + sizeof buffer, d);
        }
        writer.RawValue(buffer, static_cast<rapidjson::SizeType>(r.ptr - buffer), rapidjson::kNumberType);
        break;
    }
    case Value::Kind::String: {
        const std::string_view s = value.stringView();
        if (!isValidUtf8(s)) throw JsonWriteError("Invalid UTF-8 string in JSON write");
        writer.String(s.data(), static_cast<rapidjson::SizeType>(s.size()));
        break;
    }
    case Value::Kind::Array:
        writer.StartArray();
        for (const Value& item : value.array())
            writeValue(writer, item);
        writer.EndArray();
        break;
    case Value::Kind::Dictionary:
        writer.StartObject();
        for (const auto& entry : value.dictionary()) {
            const std::string_view key = entry.key.stringView();
            if (!isValidUtf8(key)) throw JsonWriteError("Invalid UTF-8 key in JSON write");
            writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
            writeValue(writer, entry.value);
        }
        writer.EndObject();
        break;
    case Value::Kind::Bytes:
    case Value::Kind::Model:
    case Value::Kind::Object:
        throw JsonWriteError(fmt::format("Invalid type in JSON write ({})", Value::kindName(value.kind())));
    }
}

} // namespace

std::string Json::write(const Value& value, bool pretty) {
    rapidjson::StringBuffer buffer;
    if (pretty) {
        rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
        writer.SetIndent(' ', 2);
        writeValue(writer, value);
    } else {
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        writeValue(writer, value);
    }
    return std::string(buffer.GetString(), buffer.GetSize());
}

namespace {
bool validJson(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::Null:
    case Value::Kind::Bool:
    case Value::Kind::Int:
    case Value::Kind::UInt:
        return true;
    case Value::Kind::String:
        return isValidUtf8(value.stringView());
    case Value::Kind::Float:
    case Value::Kind::Double:
        return std::isfinite(value.doubleValue());
    case Value::Kind::Array:
        for (const Value& item : value.array()) {
            if (!validJson(item)) return false;
        }
        return true;
    case Value::Kind::Dictionary:
        for (const auto& entry : value.dictionary()) {
            if (!isValidUtf8(entry.key.stringView()) || !validJson(entry.value)) return false;
        }
        return true;
    default:
        return false;
    }
}
} // namespace

bool Json::isValidJSONObject(const Value& value) {
    if (!value.isArray() && !value.isDictionary()) return false;
    return validJson(value);
}

} // namespace velmo
