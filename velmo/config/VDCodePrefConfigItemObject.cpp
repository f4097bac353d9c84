#include "velmo/config/VDCodePrefConfigItemObject.h"

#include "velmo/config/ConfigDictionary.h"

#include <array>

#include "velmo/model/core/VDField.h"

namespace velmo {

namespace {

// One table both ways; the index is the type's number.
constexpr std::array<std::string_view, 7> kTypeNames = {"",         "title", "switch",      "checkbox",
                                                        "dropdown", "link",  "notification"};

using config::setString;
using config::stringForKey;

} // namespace

const VDClass& VDCodePrefConfigItemObject::classObject() {
    static const VDClass cls("VDCodePrefConfigItemObject", &VDBaseObject::classObject(), [] {
        return std::static_pointer_cast<Object>(std::make_shared<VDCodePrefConfigItemObject>());
    });
    return cls;
}

std::uint32_t VDCodePrefConfigItemObject::typeFromString(std::string_view string) {
    for (std::size_t i = 1; i < kTypeNames.size(); ++i) {
        if (kTypeNames[i] == string) return static_cast<std::uint32_t>(i);
    }
    return 0;
}

std::string VDCodePrefConfigItemObject::stringFromType(std::uint32_t type) {
    return type < kTypeNames.size() ? std::string(kTypeNames[type]) : std::string();
}

bool VDCodePrefConfigItemObject::defaultValueIsOn() const {
    return defaultValue && detail::flagFromText(*defaultValue);
}

Dictionary VDCodePrefConfigItemObject::jsonMap() const {
    Dictionary map = Dictionary::create();
    map.set("type", Value(stringFromType(type)));
    setString(map, "text", text);
    setString(map, "value", value);
    if (!values.empty()) {
        Array list = Array::create(values.size());
        for (const auto& choice : values)
            list.push_back(Value(choice));
        map.set("values", Value(list));
    }
    setString(map, "default", defaultValue);
    setString(map, "badge_title", badgeTitle);
    setString(map, "link_title", linkTitle);
    setString(map, "link_url", linkURL);
    setString(map, "notif_id", notifID);
    return map;
}

void VDCodePrefConfigItemObject::initWithSerializableObject(const Value& object) {
    VDBaseObject::initWithSerializableObject(object);
    const Dictionary d = object.dictionary();
    const Value& typeName = d.get("type");
    type = typeName.isString() ? typeFromString(typeName.stringView()) : 0;
    text = stringForKey(d, "text");
    value = stringForKey(d, "value");
    values.clear();
    for (const Value& choice :
         objectsArrayFromArray(VDCodePrefConfigDropdownItem::classObject(), d.get("values").array()))
        values.push_back(choice.objectAs<VDCodePrefConfigDropdownItem>());
    defaultValue = stringForKey(d, "default");
    badgeTitle = stringForKey(d, "badge_title");
    linkTitle = stringForKey(d, "link_title");
    linkURL = stringForKey(d, "link_url");
    notifID = stringForKey(d, "notif_id");
}

std::shared_ptr<VDBaseObject> VDCodePrefConfigItemObject::copy() const {
    auto made = std::static_pointer_cast<VDCodePrefConfigItemObject>(VDBaseObject::copy());
    made->type = type;
    made->text = text;
    made->value = value;
    for (const auto& choice : values)
        made->values.push_back(std::static_pointer_cast<VDCodePrefConfigDropdownItem>(choice->copy()));
    made->defaultValue = defaultValue;
    made->badgeTitle = badgeTitle;
    made->linkTitle = linkTitle;
    made->linkURL = linkURL;
    made->notifID = notifID;
    return made;
}

} // namespace velmo
