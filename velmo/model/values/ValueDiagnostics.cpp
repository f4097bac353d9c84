#include "velmo/model/values/ValueDiagnostics.h"

#include <fmt/format.h>

#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/VDClass.h"

namespace velmo {

namespace {
// The platform's class names for the kinds, as its diagnostics printed them.
std::string className(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::Nil:
        return "nil";
    case Value::Kind::Null:
        return "NSNull";
    case Value::Kind::Bool:
    case Value::Kind::Int:
    case Value::Kind::UInt:
    case Value::Kind::Float:
    case Value::Kind::Double:
        return "NSNumber";
    case Value::Kind::String:
        return "NSString";
    case Value::Kind::Bytes:
        return "NSData";
    case Value::Kind::Array:
        return "NSMutableArray";
    case Value::Kind::Dictionary:
        return "NSMutableDictionary";
    case Value::Kind::Model:
    case Value::Kind::Object:
        return value.object()->objectClass().name();
    }
    return "?";
}
} // namespace

void logValueDiagnostic(const Value& value) {
    const bool valid = value.isNumber() || value.isString() || value.isArray() || value.isDictionary();
    SystemLog::log(fmt::format("{}: {}", valid ? "valid" : "invalid", className(value)));
    if (!valid) SystemLog::log("/////////////////////////");
}

Value vp_toMutableValue(const Value& value) {
    logValueDiagnostic(value);
    if (value.isDictionary()) {
        Dictionary dict = value.dictionary();
        for (const auto& e : dict) {
            if (e.value.isArray() || e.value.isDictionary()) {
                vp_toMutableValue(e.value);
            } else {
                logValueDiagnostic(e.value);
            }
        }
        return value;
    }
    if (value.isArray()) {
        for (const Value& item : value.array()) {
            if (item.isArray() || item.isDictionary()) {
                vp_toMutableValue(item);
            } else {
                logValueDiagnostic(item);
            }
        }
    }
    return value;
}

Value vp_toImmutableValue(const Value& value) {
    if (!value.isArray()) return value;
    logValueDiagnostic(value);
    Array out = Array::create(value.array().size());
    for (const Value& item : value.array())
        out.push_back(vp_toMutableValue(item));
    return Value(out);
}

} // namespace velmo
