#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/foundation/Files.h"
#include "velmo/host/VVHost.h"
#include "velmo/runtime/VVClientConfig.h"
#include "velmo/runtime/VVUserData.h"

namespace velmo {
namespace {

// Sets environment variables for one test and restores them after.
class ScopedEnvironment {
public:
    ~ScopedEnvironment() {
        for (const auto& [name, old] : saved_) {
            if (old)
                ::setenv(name.c_str(), old->c_str(), 1);
            else
                ::unsetenv(name.c_str());
        }
    }
    void set(const std::string& name, const std::string& value) {
        const char* old = std::getenv(name.c_str());
        saved_.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
        ::setenv(name.c_str(), value.c_str(), 1);
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

class VVHostTest : public testing::Test {
protected:
    void SetUp() override { folder_ = Files::makeTemporaryDirectory("velmo-host"); }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    std::filesystem::path config(const std::string& text) {
        const auto path = folder_ / "host.json";
        EXPECT_TRUE(Files::writeAtomically(path, text));
        return path;
    }
    std::filesystem::path folder_;
    ScopedEnvironment environment_;
};

TEST_F(VVHostTest, DefaultsThenTheFileThenTheEnvironment) {
    environment_.set("VELMO_CLIENT_ID", "from-env");
    environment_.set("VELMO_LOGS_URL", ""); // set but empty still wins
    std::vector<std::string> warnings;
    const auto settings = VVHost::load(config(R"({"logsURL": "https://logs.example", "clientID": "from-file",
                                                  "clientName": "Studio", "userID": "u-1"})"),
                                       warnings);
    EXPECT_TRUE(warnings.empty());
    EXPECT_EQ(settings.config.logsURL, "");
    EXPECT_EQ(settings.config.clientID, "from-env");
    EXPECT_EQ(settings.config.clientName, "Studio");
    EXPECT_EQ(settings.userID, "u-1");
    // Without versions every record would go without its context.
    EXPECT_FALSE(settings.config.clientVersion.empty());
    EXPECT_FALSE(settings.config.hostVersion.empty());
    EXPECT_EQ(VVHostClientConfig::defaults().logsURL, ""); // nothing is sent until a host asks for it
}

TEST_F(VVHostTest, BadFilesAreReportedAndSkipped) {
    struct Case {
        const char* name;
        const char* text;
        std::size_t warnings;
        std::string clientName;
    };
    const Case cases[] = {
        {"malformed", R"({"clientName": "A")", 1, "velmo"},
        {"not an object", R"(["clientName"])", 1, "velmo"},
        {"bad keys", R"({"clientName": "A", "logsURL": 3, "colour": "red"})", 2, "A"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> warnings;
        const auto settings = VVHost::load(config(c.text), warnings);
        EXPECT_EQ(warnings.size(), c.warnings);
        EXPECT_EQ(settings.config.clientName, c.clientName);
    }
    std::vector<std::string> warnings;
    VVHost::load(folder_ / "missing.json", warnings);
    EXPECT_TRUE(warnings.empty()); // no file is no problem
    // A file that can't even be looked at is not a missing one.
    std::filesystem::create_symlink("loop.json", folder_ / "loop.json");
    VVHost::load(folder_ / "loop.json", warnings);
    EXPECT_EQ(warnings.size(), 1u);
}

TEST_F(VVHostTest, TheTemporaryFolderIsTheUsersOwn) {
    namespace fs = std::filesystem;
    environment_.set("XDG_RUNTIME_DIR", folder_.string());
    const auto values = VVHostClientConfig::defaults();
    EXPECT_EQ(values.tempDir, (folder_ / "velmo").string());
    const VVHostClientConfig config(values);
    EXPECT_EQ(config.tempDir(), values.tempDir);
    EXPECT_EQ(fs::status(values.tempDir).permissions(), fs::perms::owner_all);

    // A name taken first by a link, which someone else could point anywhere, isn't used.
    fs::create_directory_symlink(folder_ / "velmo", folder_ / "taken");
    VVHostClientConfig::Values taken = values;
    taken.tempDir = (folder_ / "taken").string();
    const std::string replacement = VVHostClientConfig(taken).tempDir();
    EXPECT_NE(replacement, taken.tempDir);
    EXPECT_EQ(fs::symlink_status(replacement).permissions(), fs::perms::owner_all);
    fs::remove_all(replacement);
}

TEST_F(VVHostTest, BindingMakesTheLibrarySeeTheHost) {
    environment_.set("VELMO_HOST_CONFIG",
                     config(R"({"logsURL": "http://127.0.0.1:9", "userEmail": "ann@example.com"})").string());
    EXPECT_TRUE(VVHost::bind().empty());
    EXPECT_TRUE(VVClientConfig::isBound());
    EXPECT_EQ(VVClientConfig::current().logsURL(), "http://127.0.0.1:9");
    ASSERT_NE(VVUserData::current(), nullptr);
    EXPECT_EQ(VVUserData::current()->userEmail(), "ann@example.com");
    EXPECT_EQ(VVUserData::current()->userID(), "");
}

} // namespace
} // namespace velmo
