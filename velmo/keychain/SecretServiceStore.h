#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "velmo/keychain/KeychainStore.h"

namespace velmo {

/// The Secret Service of the session bus (gnome-keyring, KeePassXC...), through libsecret.
/// Items go to the default collection, under one schema with the service, account and access
/// group as attributes. Nothing here unlocks or creates a collection: either would raise a prompt.
class SecretServiceStore : public KeychainStore {
public:
    /// A store whenever a service answers, even with an error; nothing only when no service is
    /// there at all (no session bus, or no provider on it), and `reason` says why.
    static std::unique_ptr<SecretServiceStore> connect(std::string& reason);
    ~SecretServiceStore() override;

    KeychainStatus find(const KeychainMatch& match, bool withData, KeychainItem& item) override;
    KeychainStatus findAll(const KeychainMatch& match, std::vector<KeychainItem>& items) override;
    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainMatch& match, std::string_view data) override;
    KeychainStatus remove(const KeychainMatch& match) override;

private:
    struct Impl;
    explicit SecretServiceStore(std::unique_ptr<Impl> impl);

    std::unique_ptr<Impl> impl_;
    /// One request at a time: the service's replies come on per-call contexts.
    std::mutex mutex_;
};

} // namespace velmo
