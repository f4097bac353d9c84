#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>

#include <sys/stat.h>

#include "KeychainTestSupport.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/keychain/VPKeychain.h"
#include "velmo/keychain/VPKeychainQuery.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

// Runs in a process of its own with no session bus (see CMakeLists.txt): the first use of the
// store must pick the file, say so once, and never log a token.
TEST(KeychainFallback, WithoutASessionBusSecretsGoToAPrivateFileAndTheChoiceIsLoggedOnce) {
    ASSERT_TRUE(fallbackExpected()) << "runs where no secret service answers";
    std::mutex mutex;
    std::vector<std::string> lines;
    SystemLog::setSink([&](std::string_view line) {
        std::lock_guard lock(mutex);
        lines.emplace_back(line);
    });
    const std::string service = uniqueService("fallback");
    const std::string token = "tok-" + Uuid::lowercaseString();
    VPErrorPtr error;
    ASSERT_TRUE(VPKeychain::setPassword(token, service, "user", &error)) << error->description();
    ASSERT_TRUE(VPKeychain::setPassword(token + "-2", service, "other", &error));
    EXPECT_EQ(VPKeychain::passwordForService(service, "user"), token);

    const fs::path file = Files::velmoHome() / "keychain.json";
    struct stat st;
    ASSERT_EQ(::stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    SystemLog::setSink({});
    const auto mentionsFallback = std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find("keychain.json") != std::string::npos;
    });
    EXPECT_EQ(mentionsFallback, 1);
    for (const auto& line : lines)
        EXPECT_EQ(line.find(token), std::string::npos) << line;

    // A damaged file is reported, never overwritten.
    const auto saved = Files::read(file);
    ASSERT_TRUE(Files::writeAtomically(file, "not json", 0600));
    EXPECT_FALSE(VPKeychain::setPassword("new", service, "user", &error));
    EXPECT_EQ(error->code(), kVPKeychainErrorDecode);
    EXPECT_EQ(Files::read(file), "not json");
    ASSERT_TRUE(Files::writeAtomically(file, *saved, 0600));
    EXPECT_TRUE(VPKeychain::deletePasswordForService(service, "user"));
    EXPECT_TRUE(VPKeychain::deletePasswordForService(service, "other"));
}
