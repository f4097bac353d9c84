#include "velmo/runtime/VVDI.h"

#include <mutex>
#include <type_traits>
#include <utility>

#include "velmo/config/VPConfigManager.h"
#include "velmo/config/VPPluginConfigManager.h"
#include "velmo/service/VPBaseAPIClient.h"

namespace velmo {

// The library's own bindings. They are made here, in one explicit list, and not by static
// initialisers in each class's file: a static library's linker drops files that nothing names, and
// their bindings with them. Order matters where two classes bind one interface: the later one
// stands (the plugin configuration manager after the configuration manager). Each class of the
// library that binds adds its line here as it lands.
// Don't call `shared()` from here: the registry is still being made.
void VVDI::bindLibraryClasses(VVDI& di) {
    di.bindClass(&VPConfigManager::classObject(), kVVConfigManagerInterface);
    di.bindClass(&VPPluginConfigManager::classObject(), kVVConfigManagerInterface);
    di.bindClass(&VPBaseAPIClient::classObject(), kVVAPIClientInterface);
}

VVDI& VVDI::shared() {
    // Never destroyed: bound instances may be used by threads still running at exit.
    static VVDI* shared = [] {
        auto* di = new VVDI();
        bindLibraryClasses(*di);
        return di;
    }();
    return *shared;
}

namespace {

// The bound object, or null.
template <class Entry>
auto boundObject(const VVDI::Bindings<Entry>& bindings, std::string_view protocol)
    -> std::decay_t<decltype(std::declval<Entry>().object())> {
    const auto it = bindings.find(protocol);
    return it == bindings.end() ? nullptr : it->second.object();
}

} // namespace

void VVDI::bindClass(const VDClass* cls, std::string_view protocol) {
    if (cls == nullptr || protocol.empty()) return;
    std::unique_lock lock(mutex_);
    classBindings_.insert_or_assign(std::string(protocol), ClassEntry(std::string(protocol), cls));
}

void VVDI::bindInstance(std::shared_ptr<Object> instance, std::string_view protocol) {
    if (!instance || protocol.empty()) return;
    std::unique_lock lock(mutex_);
    instanceBindings_.insert_or_assign(std::string(protocol),
                                       InstanceEntry(std::string(protocol), std::move(instance)));
}

const VDClass* VVDI::classForProtocol(std::string_view protocol) const {
    std::shared_lock lock(mutex_);
    return boundObject(classBindings_, protocol);
}

std::shared_ptr<Object> VVDI::instanceForProtocol(std::string_view protocol) const {
    std::shared_lock lock(mutex_);
    return boundObject(instanceBindings_, protocol);
}

VVDI::Bindings<VVDI::ClassEntry> VVDI::classBindings() const {
    std::shared_lock lock(mutex_);
    return classBindings_;
}

VVDI::Bindings<VVDI::InstanceEntry> VVDI::instanceBindings() const {
    std::shared_lock lock(mutex_);
    return instanceBindings_;
}

} // namespace velmo
