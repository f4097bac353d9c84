#pragma once

#include <string>

#include "velmo/foundation/VDClass.h"

namespace velmo {

/// What a configuration manager answers about its sources: the class bound to
/// "VVConfigManagerInterface" in `VVDI` is the manager that `VPConfigManager::shared` makes, so a
/// host that binds a subclass changes where the configuration comes from and what it reads as.
class VVConfigManagerInterface {
public:
    virtual ~VVConfigManagerInterface() = default;

    /// The address of the remote document: the object store's base and its path. Empty when no
    /// object store is configured, and then nothing is fetched.
    virtual std::string remoteConfigURL() const = 0;
    /// The name of the local copy among the library's resources, without its ".json".
    virtual std::string localConfigResourceName() const = 0;
    /// Seconds between remote refreshes.
    virtual double refreshTimeout() const = 0;
    /// The class the configuration document is read into.
    virtual const VDClass& configModelClass() const = 0;

protected:
    VVConfigManagerInterface() = default;
    VVConfigManagerInterface(const VVConfigManagerInterface&) = default;
    VVConfigManagerInterface& operator=(const VVConfigManagerInterface&) = default;
};

} // namespace velmo
