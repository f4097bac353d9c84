#include "velmo/config/VDCodePrefConfigDropdownItem.h"

#include "velmo/config/ConfigDictionary.h"

namespace velmo {

using config::setString;
using config::stringForKey;

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
