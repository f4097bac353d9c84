#include "velmo/keychain/SecretServiceStore.h"

#include <chrono>

#include <libsecret/secret.h>

#include "velmo/keychain/VPKeychainErrors.h"

namespace velmo {

namespace {

const SecretSchema* schema() {
    static const SecretSchema kSchema = {
        "com.velmoapp.keychain.GenericPassword",
        SECRET_SCHEMA_NONE,
        {
            {"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
            {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
            {"accessGroup", SECRET_SCHEMA_ATTRIBUTE_STRING},
            {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING},
        },
        0,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
    };
    return &kSchema;
}

/// The attributes a match asks for; the strings stay the match's, which must outlive the table.
GHashTable* attributesOf(const KeychainMatch& match) {
    GHashTable* attributes = g_hash_table_new(g_str_hash, g_str_equal);
    const auto put = [attributes](const char* key, const std::optional<std::string>& value) {
        if (value && !value->empty()) {
            g_hash_table_insert(attributes, const_cast<char*>(key), const_cast<char*>(value->c_str()));
        }
    };
    put("service", match.service);
    put("account", match.account);
    put("accessGroup", match.accessGroup);
    return attributes;
}

std::string attribute(GHashTable* attributes, const char* key) {
    const auto* value = static_cast<const char*>(g_hash_table_lookup(attributes, key));
    return value ? value : "";
}

Date dateOf(guint64 seconds) {
    return Date(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

/// Everything of an item but its secret.
KeychainItem describe(SecretItem* secretItem) {
    KeychainItem item;
    GHashTable* attributes = secret_item_get_attributes(secretItem);
    item.service = attribute(attributes, "service");
    item.account = attribute(attributes, "account");
    item.accessGroup = attribute(attributes, "accessGroup");
    g_hash_table_unref(attributes);
    gchar* label = secret_item_get_label(secretItem);
    item.label = label ? label : "";
    g_free(label);
    item.created = dateOf(secret_item_get_created(secretItem));
    item.modified = dateOf(secret_item_get_modified(secretItem));
    return item;
}

/// True when no secret service is there at all: no session bus, or no provider on it that could
/// be found or started. Only then may secrets go elsewhere.
bool noServiceAnswers(const GError* error) {
    if (error->domain == G_IO_ERROR) return true;
    if (error->domain != G_DBUS_ERROR) return false;
    return error->code == G_DBUS_ERROR_SERVICE_UNKNOWN || error->code == G_DBUS_ERROR_NAME_HAS_NO_OWNER ||
           (error->code >= G_DBUS_ERROR_SPAWN_EXEC_FAILED && error->code <= G_DBUS_ERROR_SPAWN_NO_MEMORY);
}

/// A failure of the service, with its own message.
KeychainStatus statusOf(GError* error) {
    std::int32_t code = kVPKeychainErrorNotAvailable;
    if (error->domain == SECRET_ERROR) {
        switch (error->code) {
        case SECRET_ERROR_IS_LOCKED:
            code = kVPKeychainErrorInteractionNotAllowed;
            break;
        case SECRET_ERROR_NO_SUCH_OBJECT:
            code = kVPKeychainErrorItemNotFound;
            break;
        case SECRET_ERROR_ALREADY_EXISTS:
            code = kVPKeychainErrorDuplicateItem;
            break;
        default:
            break;
        }
    }
    KeychainStatus status{code, error->message ? error->message : ""};
    g_error_free(error);
    return status;
}

struct ItemList {
    GList* items = nullptr;
    ~ItemList() { g_list_free_full(items, g_object_unref); }
};

} // namespace

struct SecretServiceStore::Impl {
    SecretService* service = nullptr;

    ~Impl() {
        if (service) g_object_unref(service);
    }

    bool reach(GError** error) {
        if (!service) service = secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, nullptr, error);
        return service != nullptr;
    }

    /// The service, tried again after a failure: it answered once, so its failures are reported.
    KeychainStatus ready() {
        GError* error = nullptr;
        if (reach(&error)) return {};
        return error ? statusOf(error) : KeychainStatus::failure(kVPKeychainErrorNotAvailable);
    }

    KeychainStatus search(const KeychainMatch& match, SecretSearchFlags flags, ItemList& found) {
        if (KeychainStatus status = ready(); !status.ok()) return status;
        GHashTable* attributes = attributesOf(match);
        GError* error = nullptr;
        found.items = secret_service_search_sync(service, schema(), attributes, flags, nullptr, &error);
        g_hash_table_unref(attributes);
        if (error) return statusOf(error);
        if (!found.items) return KeychainStatus::failure(kVPKeychainErrorItemNotFound);
        return {};
    }
};

SecretServiceStore::SecretServiceStore(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

SecretServiceStore::~SecretServiceStore() = default;

std::unique_ptr<SecretServiceStore> SecretServiceStore::connect(std::string& reason) {
    GError* error = nullptr;
    auto impl = std::make_unique<Impl>();
    const bool reached = impl->reach(&error);
    if (!reached && (!error || noServiceAnswers(error))) {
        reason = error ? error->message : "no secret service";
        if (error) g_error_free(error);
        return nullptr;
    }
    // A service that answers is kept even when it fails or is locked: secrets sent to a file
    // instead would be missing for the next process, which finds the service unlocked.
    if (error) g_error_free(error);
    return std::unique_ptr<SecretServiceStore>(new SecretServiceStore(std::move(impl)));
}

KeychainStatus SecretServiceStore::find(const KeychainMatch& match, bool withData, KeychainItem& item) {
    std::lock_guard lock(mutex_);
    ItemList found;
    const KeychainStatus status =
        impl_->search(match, withData ? SECRET_SEARCH_LOAD_SECRETS : SECRET_SEARCH_NONE, found);
    if (!status.ok()) return status;
    auto* secretItem = static_cast<SecretItem*>(found.items->data);
    item = describe(secretItem);
    if (withData) {
        SecretValue* value = secret_item_get_secret(secretItem);
        if (!value) return KeychainStatus::failure(kVPKeychainErrorInteractionNotAllowed);
        gsize length = 0;
        const gchar* bytes = secret_value_get(value, &length);
        item.data = std::string(bytes ? bytes : "", length);
        secret_value_unref(value);
    }
    return {};
}

KeychainStatus SecretServiceStore::findAll(const KeychainMatch& match, std::vector<KeychainItem>& items) {
    std::lock_guard lock(mutex_);
    ItemList found;
    const KeychainStatus status = impl_->search(match, SECRET_SEARCH_ALL, found);
    if (!status.ok()) return status;
    items.clear();
    for (GList* node = found.items; node; node = node->next) {
        items.push_back(describe(static_cast<SecretItem*>(node->data)));
    }
    return {};
}

KeychainStatus SecretServiceStore::add(const KeychainItem& item) {
    std::lock_guard lock(mutex_);
    if (KeychainStatus status = impl_->ready(); !status.ok()) return status;
    GError* error = nullptr;
    // Given the alias of a missing collection, libsecret would create it behind a prompt; a
    // missing default collection is reported instead, and the item goes to the one found here.
    SecretCollection* collection = secret_collection_for_alias_sync(impl_->service, SECRET_COLLECTION_DEFAULT,
                                                                    SECRET_COLLECTION_NONE, nullptr, &error);
    if (!collection) {
        return error ? statusOf(error) : KeychainStatus::failure(kVPKeychainErrorNoDefaultKeychain);
    }
    const std::string collectionPath = g_dbus_proxy_get_object_path(G_DBUS_PROXY(collection));
    g_object_unref(collection);

    const KeychainMatch match{item.service, item.account, item.accessGroup};
    GHashTable* attributes = attributesOf(match);
    const std::string& data = item.data ? *item.data : std::string();
    SecretValue* value =
        secret_value_new(data.data(), static_cast<gssize>(data.size()), "application/octet-stream");
    const gboolean stored =
        secret_service_store_sync(impl_->service, schema(), attributes, collectionPath.c_str(),
                                  item.label.c_str(), value, nullptr, &error);
    secret_value_unref(value);
    g_hash_table_unref(attributes);
    if (!stored) return error ? statusOf(error) : KeychainStatus::failure(kVPKeychainErrorNotAvailable);
    return {};
}

KeychainStatus SecretServiceStore::update(const KeychainMatch& match, std::string_view data) {
    std::lock_guard lock(mutex_);
    ItemList found;
    const KeychainStatus status = impl_->search(match, SECRET_SEARCH_ALL, found);
    if (!status.ok()) return status;
    SecretValue* value =
        secret_value_new(data.data(), static_cast<gssize>(data.size()), "application/octet-stream");
    KeychainStatus result;
    for (GList* node = found.items; node && result.ok(); node = node->next) {
        GError* error = nullptr;
        if (!secret_item_set_secret_sync(static_cast<SecretItem*>(node->data), value, nullptr, &error)) {
            result = error ? statusOf(error) : KeychainStatus::failure(kVPKeychainErrorNotAvailable);
        }
    }
    secret_value_unref(value);
    return result;
}

KeychainStatus SecretServiceStore::remove(const KeychainMatch& match) {
    std::lock_guard lock(mutex_);
    ItemList found;
    const KeychainStatus status = impl_->search(match, SECRET_SEARCH_NONE, found);
    if (!status.ok()) return status;
    GError* error = nullptr;
    if (!secret_item_delete_sync(static_cast<SecretItem*>(found.items->data), nullptr, &error)) {
        return error ? statusOf(error) : KeychainStatus::failure(kVPKeychainErrorNotAvailable);
    }
    return {};
}

} // namespace velmo
