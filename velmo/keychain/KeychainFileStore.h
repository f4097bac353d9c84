#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <vector>

#include "velmo/keychain/KeychainStore.h"

namespace velmo {

/// Secrets in one JSON file readable by the user alone (mode 0600), for machines where no
/// Secret Service answers. Every change is a read, change and atomic rewrite under a lock on a
/// file beside it, so processes sharing the file don't lose each other's items. A file that
/// can't be read is reported, never overwritten.
class KeychainFileStore : public KeychainStore {
public:
    explicit KeychainFileStore(std::filesystem::path path);

    KeychainStatus find(const KeychainMatch& match, bool withData, KeychainItem& item) override;
    KeychainStatus findAll(const KeychainMatch& match, std::vector<KeychainItem>& items) override;
    KeychainStatus add(const KeychainItem& item) override;
    KeychainStatus update(const KeychainMatch& match, std::string_view data) override;
    KeychainStatus remove(const KeychainMatch& match) override;

    const std::filesystem::path& path() const { return path_; }

private:
    class Lock;
    KeychainStatus load(std::vector<KeychainItem>& items) const;
    KeychainStatus save(const std::vector<KeychainItem>& items) const;
    /// Load, edit and save under the lock; nothing is written when the edit fails.
    KeychainStatus change(const std::function<KeychainStatus(std::vector<KeychainItem>&)>& edit);

    std::filesystem::path path_;
    std::mutex mutex_;
};

} // namespace velmo
