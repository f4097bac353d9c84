#include "velmo/keychain/VPKeychainQuery.h"

#include <chrono>
#include <stdexcept>

#include "velmo/foundation/Json.h"
#include "velmo/keychain/KeychainStore.h"
#include "velmo/keychain/KeychainStoreChoice.h"

namespace velmo {

namespace {

std::optional<std::string> present(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

double secondsSince1970(Date date) {
    return std::chrono::duration<double>(date.time_since_epoch()).count();
}

void setError(VPErrorPtr* out, VPErrorPtr error) {
    if (out) *out = std::move(error);
}

/// The store's failure with the store's own message.
VPErrorPtr errorWithStatus(const KeychainStatus& status) {
    return VPError::withDescription(kVPKeychainErrorDomain, status.code,
                                    status.message.empty() ? KeychainStore::messageForCode(status.code)
                                                           : status.message);
}

} // namespace

std::optional<std::string> VPKeychainQuery::password() const {
    if (!passwordData_ || passwordData_->empty()) return std::nullopt;
    return passwordData_;
}

Value VPKeychainQuery::passwordObject() const {
    if (!passwordData_ || passwordData_->empty()) return Value();
    Json::ReadOptions options;
    options.allowFragments = true;
    return Json::tryParse(*passwordData_, options);
}

void VPKeychainQuery::setPasswordObject(const Value& object) {
    if (object.isNil()) {
        passwordData_.reset();
        return;
    }
    // Wrapped, so plain strings and numbers count as archivable too.
    if (!Json::isValidJSONObject(Array{object})) {
        throw std::invalid_argument("VPKeychainQuery: a " + std::string(Value::kindName(object.kind())) +
                                    " can't be archived");
    }
    passwordData_ = Json::write(object);
}

bool VPKeychainQuery::save(VPErrorPtr* error) {
    if (!hasArguments(error, true)) return false;
    KeychainStore& store = KeychainStoreChoice::shared();
    const KeychainMatch match{service_, account_, present(accessGroup_)};
    KeychainItem existing;
    KeychainStatus status = store.find(match, false, existing);
    if (status.code == kVPKeychainErrorItemNotFound) {
        KeychainItem item;
        item.service = service_;
        item.account = account_;
        item.label = label_.empty() ? service_ : label_;
        item.accessGroup = accessGroup_;
        item.data = passwordData_;
        status = store.add(item);
    } else if (status.ok()) {
        status = store.update(match, *passwordData_);
    }
    if (status.ok()) return true;
    setError(error, errorWithStatus(status));
    return false;
}

bool VPKeychainQuery::deleteItem(VPErrorPtr* error) {
    if (!hasArguments(error, false)) return false;
    const KeychainStatus status =
        KeychainStoreChoice::shared().remove({service_, account_, present(accessGroup_)});
    if (status.ok()) return true;
    setError(error, errorWithStatus(status));
    return false;
}

Array VPKeychainQuery::fetchAll(VPErrorPtr* error) {
    setError(error, nullptr);
    std::vector<KeychainItem> items;
    const KeychainStatus status = KeychainStoreChoice::shared().findAll(
        {present(service_), present(account_), present(accessGroup_)}, items);
    if (!status.ok()) {
        setError(error, errorWithStatus(status));
        return Array();
    }
    Array result = Array::create(items.size());
    for (const auto& item : items) {
        result.push_back(Dictionary{{kVPKeychainAccountKey, Value(item.account)},
                                    {kVPKeychainWhereKey, Value(item.service)},
                                    {kVPKeychainLabelKey, Value(item.label)},
                                    {kVPKeychainCreatedAtKey, Value(secondsSince1970(item.created))},
                                    {kVPKeychainLastModifiedKey, Value(secondsSince1970(item.modified))}});
    }
    return result;
}

bool VPKeychainQuery::fetch(VPErrorPtr* error) {
    if (!hasArguments(error, false)) return false;
    KeychainItem item;
    const KeychainStatus status =
        KeychainStoreChoice::shared().find({service_, account_, present(accessGroup_)}, true, item);
    if (!status.ok()) {
        setError(error, errorWithStatus(status));
        return false;
    }
    passwordData_ = item.data ? item.data : std::optional<std::string>(std::string());
    return true;
}

bool VPKeychainQuery::hasArguments(VPErrorPtr* error, bool needsPassword) const {
    const bool complete = !service_.empty() && !account_.empty() && (!needsPassword || passwordData_);
    setError(error, complete ? nullptr : errorWithCode(kVPKeychainErrorBadArguments));
    return complete;
}

bool VPKeychainQuery::isSynchronizationAvailable() {
    return false;
}

VPErrorPtr VPKeychainQuery::errorWithCode(std::int32_t code) {
    if (code == 0) return nullptr;
    const std::string text = code == kVPKeychainErrorBadArguments ? kVPKeychainErrorBadArgumentsText
                                                                  : KeychainStore::messageForCode(code);
    return VPError::withDescription(kVPKeychainErrorDomain, code, text);
}

} // namespace velmo
