#include "velmo/config/VDCodePrefConfigDropdownItem.h"

namespace velmo {

namespace {

// A value of another kind than text counts as absent.
std::optional<std::string> stringForKey(const Dictionary& d, std::string_view key) {
    const Value& v = d.get(key);
    return v.isString() ? std::optional<std::string>(v.str()) : std::nullopt;
}

void setString(Dictionary& map, std::string_view key, const std::optional<std::string>& s) {
    if (s) map.set(key, Value(*s));
}

} // namespace

const VDClass& VDCodePrefConfigDropdownItem::classObject() {
    static const VDClass cls("VDCodePrefConfigDropdownItem", &VDBaseObject::classObject(), [] {
        return std::static_pointer_cast<Object>(std::make_shared<VDCodePrefConfigDropdownItem>());
    });
    return cls;
}

Dictionary VDCodePrefConfigDropdownItem::jsonMap() const {
    Dictionary map = Dictionary::create();
    setString(map, "text", text);
    setString(map, "value", value);
    return map;
}

void VDCodePrefConfigDropdownItem::initWithSerializableObject(const Value& object) {
    VDBaseObject::initWithSerializableObject(object);
    const Dictionary d = object.dictionary();
    text = stringForKey(d, "text");
    value = stringForKey(d, "value");
}

std::shared_ptr<VDBaseObject> VDCodePrefConfigDropdownItem::copy() const {
    auto made = std::static_pointer_cast<VDCodePrefConfigDropdownItem>(VDBaseObject::copy());
    made->text = text;
    made->value = value;
    return made;
}

} // namespace velmo
