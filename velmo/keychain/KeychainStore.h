#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/foundation/DateFormatter.h"

namespace velmo {

/// A generic-password item as the token store keeps it.
struct KeychainItem {
    std::string service{};
    std::string account{};
    std::string label{};
    std::string accessGroup{};
    /// The secret; only filled when asked for.
    std::optional<std::string> data{};
    Date created{};
    Date modified{};
};

/// Which items an operation is about: each field that is set must match.
struct KeychainMatch {
    std::optional<std::string> service{};
    std::optional<std::string> account{};
    std::optional<std::string> accessGroup{};

    bool matches(const KeychainItem& item) const;
};

/// What a store operation came to: code 0 for success, else the code and the store's message.
struct KeychainStatus {
    std::int32_t code = 0;
    std::string message{};

    bool ok() const { return code == 0; }
    static KeychainStatus failure(std::int32_t code, std::string message = {});
};

/// A place that keeps secrets, with the four operations the token store needs: copy matching,
/// add, update and delete. The Secret Service when one answers, a private file otherwise
/// (`KeychainStoreChoice` picks).
class KeychainStore {
public:
    virtual ~KeychainStore() = default;

    /// The first match, with its data when `withData`.
    virtual KeychainStatus find(const KeychainMatch& match, bool withData, KeychainItem& item) = 0;
    /// Every match, without data; not-found when there is none.
    virtual KeychainStatus findAll(const KeychainMatch& match, std::vector<KeychainItem>& items) = 0;
    virtual KeychainStatus add(const KeychainItem& item) = 0;
    /// Changes only the data of the matching items; labels and the rest stay.
    virtual KeychainStatus update(const KeychainMatch& match, std::string_view data) = 0;
    /// Deletes the first match.
    virtual KeychainStatus remove(const KeychainMatch& match) = 0;

    /// The text for one of the store's codes.
    static std::string messageForCode(std::int32_t code);
};

} // namespace velmo
