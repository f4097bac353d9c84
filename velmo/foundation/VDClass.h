#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velmo {

class Object;

/// A metaclass: one object per class, standing in for the run-time class objects that the
/// original platform has. It serves the class registry, class bindings of `VVDI`, class filters
/// on arrays and kind tests. Model classes extend it with their field table (`VDModelClass`).
class VDClass {
public:
    using Factory = std::shared_ptr<Object> (*)();

    VDClass(std::string_view name, const VDClass* superclass, Factory factory);
    virtual ~VDClass() = default;
    VDClass(const VDClass&) = delete;
    VDClass& operator=(const VDClass&) = delete;

    const std::string& name() const { return name_; }
    const VDClass* superclass() const { return superclass_; }

    /// True when this class is `other` or descends from it.
    bool isSubclassOf(const VDClass& other) const;

    /// A new object of this class, initialised as its plain creation does; nullptr for classes
    /// that can't be made without arguments.
    std::shared_ptr<Object> create() const { return factory_ ? factory_() : nullptr; }

    virtual bool isModelClass() const { return false; }

private:
    std::string name_;
    const VDClass* superclass_;
    Factory factory_;
};

} // namespace velmo
