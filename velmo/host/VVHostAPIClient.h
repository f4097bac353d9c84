#pragma once

#include "velmo/service/VPBaseAPIClient.h"

namespace velmo {

/// The stand-alone host's client of the service: the user's token lives in the secret token
/// store, so that one command signs in and the next ones find the token there. `VVHost::bind`
/// binds it to "VVAPIClientInterface".
class VVHostAPIClient : public VPBaseAPIClient {
public:
    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    bool shouldUseKeychainForToken() const override { return true; }

    /// Signs the client's requests with the token the store holds, without writing it back;
    /// false when the store holds none.
    bool useStoredToken();
};

} // namespace velmo
