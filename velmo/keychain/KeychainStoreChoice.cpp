#include "velmo/keychain/KeychainStoreChoice.h"

#include <fmt/format.h>

#include "velmo/foundation/Files.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/keychain/KeychainFileStore.h"
#include "velmo/keychain/SecretServiceStore.h"

namespace velmo {

KeychainStore& KeychainStoreChoice::shared() {
    // Made once, under the language's guard for concurrent first calls, and kept for the
    // process: every token of a run lives in one place.
    static KeychainStore* const store = []() -> KeychainStore* {
        std::string reason;
        if (auto secretService = SecretServiceStore::connect(reason)) return secretService.release();
        const auto path = Files::velmoHome() / "keychain.json";
        SystemLog::log(
            fmt::format("[VPKeychain] No secret service answered ({}); secrets are kept in {}, readable "
                        "by this user only",
                        reason, path.string()));
        return new KeychainFileStore(path);
    }();
    return *store;
}

} // namespace velmo
