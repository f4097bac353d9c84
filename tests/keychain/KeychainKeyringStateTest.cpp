#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <vector>

#include <libsecret/secret.h>

#include "KeychainTestSupport.h"
#include "velmo/foundation/Files.h"
#include "velmo/keychain/VPKeychain.h"
#include "velmo/keychain/VPKeychainQuery.h"

using namespace velmo;
using namespace velmo::test;

namespace {

/// Saves an item as the token store would, then locks the keyring, all before the store's first
/// use: the store must not take a locked keyring for a missing one.
bool saveThenLock(const std::string& serviceName) {
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, nullptr, nullptr);
    if (!service) return false;
    GHashTable* attributes = g_hash_table_new(g_str_hash, g_str_equal);
    g_hash_table_insert(attributes, const_cast<char*>("xdg:schema"),
                        const_cast<char*>("com.velmoapp.keychain.GenericPassword"));
    g_hash_table_insert(attributes, const_cast<char*>("service"), const_cast<char*>(serviceName.c_str()));
    g_hash_table_insert(attributes, const_cast<char*>("account"), const_cast<char*>("user"));
    SecretValue* value = secret_value_new("before", -1, "text/plain");
    bool done = secret_service_store_sync(service, nullptr, attributes, SECRET_COLLECTION_DEFAULT, "token",
                                          value, nullptr, nullptr);
    secret_value_unref(value);
    g_hash_table_unref(attributes);
    SecretCollection* collection = secret_collection_for_alias_sync(service, SECRET_COLLECTION_DEFAULT,
                                                                    SECRET_COLLECTION_NONE, nullptr, nullptr);
    GList* objects = collection ? g_list_append(nullptr, collection) : nullptr;
    done = done && objects && secret_service_lock_sync(service, objects, nullptr, nullptr, nullptr) == 1;
    g_list_free(objects);
    if (collection) g_object_unref(collection);
    g_object_unref(service);
    return done;
}

bool fileStoreUsed() {
    return std::filesystem::exists(Files::velmoHome() / "keychain.json");
}

} // namespace

// Runs against a keyring of its own, which it locks: the service answers, so its errors are the
// caller's, and no token may go to a file the next, unlocked process would never read.
TEST(KeychainOwnKeyring, LockedGivesTheServicesErrorsAndNothingGoesToAFile) {
    ASSERT_EQ(ownKeyring(), "locked") << "runs in a session of its own with a keyring it locks";
    const std::string service = uniqueService("locked");
    ASSERT_TRUE(saveThenLock(service));

    using Call = std::function<bool(VPErrorPtr*)>;
    const std::vector<std::pair<const char*, Call>> calls = {
        {"fetch",
         [&](VPErrorPtr* e) { return VPKeychain::passwordForService(service, "user", e).has_value(); }},
        {"update", [&](VPErrorPtr* e) { return VPKeychain::setPassword("after", service, "user", e); }},
        {"add", [&](VPErrorPtr* e) { return VPKeychain::setPassword("new", service, "other", e); }},
        {"delete", [&](VPErrorPtr* e) { return VPKeychain::deletePasswordForService(service, "user", e); }},
    };
    for (const auto& [what, call] : calls) {
        VPErrorPtr error;
        EXPECT_FALSE(call(&error)) << what;
        EXPECT_EQ(codeOf(error), kVPKeychainErrorInteractionNotAllowed) << what;
    }
    EXPECT_FALSE(fileStoreUsed());
}

// Runs against a service that has no keyring at all: making one would take a prompt.
TEST(KeychainOwnKeyring, WithoutADefaultCollectionSavingFailsAndNothingGoesToAFile) {
    ASSERT_EQ(ownKeyring(), "none") << "runs in a session of its own without a keyring";
    VPErrorPtr error;
    EXPECT_FALSE(VPKeychain::setPassword("token", uniqueService("no-default"), "user", &error));
    EXPECT_EQ(codeOf(error), kVPKeychainErrorNoDefaultKeychain);
    EXPECT_FALSE(fileStoreUsed());
}

TEST(KeychainOwnKeyring, UnlockedItemsSavedGoToTheSecretService) {
    ASSERT_EQ(ownKeyring(), "unlocked") << "runs in a session of its own with an unlocked keyring";
    GError* error = nullptr;
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_LOAD_COLLECTIONS, nullptr, &error);
    SecretCollection* collection =
        service ? secret_collection_for_alias_sync(service, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE,
                                                   nullptr, &error)
                : nullptr;
    const bool usable = collection && !secret_collection_get_locked(collection);
    if (collection) g_object_unref(collection);
    if (error) g_error_free(error);
    if (!usable && service) g_object_unref(service);
    ASSERT_TRUE(usable) << "the session's keyring answers and is unlocked";
    const std::string serviceName = uniqueService("secret-service");
    ASSERT_TRUE(VPKeychain::setPassword("visible", serviceName, "user"));
    GHashTable* attributes = g_hash_table_new(g_str_hash, g_str_equal);
    g_hash_table_insert(attributes, const_cast<char*>("service"), const_cast<char*>(serviceName.c_str()));
    GList* items = secret_service_search_sync(service, nullptr, attributes, SECRET_SEARCH_LOAD_SECRETS,
                                              nullptr, nullptr);
    g_hash_table_unref(attributes);
    ASSERT_NE(items, nullptr) << "the item is in the keyring";
    SecretValue* value = secret_item_get_secret(static_cast<SecretItem*>(items->data));
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(secret_value_get_text(value), "visible");
    secret_value_unref(value);
    g_list_free_full(items, g_object_unref);
    g_object_unref(service);
    VPKeychain::deletePasswordForService(serviceName, "user");
}
