#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include <libsecret/secret.h>

#include "KeychainTestSupport.h"
#include "velmo/keychain/VPKeychain.h"
#include "velmo/keychain/VPKeychainQuery.h"

using namespace velmo;
using namespace velmo::test;

TEST(VPKeychain, SavesFetchesAndDeletesByServiceAndAccount) {
    const std::string service = uniqueService("roundtrip");
    VPErrorPtr error;
    ASSERT_TRUE(VPKeychain::setPassword("token-1", service, "user", &error)) << error->description();
    EXPECT_EQ(VPKeychain::passwordForService(service, "user", &error), "token-1");
    EXPECT_EQ(error, nullptr);
    ASSERT_TRUE(VPKeychain::setPassword("token-2", service, "user", &error));
    EXPECT_EQ(VPKeychain::passwordForService(service, "user"), "token-2");
    EXPECT_EQ(VPKeychain::passwordForService(service, "someone-else", &error), std::nullopt);
    EXPECT_EQ(codeOf(error), kVPKeychainErrorItemNotFound);

    EXPECT_TRUE(VPKeychain::deletePasswordForService(service, "user", &error));
    EXPECT_EQ(VPKeychain::passwordForService(service, "user", &error), std::nullopt);
    EXPECT_EQ(codeOf(error), -25300);
    EXPECT_FALSE(VPKeychain::deletePasswordForService(service, "user", &error));
    EXPECT_EQ(codeOf(error), -25300);
}

TEST(VPKeychain, MissingArgumentsFailWithTheirOwnCode) {
    const std::string service = uniqueService("arguments");
    using Call = std::function<bool(VPErrorPtr*)>;
    const std::vector<std::pair<const char*, Call>> calls = {
        {"absent password",
         [&](VPErrorPtr* e) { return VPKeychain::setPassword(std::nullopt, service, "user", e); }},
        {"no service", [&](VPErrorPtr* e) { return VPKeychain::setPassword("x", "", "user", e); }},
        {"no account", [&](VPErrorPtr* e) { return VPKeychain::setPasswordData("x", service, "", e); }},
        {"fetch without account",
         [&](VPErrorPtr* e) { return VPKeychain::passwordForService(service, "", e).has_value(); }},
        {"delete without service",
         [&](VPErrorPtr* e) { return VPKeychain::deletePasswordForService("", "user", e); }},
    };
    for (const auto& [what, call] : calls) {
        VPErrorPtr error;
        EXPECT_FALSE(call(&error)) << what;
        EXPECT_EQ(codeOf(error), -1001) << what;
    }
    EXPECT_EQ(VPKeychain::accountsForService(service), Array()) << "nothing was saved";
}

TEST(VPKeychain, EmptyPasswordIsSavedAndReadsAsNothing) {
    const std::string service = uniqueService("empty");
    VPErrorPtr error;
    ASSERT_TRUE(VPKeychain::setPassword("", service, "user", &error));
    EXPECT_EQ(VPKeychain::passwordForService(service, "user", &error), std::nullopt);
    EXPECT_EQ(error, nullptr) << "present, only empty";
    EXPECT_EQ(VPKeychain::passwordDataForService(service, "user"), std::string());
    VPKeychain::deletePasswordForService(service, "user");
}

TEST(VPKeychain, BinaryDataAndArchivedObjectsRoundTrip) {
    const std::string service = uniqueService("bytes");
    const std::string bytes("\x00\x01\xff token \x00", 11);
    ASSERT_TRUE(VPKeychain::setPasswordData(bytes, service, "bytes"));
    EXPECT_EQ(VPKeychain::passwordDataForService(service, "bytes"), bytes);

    VPKeychainQuery query;
    query.setService(service);
    query.setAccount("object");
    const Value object =
        Dictionary{{"token", Value("abc")}, {"expires", Value(1700000000)}, {"scopes", Array{"a", "b"}}};
    query.setPasswordObject(object);
    ASSERT_TRUE(query.save());
    VPKeychainQuery reader;
    reader.setService(service);
    reader.setAccount("object");
    ASSERT_TRUE(reader.fetch());
    EXPECT_EQ(reader.passwordObject(), object);
    query.setPasswordObject(Value("just text"));
    EXPECT_EQ(query.passwordObject(), Value("just text"));
    EXPECT_THROW(query.setPasswordObject(Value::bytes("raw")), std::invalid_argument);
    query.setPasswordData(std::string());
    EXPECT_TRUE(query.passwordObject().isNil());
    EXPECT_EQ(query.password(), std::nullopt);

    VPKeychain::deletePasswordForService(service, "bytes");
    VPKeychain::deletePasswordForService(service, "object");
}

TEST(VPKeychain, SavingOverAnItemChangesItsDataAndKeepsItsLabel) {
    const std::string service = uniqueService("label");
    VPKeychainQuery first;
    first.setService(service);
    first.setAccount("user");
    first.setLabel("Velmo token");
    first.setPassword("one");
    ASSERT_TRUE(first.save());

    VPKeychainQuery second;
    second.setService(service);
    second.setAccount("user");
    second.setLabel("Another label");
    second.setPassword("two");
    ASSERT_TRUE(second.save());

    VPErrorPtr error;
    const Array items = VPKeychain::accountsForService(service, &error);
    ASSERT_EQ(items.size(), 1u) << (error ? error->description() : "");
    const Dictionary item = items[0].dictionary();
    EXPECT_EQ(item.get(kVPKeychainLabelKey), Value("Velmo token"));
    EXPECT_EQ(item.get(kVPKeychainAccountKey), Value("user"));
    EXPECT_EQ(item.get(kVPKeychainWhereKey), Value(service));
    EXPECT_GT(item.get(kVPKeychainCreatedAtKey).doubleValue(), 1.6e9);
    EXPECT_EQ(VPKeychain::passwordForService(service, "user"), "two");
    VPKeychain::deletePasswordForService(service, "user");
}

TEST(VPKeychain, AccountsAreListedPerServiceAndForAll) {
    const std::string service = uniqueService("accounts");
    ASSERT_TRUE(VPKeychain::setPassword("a", service, "alice"));
    ASSERT_TRUE(VPKeychain::setPassword("b", service, "bob"));
    const auto accountsIn = [](const Array& items) {
        std::vector<std::string> accounts;
        for (const auto& item : items)
            accounts.push_back(item.dictionary().get(kVPKeychainAccountKey).str());
        std::sort(accounts.begin(), accounts.end());
        return accounts;
    };
    EXPECT_EQ(accountsIn(VPKeychain::accountsForService(service)),
              (std::vector<std::string>{"alice", "bob"}));
    const auto all = accountsIn(VPKeychain::allAccounts());
    EXPECT_NE(std::find(all.begin(), all.end(), "alice"), all.end());

    VPErrorPtr error;
    EXPECT_TRUE(VPKeychain::accountsForService(uniqueService("nobody"), &error).isNil());
    EXPECT_EQ(codeOf(error), -25300);
    VPKeychain::deletePasswordForService(service, "alice");
    VPKeychain::deletePasswordForService(service, "bob");
}

TEST(VPKeychain, ConcurrentSavesKeepEveryItem) {
    const std::string service = uniqueService("threads");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&service, t] {
            for (int i = 0; i < 3; ++i) {
                VPKeychain::setPassword("p", service, "user-" + std::to_string(t) + "-" + std::to_string(i));
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(VPKeychain::accountsForService(service).size(), 12u);
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(VPKeychain::deletePasswordForService(service, "user-" + std::to_string(t) + "-" +
                                                                          std::to_string(i)));
        }
    }
}
