#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace velmo {

class VDClass;

/// Root of every reference type that a `Value` can hold: models, configuration objects and the
/// few platform objects that travel in containers. Held by `std::shared_ptr`, as Objective-C objects
/// are held by strong pointers.
class Object : public std::enable_shared_from_this<Object> {
public:
    virtual ~Object() = default;

    /// The metaclass of the object's dynamic class.
    virtual const VDClass& objectClass() const = 0;

    /// Identity by default; value-like classes compare their contents.
    virtual bool isEqual(const Object& other) const { return this == &other; }
    virtual std::size_t hash() const { return std::hash<const void*>{}(this); }

    /// Human-readable form, "<ClassName: 0x...>" unless a class says more.
    virtual std::string description() const;

    /// True when the object is a document model; `Value` tags such references as models.
    virtual bool isModelObject() const { return false; }

    /// True when the object's class is `cls` or one of its subclasses.
    bool isKindOf(const VDClass& cls) const;
    /// True when the object's class is exactly `cls`.
    bool isMemberOf(const VDClass& cls) const;

protected:
    Object() = default;
    Object(const Object&) = default;
    Object& operator=(const Object&) = default;
};

} // namespace velmo
