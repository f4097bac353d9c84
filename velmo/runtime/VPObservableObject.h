#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "velmo/foundation/Object.h"
#include "velmo/foundation/Value.h"
#include "velmo/runtime/VDPropertyRegistry.h"

namespace velmo {

/// The marker that makes a property observable: its type text carries "<VPObservableProp>".
inline constexpr const char* kVPObservableProp = "VPObservableProp";
/// Option bit of `subscribe`: deliver the property's current value at once.
inline constexpr unsigned kVPObservableOptionInitial = 2;

/// Base of the view models: objects whose marked properties can be subscribed to.
///
/// A class marks properties by entering them in `VDPropertyRegistry` with `observableProp`; the
/// marked properties of a class are those of its own entries and of its superclasses'. There is no
/// key-value observing here, so each setter of a marked property stores the value and then calls
/// `didChangeValueForKey`, which tells the property's subscribers and then `onChange`. Every set
/// counts as a change, an equal value included. Delivery is synchronous, on the setter's thread.
///
/// Objects are held by `std::shared_ptr`: subscribers receive the object itself.
class VPObservableObject : public Object {
public:
    using Callback = std::function<void(const Value&)>;
    using ChangeCallback = std::function<void()>;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// Calls `callback` with this object after each set of `property`. A property that isn't marked
    /// is ignored without a word. There is no unsubscribe: a subscriber that must not keep its owner
    /// alive captures the owner weakly.
    /// subscribe:onChange:
    void subscribe(std::string_view property, Callback callback);
    /// As above; with `kVPObservableOptionInitial` in `options` the callback first gets the current
    /// value of the property, at once, on this thread. Deliberately, that first call passes the value
    /// and later ones pass the object (so such subscribers read the property themselves). The first
    /// call reads the property by name whether it is marked or not; failures in it are dropped.
    /// subscribe:onChange:options:
    void subscribe(std::string_view property, Callback callback, unsigned options);

    /// Fires on every change of any marked property of this object.
    ChangeCallback onChange() const;
    void setOnChange(ChangeCallback onChange);

    /// Class name to the names of its marked properties, for the classes computed so far.
    static Dictionary observablePropsKeys();
    /// The marked properties of a class and its superclasses; computed once per class and kept.
    static std::vector<std::string> getObservablePropsKeys(const VDClass& cls);

    /// A property entry marked observable, for `VDPropertyRegistry::registerClass`, with its declared
    /// type: "NSString" gives the type text "NSString<VPObservableProp>".
    template <class T, class R> static VDPropertyRegistry::Property
    observableProp(std::string name, std::string_view typeName, R (T::*getter)() const) {
        return VDPropertyRegistry::property(std::move(name),
                                            std::string(typeName) + "<" + kVPObservableProp + ">", getter);
    }

protected:
    VPObservableObject() = default;

    /// Raised by the setter of a marked property after storing the value: the property's
    /// subscribers in order of subscription, then `onChange`. Names that aren't marked do nothing.
    void didChangeValueForKey(std::string_view property);

private:
    bool isMarked(std::string_view property) const;

    mutable std::mutex mutex_;
    ChangeCallback onChange_;
    std::map<std::string, std::vector<std::shared_ptr<const Callback>>, std::less<>> subscribers_;
};

/// Says that a plain number, string or array is handed to a marked property. Returns its argument
/// unchanged: it only marks the place for the reader and does nothing at run time.
template <class T> constexpr std::decay_t<T> _vp_observable(T&& value) {
    return std::forward<T>(value);
}

} // namespace velmo
