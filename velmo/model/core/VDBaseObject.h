#pragma once

#include <memory>
#include <string>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/foundation/Value.h"
#include "velmo/model/core/VDModelObjectSerializer.h"

namespace velmo {

/// Base of configuration objects: no model, no identifiers, its own key map. Subclasses declare
/// their fields, give `jsonMap` and read them back in `initWithSerializableObject` after calling
/// the base version, and copy their fields after the base `copy`.
class VDBaseObject : public Object, public VDModelObjectSerializer {
public:
    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// Empty on the base class.
    Dictionary jsonMap() const override;
    Value serialize() const override;
    /// The base version ignores the argument.
    void initWithSerializableObject(const Value& object) override;
    /// Text of `serialize`, in the default form of values.
    std::string description() const override;
    /// The base version gives a new blank object of the same class.
    virtual std::shared_ptr<VDBaseObject> copy() const;

    /// A new object of `cls` read from the value; nullptr when the value isn't a dictionary.
    static std::shared_ptr<VDBaseObject> modelFromValue(const VDClass& cls, const Value& value);
    /// For each entry whose value is a dictionary, an object of `cls` under the same key.
    static Dictionary objectsDictionaryFromDictionary(const VDClass& cls, const Dictionary& dictionary);
    /// For each element, whatever its kind, an object of `cls`; failures are left out.
    static Array objectsArrayFromArray(const VDClass& cls, const Array& array);

    template <class T> static std::shared_ptr<T> modelFromValue(const Value& value) {
        return std::static_pointer_cast<T>(modelFromValue(T::classObject(), value));
    }

protected:
    VDBaseObject() = default;
    /// A new object of `cls` that has read `object`; nullptr when `cls` makes no base object.
    static std::shared_ptr<VDBaseObject> makeFromSerializableObject(const VDClass& cls, const Value& object);
};

} // namespace velmo
