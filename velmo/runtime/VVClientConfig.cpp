#include "velmo/runtime/VVClientConfig.h"

#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VVDI.h"

namespace velmo {

namespace {

// Stands in for a missing host: the values of a message sent to nobody.
class EmptyClientConfig final : public VVClientConfigInterface {
public:
    std::string logsURL() const override { return {}; }
    std::string clientVersion() const override { return {}; }
    std::string clientName() const override { return {}; }
    std::string clientID() const override { return {}; }
    std::string tempDir() const override { return {}; }
    std::string keyChainServiceName() const override { return {}; }
    std::string bundle() const override { return {}; }
    std::string hostVersion() const override { return {}; }
};

const VVClientConfigInterface* boundConfig() {
    return dynamic_cast<const VVClientConfigInterface*>(
        VVDI::shared().classForProtocol(kVVClientConfigInterface));
}

} // namespace

const VVClientConfigInterface& VVClientConfig::current() {
    static const EmptyClientConfig empty;
    const VVClientConfigInterface* config = boundConfig();
    return config ? *config : empty;
}

bool VVClientConfig::isBound() {
    return boundConfig() != nullptr;
}

} // namespace velmo
