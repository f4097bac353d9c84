#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include "velmo/foundation/Uuid.h"
#include "velmo/foundation/VPError.h"

namespace velmo::test {

/// A service name of this run alone, so runs sharing a keyring never see each other's items.
inline std::string uniqueService(const std::string& what) {
    return "velmo-test-" + what + "-" + Uuid::lowercaseString();
}

inline std::int64_t codeOf(const VPErrorPtr& error) {
    return error ? error->code() : 0;
}

/// True in the runs made without a session bus, where the file store must be in use.
inline bool fallbackExpected() {
    return std::getenv("VELMO_KEYCHAIN_EXPECT_FALLBACK") != nullptr;
}

/// The state of the keyring in the runs that start one of their own (see CMakeLists.txt):
/// "locked" or "none"; empty in the other runs.
inline std::string ownKeyring() {
    const char* state = std::getenv("VELMO_KEYCHAIN_OWN_KEYRING");
    return state ? state : "";
}

} // namespace velmo::test
