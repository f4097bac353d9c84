#pragma once

#include <optional>
#include <string>

#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"

namespace velmo {

/// Passwords in the secret store by service and account: each operation fills a
/// `VPKeychainQuery` and runs it. Every operation takes an optional error; without one,
/// failures give nothing or false, silently.
class VPKeychain {
public:
    /// The password as text; nothing when absent or empty.
    // passwordForService:account:error:
    static std::optional<std::string>
    passwordForService(const std::string& service, const std::string& account, VPErrorPtr* error = nullptr);
    // passwordDataForService:account:error:
    static std::optional<std::string> passwordDataForService(const std::string& service,
                                                             const std::string& account,
                                                             VPErrorPtr* error = nullptr);
    // deletePasswordForService:account:error:
    static bool deletePasswordForService(const std::string& service, const std::string& account,
                                         VPErrorPtr* error = nullptr);
    /// An absent password fails with -1001; an empty one is saved.
    // setPassword:forService:account:error:
    static bool setPassword(const std::optional<std::string>& password, const std::string& service,
                            const std::string& account, VPErrorPtr* error = nullptr);
    // setPasswordData:forService:account:error:
    static bool setPasswordData(const std::optional<std::string>& data, const std::string& service,
                                const std::string& account, VPErrorPtr* error = nullptr);
    /// The items of the service as dictionaries (see `VPKeychainQuery::fetchAll`); nil on failure.
    // accountsForService:error:
    static Array accountsForService(const std::string& service, VPErrorPtr* error = nullptr);
    /// The items of every service.
    static Array allAccounts(VPErrorPtr* error = nullptr);
};

} // namespace velmo
