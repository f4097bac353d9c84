#include "velmo/model/core/VDModelObjectSerializer.h"

#include "velmo/foundation/Json.h"

namespace velmo {

Value VDModelObjectSerializer::objectToSerializableObject(const Value& value) {
    if (value.isNil()) return Value::null();
    // Judged as the JSON writer judges a one-key wrapper holding the value.
    if (Json::isValidJSONObject(Value(Dictionary{{"dummy", value}}))) return value;
    if (value.isArray()) {
        Array out = Array::create(value.array().size());
        for (const Value& item : value.array()) {
            Value result = objectToSerializableObject(item);
            if (!result.isNil()) out.push_back(std::move(result));
        }
        return Value(out);
    }
    if (value.isDictionary()) {
        Dictionary out = Dictionary::create(value.dictionary().size());
        for (const auto& e : value.dictionary())
            out.setEntry(e.key, objectToSerializableObject(e.value));
        return Value(out);
    }
    if (value.isObject()) {
        if (const auto* serializable = dynamic_cast<const VDModelObjectSerializer*>(value.object().get())) {
            return modelObjectToSerializableObject(*serializable);
        }
    }
    return Value();
}

Value VDModelObjectSerializer::modelObjectToSerializableObject(const VDModelObjectSerializer& object) {
    const Dictionary map = object.jsonMap();
    Dictionary out = Dictionary::create(map.size());
    for (const auto& e : map) {
        const Value result = objectToSerializableObject(e.value);
        if (result.isNone()) continue;
        if (result.isDictionary() && result.dictionary().empty()) continue;
        if (result.isArray() && result.array().empty()) continue;
        out.setEntry(e.key, result);
    }
    return Value(out);
}

} // namespace velmo
