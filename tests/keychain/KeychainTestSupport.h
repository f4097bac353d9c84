#pragma once

#include <cstdlib>
#include <string>

#include "velmo/foundation/Uuid.h"

namespace velmo::test {

/// A service name of this run alone, so runs sharing a keyring never see each other's items.
inline std::string uniqueService(const std::string& what) {
    return "velmo-test-" + what + "-" + Uuid::lowercaseString();
}

/// True in the runs made without a session bus, where the file store must be in use.
inline bool fallbackExpected() {
    return std::getenv("VELMO_KEYCHAIN_EXPECT_FALLBACK") != nullptr;
}

} // namespace velmo::test
