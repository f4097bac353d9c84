#include "velmo/keychain/VPKeychain.h"

#include "velmo/keychain/VPKeychainQuery.h"

namespace velmo {

namespace {

VPKeychainQuery queryFor(const std::string& service, const std::string& account) {
    VPKeychainQuery query;
    query.setService(service);
    query.setAccount(account);
    return query;
}

} // namespace

std::optional<std::string> VPKeychain::passwordForService(const std::string& service,
                                                          const std::string& account, VPErrorPtr* error) {
    VPKeychainQuery query = queryFor(service, account);
    if (!query.fetch(error)) return std::nullopt;
    return query.password();
}

std::optional<std::string> VPKeychain::passwordDataForService(const std::string& service,
                                                              const std::string& account, VPErrorPtr* error) {
    VPKeychainQuery query = queryFor(service, account);
    if (!query.fetch(error)) return std::nullopt;
    return query.passwordData();
}

bool VPKeychain::deletePasswordForService(const std::string& service, const std::string& account,
                                          VPErrorPtr* error) {
    return queryFor(service, account).deleteItem(error);
}

bool VPKeychain::setPassword(const std::optional<std::string>& password, const std::string& service,
                             const std::string& account, VPErrorPtr* error) {
    return setPasswordData(password, service, account, error);
}

bool VPKeychain::setPasswordData(const std::optional<std::string>& data, const std::string& service,
                                 const std::string& account, VPErrorPtr* error) {
    VPKeychainQuery query = queryFor(service, account);
    query.setPasswordData(data);
    return query.save(error);
}

Array VPKeychain::accountsForService(const std::string& service, VPErrorPtr* error) {
    VPKeychainQuery query;
    query.setService(service);
    return query.fetchAll(error);
}

Array VPKeychain::allAccounts(VPErrorPtr* error) {
    return accountsForService(std::string(), error);
}

} // namespace velmo
