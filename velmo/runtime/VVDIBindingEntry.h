#pragma once

#include <string>
#include <utility>

namespace velmo {

/// One binding of `VVDI`: the interface's name and what is bound to it, held strongly. `Bound` is
/// `const VDClass*` for class bindings (metaclass objects live for the process) and
/// `std::shared_ptr<Object>` for instance bindings.
template <class Bound> class VVDIBindingEntry {
public:
    /// initWithKey:object:
    VVDIBindingEntry(std::string key, Bound object) : key_(std::move(key)), object_(std::move(object)) {}

    /// The interface's name.
    const std::string& key() const { return key_; }
    const Bound& object() const { return object_; }

private:
    std::string key_;
    Bound object_;
};

} // namespace velmo
