#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"
#include "velmo/keychain/VPKeychainErrors.h"

namespace velmo {

/// Keys of the item dictionaries that `fetchAll` gives. The class key has the label key's text.
inline constexpr const char* kVPKeychainAccountKey = "acct";
inline constexpr const char* kVPKeychainCreatedAtKey = "cdat";
inline constexpr const char* kVPKeychainClassKey = "labl";
inline constexpr const char* kVPKeychainDescriptionKey = "desc";
inline constexpr const char* kVPKeychainLabelKey = "labl";
inline constexpr const char* kVPKeychainLastModifiedKey = "mdat";
inline constexpr const char* kVPKeychainWhereKey = "svce";

/// One request to the secret store about a generic-password item, and its answer. The one place
/// that talks to the store. Dates in `fetchAll`'s dictionaries are seconds since 1970.
class VPKeychainQuery {
public:
    enum class SynchronizationMode : unsigned { Any = 0, No = 1, Yes = 2 };

    /// Empty means absent, for the account, the service, the label and the access group.
    const std::string& account() const { return account_; }
    void setAccount(std::string account) { account_ = std::move(account); }
    const std::string& service() const { return service_; }
    void setService(std::string service) { service_ = std::move(service); }
    /// Used only when an item is added; an item added without one is labelled with its service.
    const std::string& label() const { return label_; }
    void setLabel(std::string label) { label_ = std::move(label); }
    const std::string& accessGroup() const { return accessGroup_; }
    void setAccessGroup(std::string accessGroup) { accessGroup_ = std::move(accessGroup); }
    /// Kept, and never sent: the store has no synchronization here.
    SynchronizationMode synchronizationMode() const { return synchronizationMode_; }
    void setSynchronizationMode(SynchronizationMode mode) { synchronizationMode_ = mode; }

    /// The secret's bytes; absent and empty are different.
    const std::optional<std::string>& passwordData() const { return passwordData_; }
    void setPasswordData(std::optional<std::string> data) { passwordData_ = std::move(data); }

    /// The bytes as UTF-8 text; empty bytes read as nothing.
    std::optional<std::string> password() const;
    void setPassword(const std::optional<std::string>& password) { passwordData_ = password; }

    /// The bytes as an archived value (its JSON text): anything JSON holds. Empty bytes, or bytes
    /// that aren't an archive, read as nil.
    Value passwordObject() const;
    /// Throws `std::invalid_argument` for a value that can't be archived; nil clears the data.
    void setPasswordObject(const Value& object);

    /// Adds the item, or changes the data of the one there (its label stays).
    bool save(VPErrorPtr* error = nullptr);
    bool deleteItem(VPErrorPtr* error = nullptr);
    /// The matching items' attributes under the keys above; a nil array on failure.
    Array fetchAll(VPErrorPtr* error = nullptr);
    /// Fills `passwordData` from the item.
    bool fetch(VPErrorPtr* error = nullptr);

    /// False: items never travel to other machines here.
    static bool isSynchronizationAvailable();
    /// nullptr for 0; the text of -1001, or the store's message for the code.
    static VPErrorPtr errorWithCode(std::int32_t code);

private:
    /// Service and account, and the password when saving; clears `error` or sets -1001.
    bool hasArguments(VPErrorPtr* error, bool needsPassword) const;

    std::string account_;
    std::string service_;
    std::string label_;
    std::string accessGroup_;
    SynchronizationMode synchronizationMode_ = SynchronizationMode::Any;
    std::optional<std::string> passwordData_;
};

} // namespace velmo
