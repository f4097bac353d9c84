#pragma once

#include <mutex>
#include <string>

#include "velmo/foundation/VDClass.h"
#include "velmo/runtime/VVClientConfigInterface.h"

namespace velmo {

/// The stand-alone host's client configuration: a class object that answers the configuration's
/// values itself, bound to "VVClientConfigInterface" by `VVHost::bind`. Its values are fixed when
/// it is made, so any thread may read them.
class VVHostClientConfig : public VDClass, public VVClientConfigInterface {
public:
    struct Values {
        std::string logsURL;
        std::string clientVersion;
        std::string clientName;
        std::string clientID;
        std::string tempDir;
        std::string keyChainServiceName;
        std::string bundle;
        std::string hostVersion;
    };

    explicit VVHostClientConfig(Values values);

    /// What a host that says nothing gets: no logging endpoint (nothing is sent until one is set),
    /// the library's version for the client and the host, "velmo" and "velmo-cli" for name and id,
    /// "$XDG_RUNTIME_DIR/velmo" or else "<system temp>/velmo-<uid>", the token store's
    /// "Velmo-Sketch-Plugin", and "<prefix>/share/velmo" beside the running program for resources.
    static Values defaults();

    const Values& values() const { return values_; }

    std::string logsURL() const override { return values_.logsURL; }
    std::string clientVersion() const override { return values_.clientVersion; }
    std::string clientName() const override { return values_.clientName; }
    std::string clientID() const override { return values_.clientID; }
    /// The folder of `values().tempDir`, created private (0700) at the first call when missing.
    /// When that name is taken by something other than a folder of this user's, a fresh private
    /// folder stands in.
    std::string tempDir() const override;
    std::string keyChainServiceName() const override { return values_.keyChainServiceName; }
    std::string bundle() const override { return values_.bundle; }
    std::string hostVersion() const override { return values_.hostVersion; }

private:
    Values values_;
    mutable std::once_flag tempDirOnce_;
    mutable std::string tempDir_;
};

} // namespace velmo
