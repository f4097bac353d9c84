#pragma once

#include "velmo/foundation/Value.h"

namespace velmo {

/// The lighter serialisation of configuration objects, which name their JSON keys themselves
/// and have no "model_class" and no identifiers. An object conforms by answering `jsonMap` and
/// reading itself back in `initWithSerializableObject`; the class operations turn such objects,
/// and values holding them, into JSON-safe values.
class VDModelObjectSerializer {
public:
    virtual ~VDModelObjectSerializer() = default;

    /// JSON key to field value.
    virtual Dictionary jsonMap() const = 0;
    /// `objectToSerializableObject` of the object itself.
    virtual Value serialize() const = 0;
    /// Reads the object's keys from a parsed value of any kind.
    virtual void initWithSerializableObject(const Value& object) = 0;

    /// nil gives null; a value that is already JSON comes back untouched; containers are rebuilt
    /// with their elements' results (nil results left out); a conforming object gives its map's
    /// serialisation; anything else gives nil.
    static Value objectToSerializableObject(const Value& value);
    /// The object's `jsonMap`, each value serialised; keys whose result is nil, null, an empty
    /// dictionary or an empty array are left out.
    static Value modelObjectToSerializableObject(const VDModelObjectSerializer& object);
};

} // namespace velmo
