#pragma once

#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <string_view>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VVDIBindingEntry.h"

namespace velmo {

/// Interfaces are named by strings. The host binds the first two; the library binds the others
/// itself when the registry is made.
inline constexpr const char* kVVClientConfigInterface = "VVClientConfigInterface";
inline constexpr const char* kVVUserData = "VVUserData";
inline constexpr const char* kVVAPIClientInterface = "VVAPIClientInterface";
inline constexpr const char* kVVConfigManagerInterface = "VVConfigManagerInterface";
inline constexpr const char* kVPSelectProjectViewModel = "VPSelectProjectViewModel";

/// The process-wide registry of interface name to class or instance: how the library reaches what
/// it doesn't own (the host's configuration and user) and how a host puts its own class in place of
/// one of the library's.
///
/// Class and instance bindings are independent: `classForProtocol` never looks at instances.
/// Bindings are replaced, never removed; bound instances are held for the life of the process, and
/// bound classes are metaclass objects, which live that long anyway. Reads and binds may come from
/// any thread (logging reads the client configuration wherever it is called).
class VVDI {
public:
    using ClassEntry = VVDIBindingEntry<const VDClass*>;
    using InstanceEntry = VVDIBindingEntry<std::shared_ptr<Object>>;
    template <class Entry> using Bindings = std::map<std::string, Entry, std::less<>>;

    /// The one registry, made on first use, exactly once, also under concurrent first calls. Making
    /// it binds the library's own classes first, so no caller can see the registry without them.
    static VVDI& shared();

    /// Replaces the interface's class binding. A null class or an empty name is ignored.
    /// bindClass:toProtocol:
    void bindClass(const VDClass* cls, std::string_view protocol);
    /// Replaces the interface's instance binding. A null instance or an empty name is ignored.
    /// bindInstance:toProtocol:
    void bindInstance(std::shared_ptr<Object> instance, std::string_view protocol);

    /// The bound class, or nullptr.
    const VDClass* classForProtocol(std::string_view protocol) const;
    /// The bound instance, or nullptr.
    std::shared_ptr<Object> instanceForProtocol(std::string_view protocol) const;
    /// The bound instance as `T`; nullptr when there is none or it isn't a `T`.
    template <class T> std::shared_ptr<T> instanceFor(std::string_view protocol) const {
        return std::dynamic_pointer_cast<T>(instanceForProtocol(protocol));
    }

    /// A copy of the class bindings, by interface name.
    Bindings<ClassEntry> classBindings() const;
    /// A copy of the instance bindings, by interface name.
    Bindings<InstanceEntry> instanceBindings() const;

    VVDI(const VVDI&) = delete;
    VVDI& operator=(const VVDI&) = delete;

private:
    VVDI() = default;
    /// The library's own bindings, in the order the classes must bind.
    static void bindLibraryClasses(VVDI& di);

    mutable std::shared_mutex mutex_;
    Bindings<ClassEntry> classBindings_;
    Bindings<InstanceEntry> instanceBindings_;
};

} // namespace velmo
