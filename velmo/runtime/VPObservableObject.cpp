#include "velmo/runtime/VPObservableObject.h"

#include <algorithm>
#include <set>
#include <shared_mutex>

#include "velmo/foundation/VDClass.h"

namespace velmo {

namespace {

struct PropsKeys {
    std::shared_mutex mutex;
    std::map<std::string, std::vector<std::string>, std::less<>> byClassName;
};

PropsKeys& propsKeys() {
    static PropsKeys* keys = new PropsKeys(); // kept for the process
    return *keys;
}

} // namespace

const VDClass& VPObservableObject::classObject() {
    static const VDClass cls("VPObservableObject", nullptr, nullptr);
    return cls;
}

std::vector<std::string> VPObservableObject::getObservablePropsKeys(const VDClass& cls) {
    PropsKeys& keys = propsKeys();
    {
        std::shared_lock lock(keys.mutex);
        if (const auto it = keys.byClassName.find(cls.name()); it != keys.byClassName.end())
            return it->second;
    }
    // Each class answers for its own properties only, so walk up the chain.
    std::set<std::string> names;
    for (const VDClass* c = &cls; c != nullptr; c = c->superclass()) {
        for (auto& name : VDPropertyRegistry::classPropsConformingTo(*c, kVPObservableProp))
            names.insert(name);
    }
    std::unique_lock lock(keys.mutex);
    const auto [it, inserted] = keys.byClassName.try_emplace(cls.name(), names.begin(), names.end());
    return it->second;
}

Dictionary VPObservableObject::observablePropsKeys() {
    PropsKeys& keys = propsKeys();
    std::shared_lock lock(keys.mutex);
    Dictionary result = Dictionary::create(keys.byClassName.size());
    for (const auto& [className, names] : keys.byClassName) {
        Array array = Array::create(names.size());
        for (const auto& name : names)
            array.push_back(Value(name));
        result.set(className, Value(array));
    }
    return result;
}

bool VPObservableObject::isMarked(std::string_view property) const {
    const auto marked = getObservablePropsKeys(objectClass());
    return std::find(marked.begin(), marked.end(), property) != marked.end();
}

void VPObservableObject::subscribe(std::string_view property, Callback callback) {
    if (property.empty() || !callback || !isMarked(property)) return;
    std::lock_guard lock(mutex_);
    auto it = subscribers_.find(property);
    if (it == subscribers_.end())
        it =
            subscribers_.emplace(std::string(property), std::vector<std::shared_ptr<const Callback>>{}).first;
    it->second.push_back(std::make_shared<const Callback>(std::move(callback)));
}

void VPObservableObject::subscribe(std::string_view property, Callback callback, unsigned options) {
    if (callback && (options & kVPObservableOptionInitial) != 0) {
        // Read by name, marked or not; a property nobody can read gets no delivery.
        try {
            if (const auto getter = VDPropertyRegistry::getterFor(objectClass(), property))
                callback(getter(*this));
        } catch (...) {
        }
    }
    subscribe(property, std::move(callback));
}

VPObservableObject::ChangeCallback VPObservableObject::onChange() const {
    std::lock_guard lock(mutex_);
    return onChange_;
}

void VPObservableObject::setOnChange(ChangeCallback onChange) {
    std::lock_guard lock(mutex_);
    onChange_ = std::move(onChange);
}

void VPObservableObject::didChangeValueForKey(std::string_view property) {
    if (!isMarked(property)) return;
    // Callbacks run outside the lock, so they may subscribe, set properties or replace onChange.
    std::vector<std::shared_ptr<const Callback>> callbacks;
    ChangeCallback onChange;
    {
        std::lock_guard lock(mutex_);
        if (const auto it = subscribers_.find(property); it != subscribers_.end()) callbacks = it->second;
        onChange = onChange_;
    }
    const Value self(weak_from_this().lock());
    for (const auto& callback : callbacks)
        (*callback)(self);
    if (onChange) onChange();
}

} // namespace velmo
