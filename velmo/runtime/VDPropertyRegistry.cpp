#include "velmo/runtime/VDPropertyRegistry.h"

#include <map>
#include <mutex>
#include <shared_mutex>

namespace velmo {

namespace {

struct Registry {
    std::shared_mutex mutex;
    std::map<const VDClass*, std::vector<VDPropertyRegistry::Property>> properties;
};

Registry& registry() {
    static Registry* r = new Registry(); // lives for the process, as classes do
    return *r;
}

// Runs `visit` on the class's own properties under the read lock.
template <class Visit> void forOwnProperties(const VDClass& cls, Visit&& visit) {
    Registry& r = registry();
    std::shared_lock lock(r.mutex);
    const auto it = r.properties.find(&cls);
    if (it == r.properties.end()) return;
    for (const auto& property : it->second)
        visit(property);
}

} // namespace

void VDPropertyRegistry::registerClass(const VDClass& cls, std::vector<Property> properties) {
    Registry& r = registry();
    std::unique_lock lock(r.mutex);
    r.properties.insert_or_assign(&cls, std::move(properties));
}

Dictionary VDPropertyRegistry::classProps(const VDClass& cls) {
    Dictionary result = Dictionary::create();
    forOwnProperties(cls, [&](const Property& p) {
        if (!p.typeText.empty()) result.set(p.name, Value(p.typeText));
    });
    return result;
}

std::vector<std::string> VDPropertyRegistry::classPropsConformingTo(const VDClass& cls,
                                                                    std::string_view protocol) {
    // A text test, as on the original platform: the marker has to stand in angle brackets.
    std::string marker(1, '<');
    marker.append(protocol).push_back('>');
    std::vector<std::string> names;
    forOwnProperties(cls, [&](const Property& p) {
        if (p.typeText.find(marker) != std::string::npos) names.push_back(p.name);
    });
    return names;
}

VDPropertyRegistry::Getter VDPropertyRegistry::getterFor(const VDClass& cls, std::string_view name) {
    for (const VDClass* c = &cls; c != nullptr; c = c->superclass()) {
        Getter found;
        bool declared = false;
        forOwnProperties(*c, [&](const Property& p) {
            if (!declared && p.name == name) {
                declared = true;
                found = p.getter;
            }
        });
        if (declared) return found;
    }
    return {};
}

} // namespace velmo
