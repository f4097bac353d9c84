#include "velmo/model/core/VDBaseObject.h"

namespace velmo {

const VDClass& VDBaseObject::classObject() {
    static const VDClass cls("VDBaseObject", nullptr, [] {
        struct Blank : VDBaseObject {};
        return std::static_pointer_cast<Object>(std::make_shared<Blank>());
    });
    return cls;
}

Dictionary VDBaseObject::jsonMap() const {
    return Dictionary::create();
}

Value VDBaseObject::serialize() const {
    auto self = std::const_pointer_cast<Object>(shared_from_this());
    return objectToSerializableObject(Value(self));
}

void VDBaseObject::initWithSerializableObject(const Value&) {}

std::string VDBaseObject::description() const {
    return serialize().description();
}

std::shared_ptr<VDBaseObject> VDBaseObject::copy() const {
    return std::dynamic_pointer_cast<VDBaseObject>(objectClass().create());
}

std::shared_ptr<VDBaseObject> VDBaseObject::makeFromSerializableObject(const VDClass& cls,
                                                                       const Value& object) {
    auto made = std::dynamic_pointer_cast<VDBaseObject>(cls.create());
    if (!made || !made->isKindOf(cls)) return nullptr;
    made->initWithSerializableObject(object);
    return made;
}

std::shared_ptr<VDBaseObject> VDBaseObject::modelFromValue(const VDClass& cls, const Value& value) {
    if (!value.isDictionary()) return nullptr;
    return makeFromSerializableObject(cls, value);
}

Dictionary VDBaseObject::objectsDictionaryFromDictionary(const VDClass& cls, const Dictionary& dictionary) {
    Dictionary out = Dictionary::create();
    for (const auto& e : dictionary) {
        if (!e.value.isDictionary()) continue;
        if (auto object = makeFromSerializableObject(cls, e.value)) out.setEntry(e.key, Value(object));
    }
    return out;
}

Array VDBaseObject::objectsArrayFromArray(const VDClass& cls, const Array& array) {
    Array out = Array::create(array.size());
    for (const Value& item : array) {
        if (auto object = makeFromSerializableObject(cls, item)) out.push_back(Value(object));
    }
    return out;
}

} // namespace velmo
