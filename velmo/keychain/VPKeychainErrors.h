#pragma once

// The token store's error domain and codes, shared by the query and the stores beneath it.

#include <cstdint>

namespace velmo {

inline constexpr const char* kVPKeychainErrorDomain = "com.velmoapp.keychain";

/// Codes of errors in `kVPKeychainErrorDomain`: the store's codes, and -1001 for missing arguments.
enum VPKeychainErrorCode : std::int32_t {
    /// Service, account or password missing.
    kVPKeychainErrorBadArguments = -1001,
    kVPKeychainErrorItemNotFound = -25300,
    kVPKeychainErrorDuplicateItem = -25299,
    /// The store did not answer.
    kVPKeychainErrorNotAvailable = -25291,
    /// The store has no default place for new items.
    kVPKeychainErrorNoDefaultKeychain = -25307,
    /// The store is locked and may not ask to be unlocked.
    kVPKeychainErrorInteractionNotAllowed = -25308,
    /// The store's data can't be read.
    kVPKeychainErrorDecode = -26275,
};

/// The text of `kVPKeychainErrorBadArguments`.
inline constexpr const char* kVPKeychainErrorBadArgumentsText =
    "The service, the account or the password is missing.";

} // namespace velmo
