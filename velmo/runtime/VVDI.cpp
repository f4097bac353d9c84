#include "velmo/runtime/VVDI.h"

#include <mutex>

namespace velmo {

// The library's own bindings. They are made here, in one explicit list, and not by static
// initialisers in each class's file: a static library's linker drops files that nothing names, and
// their bindings with them. Order matters where two classes bind one interface: the later one
// stands (the plugin configuration manager after the configuration manager). Each class of the
// library that binds adds its line here as it lands, e.g.
//     di.bindClass(&VPConfigManager::classObject(), kVVConfigManagerInterface);
// Don't call `shared()` from here: the registry is still being made.
void VVDI::bindLibraryClasses(VVDI& di) {
    static_cast<void>(di);
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

void VVDI::bindClass(const VDClass* cls, std::string_view protocol) {
    if (cls == nullptr || protocol.empty()) return;
    std::unique_lock lock(mutex_);
    classBindings_.insert_or_assign(std::string(protocol), cls);
}

void VVDI::bindInstance(std::shared_ptr<Object> instance, std::string_view protocol) {
    if (!instance || protocol.empty()) return;
    std::unique_lock lock(mutex_);
    instanceBindings_.insert_or_assign(std::string(protocol), std::move(instance));
}

const VDClass* VVDI::classForProtocol(std::string_view protocol) const {
    std::shared_lock lock(mutex_);
    const auto it = classBindings_.find(protocol);
    return it == classBindings_.end() ? nullptr : it->second;
}

std::shared_ptr<Object> VVDI::instanceForProtocol(std::string_view protocol) const {
    std::shared_lock lock(mutex_);
    const auto it = instanceBindings_.find(protocol);
    return it == instanceBindings_.end() ? nullptr : it->second;
}

} // namespace velmo
