#include "velmo/host/VVHostAPIClient.h"

#include "velmo/foundation/VDClass.h"

namespace velmo {

const VDClass& VVHostAPIClient::classObject() {
    static const VDClass cls("VVHostAPIClient", &VPBaseAPIClient::classObject(),
                             [] { return std::shared_ptr<Object>(std::make_shared<VVHostAPIClient>()); });
    return cls;
}

bool VVHostAPIClient::useStoredToken() {
    auto token = accessToken();
    if (!token) return false;
    storeToken(std::move(token));
    return true;
}

} // namespace velmo
