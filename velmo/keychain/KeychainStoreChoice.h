#pragma once

#include "velmo/keychain/KeychainStore.h"

namespace velmo {

/// Which store keeps the process's secrets. Apart from the store base, so that the base and its
/// implementations don't depend on each other.
class KeychainStoreChoice {
public:
    /// The process's store, chosen at first use: the Secret Service whenever one answers, locked
    /// or not, its failures being the operations' failures; the file under `$VELMO_HOME` only
    /// when none does (no session bus, or no provider on it), which is logged once.
    static KeychainStore& shared();
};

} // namespace velmo
