#include "velmo/model/values/DictionaryExtensions.h"

#include <charconv>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/model/values/StringExtensions.h"
#include "velmo/model/values/ValueDiagnostics.h"

namespace velmo {

Dictionary dictionaryByExtending(const Dictionary& a, const Dictionary& b) {
    Dictionary result = a.isNil() ? Dictionary::create() : a.copy();
    for (const auto& e : b) {
        const Value& mine = result.get(e.key.stringView());
        if (mine.isDictionary() && e.value.isDictionary()) {
            result.setEntry(e.key, Value(dictionaryByExtending(mine.dictionary(), e.value.dictionary())));
        } else {
            result.setEntry(e.key, e.value);
        }
    }
    return result;
}

Dictionary dictionaryByExtendingWithDictionary(const Dictionary& receiver, const Dictionary& b) {
    return dictionaryByExtending(receiver, b);
}

Dictionary _vp_deepMergeWith(const Dictionary& receiver, const Dictionary& b) {
    try {
        return dictionaryByExtending(receiver, b);
    } catch (...) {
        return receiver;
    }
}

Dictionary dictionaryByRemovingKey(const Dictionary& receiver, std::string_view key) {
    Dictionary result = receiver.isNil() ? Dictionary::create() : receiver.copy();
    result.remove(key);
    return result;
}

Dictionary vp_toMutable(const Dictionary& receiver) {
    return vp_toMutableValue(Value(receiver)).dictionary();
}

Dictionary vp_toImmutable(const Dictionary& receiver) {
    logValueDiagnostic(Value(receiver));
    Dictionary result = Dictionary::create(receiver.size());
    for (const auto& e : receiver) {
        logValueDiagnostic(e.value);
        if (e.value.isDictionary()) {
            result.setEntry(e.key, Value(vp_toImmutable(e.value.dictionary())));
        } else if (e.value.isArray()) {
            result.setEntry(e.key, vp_toImmutableValue(e.value));
        } else {
            result.setEntry(e.key, e.value);
        }
    }
    return result;
}

std::vector<std::string> allPaths(const Dictionary& receiver) {
    std::vector<std::string> paths;
    addPathsRecursive(receiver, paths, "");
    return paths;
}

void addPathsRecursive(const Dictionary& receiver, std::vector<std::string>& paths,
                       const std::string& prefix) {
    for (const auto& e : receiver)
        paths.push_back(prefix + e.key.str());
    for (const auto& e : receiver) {
        if (e.value.isDictionary())
            addPathsRecursive(e.value.dictionary(), paths, prefix + e.key.str() + ".");
    }
}

Value objectForPath(const Dictionary& receiver, std::string_view path) {
    Value current(receiver);
    for (const Value& component : jsonPathComponents(path)) {
        if (current.isDictionary()) {
            // A number component asks a dictionary for a number key, which string keys never are.
            if (!component.isString()) return Value();
            current = current.dictionary().get(component.stringView());
        } else if (current.isArray()) {
            // An index is the component's unsigned value: a number, or a name made of digits.
            std::uint64_t index = 0;
            if (component.isNumber()) {
                index = component.uint64Value();
            } else {
                const std::string_view digits = component.stringView();
                const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), index);
                if (digits.empty() || ec != std::errc() || end != digits.data() + digits.size())
                    return Value();
            }
            if (index >= current.array().size()) return Value();
            current = current.array()[index];
        } else {
            return Value();
        }
        if (current.isNil()) return Value();
    }
    return current;
}

void setNonNil(Dictionary& receiver, const Value& value, std::string_view key) {
    if (!value.isNil()) receiver.set(key, value);
}

void _vp_addEntriesFromDictionaryIgnoreNull(Dictionary& receiver, const Dictionary& other) {
    for (const auto& e : other) {
        if (!e.value.isNull()) receiver.setEntry(e.key, e.value);
    }
}

namespace {

std::string numberText(const Value& number) {
    switch (number.kind()) {
    case Value::Kind::Bool:
    case Value::Kind::Int:
        return fmt::format("{}", number.int64Value());
    case Value::Kind::UInt:
        return fmt::format("{}", number.uint64Value());
    case Value::Kind::Float:
        return fmt::format("{}", number.floatValue());
    default:
        return fmt::format("{}", number.doubleValue());
    }
}

// The whole string must read as a decimal number (leading and trailing blanks allowed).
std::optional<double> parseDecimal(std::string_view text) {
    text = trimBlanks(text);
    if (text.empty()) return std::nullopt;
    if (text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
    return value;
}

} // namespace

Value _vp_stringForKey(const Dictionary& receiver, std::string_view key) {
    const Value& v = receiver.get(key);
    if (v.isString()) return v;
    if (v.isNumber()) return Value(numberText(v));
    if (v.isBytes()) {
        const std::string_view bytes = v.bytesView();
        if (isValidUtf8(bytes)) return Value(bytes);
    }
    return Value();
}

Value _vp_numberForKey(const Dictionary& receiver, std::string_view key) {
    const Value& v = receiver.get(key);
    if (v.isNumber()) return v;
    if (v.isString()) {
        if (auto parsed = parseDecimal(v.stringView())) {
            // Whole numbers stay integers, as the platform's number formatter gives them.
            double whole = 0;
            if (std::modf(*parsed, &whole) == 0.0 && std::fabs(*parsed) < 9.2e18) {
                return Value(static_cast<long long>(*parsed));
            }
            return Value(*parsed);
        }
    }
    return Value();
}

bool _vp_boolForKey(const Dictionary& receiver, std::string_view key) {
    const Value& v = receiver.get(key);
    if (v.isNumber()) return v.boolValue();
    if (v.isString()) {
        const std::string lower = toLowerAscii(v.stringView());
        if (lower == "true") return true;
        if (lower == "false") return false;
        const auto parsed = parseDecimal(v.stringView());
        return parsed && *parsed != 0.0;
    }
    return false;
}

Dictionary _vp_dicForKey(const Dictionary& receiver, std::string_view key) {
    return receiver.get(key).dictionary();
}

Array _vp_arrayForKey(const Dictionary& receiver, std::string_view key) {
    return receiver.get(key).array();
}

Dictionary _vp_dicFromData(std::string_view bytes) {
    return Json::tryParse(bytes, Json::ReadOptions{.allowFragments = true}).dictionary();
}

} // namespace velmo
