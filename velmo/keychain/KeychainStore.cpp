#include "velmo/keychain/KeychainStore.h"

#include <fmt/format.h>

#include "velmo/keychain/VPKeychainErrors.h"

namespace velmo {

bool KeychainMatch::matches(const KeychainItem& item) const {
    return (!service || *service == item.service) && (!account || *account == item.account) &&
           (!accessGroup || *accessGroup == item.accessGroup);
}

KeychainStatus KeychainStatus::failure(std::int32_t code, std::string message) {
    return KeychainStatus{code, message.empty() ? KeychainStore::messageForCode(code) : std::move(message)};
}

std::string KeychainStore::messageForCode(std::int32_t code) {
    switch (code) {
    case kVPKeychainErrorItemNotFound:
        return "The item could not be found in the secret store.";
    case kVPKeychainErrorDuplicateItem:
        return "The item already exists in the secret store.";
    case kVPKeychainErrorNotAvailable:
        return "No secret store is available.";
    case kVPKeychainErrorNoDefaultKeychain:
        return "The secret store has no default collection.";
    case kVPKeychainErrorInteractionNotAllowed:
        return "The secret store is locked.";
    case kVPKeychainErrorDecode:
        return "The secret store's data could not be read.";
    case kVPKeychainErrorBadArguments:
        return kVPKeychainErrorBadArgumentsText;
    default:
        return fmt::format("The secret store failed (code {}).", code);
    }
}

} // namespace velmo
