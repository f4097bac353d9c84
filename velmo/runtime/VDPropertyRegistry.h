#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/foundation/Value.h"

namespace velmo {

/// The declared properties of classes, entered by the classes themselves: what run-time reflection
/// of properties gives on the original platform. Each class enters its own properties, once, where
/// its metaclass is made:
///
///     const VDClass& VPPopoverViewModel::classObject() {
///         static const VDClass* cls = [] {
///             static const VDClass c("VPPopoverViewModel", &VPObservableObject::classObject(), &make);
///             VDPropertyRegistry::registerClass(c, {
///                 VPObservableObject::observableProp("message", "NSString", &VPPopoverViewModel::message),
///                 ...});
///             return &c;
///         }();
///         return *cls;
///     }
///
/// so the entries exist before any object of the class does. Look-ups answer for a class's own
/// properties only; callers that want inherited ones walk the superclass chain.
class VDPropertyRegistry {
public:
    using Getter = std::function<Value(const Object&)>;

    struct Property {
        std::string name;
        /// The declared type as text: "id", "NSString", "NSArray<VPObservableProp>"; empty for a
        /// scalar. Marker interfaces stand in angle brackets.
        std::string typeText;
        /// Reads the property of an object of the class; may be empty.
        Getter getter;
    };

    /// Enters the class's own properties; a second call for the same class replaces them.
    static void registerClass(const VDClass& cls, std::vector<Property> properties);

    /// Property name to type text, for the class's own properties whose type text isn't empty.
    /// +_vp_classProps
    static Dictionary classProps(const VDClass& cls);
    /// Names of the class's own properties whose type text contains "<protocol>". Order unspecified.
    /// +_vp_classPropsConformingTo:
    static std::vector<std::string> classPropsConformingTo(const VDClass& cls, std::string_view protocol);

    /// The getter of the named property of the class or its nearest superclass that declares it;
    /// empty when none does.
    static Getter getterFor(const VDClass& cls, std::string_view name);

    /// A property read through a const member function of `T`; its result must convert to `Value`.
    template <class T, class R>
    static Property property(std::string name, std::string typeText, R (T::*getter)() const) {
        return Property{std::move(name), std::move(typeText), [getter](const Object& object) {
                            const auto* typed = dynamic_cast<const T*>(&object);
                            return typed ? Value((typed->*getter)()) : Value();
                        }};
    }
};

} // namespace velmo
