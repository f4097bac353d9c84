#pragma once

#include <string>

namespace velmo {

/// What the host tells the library about itself: class-level values, which the host's bound class
/// answers. A host binds a metaclass that also implements this interface:
///
///     class MyHostConfig : public VDClass, public VVClientConfigInterface { ... };
///     static MyHostConfig hostConfig(...);          // lives for the process
///     VVDI::shared().bindClass(&hostConfig, kVVClientConfigInterface);
///
/// The bound class object itself answers, as a class answers its class methods; the library reads
/// the values through `VVClientConfig::current()`. An empty string means the host gives no value.
/// Values may be read from any thread, so an implementation keeps them fixed or guards them.
class VVClientConfigInterface {
public:
    virtual ~VVClientConfigInterface() = default;

    /// Base URL of the logging endpoint; records go to "<logsURL>/events/" and "<logsURL>/mixpanel".
    virtual std::string logsURL() const = 0;
    virtual std::string clientVersion() const = 0;
    virtual std::string clientName() const = 0;
    /// Sent as "X-Client-Id" with analytics and service calls.
    virtual std::string clientID() const = 0;
    /// Folder for temporary files of the library.
    virtual std::string tempDir() const = 0;
    /// Service name of the secret token store's item.
    virtual std::string keyChainServiceName() const = 0;
    /// Folder of the host's resources.
    virtual std::string bundle() const = 0;

    /// Version of the application that hosts the client (the design tool, or the `velmo` command).
    /// Records carry it; without it they go without their context, hence no default here.
    virtual std::string hostVersion() const = 0;

protected:
    VVClientConfigInterface() = default;
    VVClientConfigInterface(const VVClientConfigInterface&) = default;
    VVClientConfigInterface& operator=(const VVClientConfigInterface&) = default;
};

} // namespace velmo
