#include <cstdlib>
#include <filesystem>
#include <string>
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
        for (const auto& name : names_)
            ::unsetenv(name.c_str());
    }
    void set(const std::string& name, const std::string& value) {
        names_.push_back(name);
        ::setenv(name.c_str(), value.c_str(), 1);
    }

private:
    std::vector<std::string> names_;
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
    const auto defaults = VVHostClientConfig::defaults();
    EXPECT_EQ(settings.config.logsURL, "");
    EXPECT_EQ(settings.config.clientID, "from-env");
    EXPECT_EQ(settings.config.clientName, "Studio");
    EXPECT_EQ(settings.userID, "u-1");
    EXPECT_EQ(settings.userEmail, "");
    EXPECT_EQ(settings.config.keyChainServiceName, "Velmo-Sketch-Plugin");
    EXPECT_EQ(settings.config.clientVersion, defaults.clientVersion);
    EXPECT_FALSE(defaults.clientVersion.empty());
    EXPECT_FALSE(defaults.hostVersion.empty());
    EXPECT_EQ(defaults.logsURL, ""); // nothing is sent until a host asks for it
}

TEST_F(VVHostTest, BadFilesAreReportedAndSkipped) {
    struct Case {
        const char* name;
        const char* text;
        std::vector<std::string> warningParts;
        std::string clientName;
    };
    const Case cases[] = {
        {"malformed", R"({"clientName": "A")", {"malformed JSON"}, "velmo"},
        {"not an object", R"(["clientName"])", {"expected a JSON object"}, "velmo"},
        {"bad keys",
         R"({"clientName": "A", "logsURL": 3, "colour": "red"})",
         {"\"logsURL\" must be a string", "unknown key \"colour\""},
         "A"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<std::string> warnings;
        const auto settings = VVHost::load(config(c.text), warnings);
        ASSERT_EQ(warnings.size(), c.warningParts.size());
        for (std::size_t i = 0; i < warnings.size(); ++i) {
            EXPECT_NE(warnings[i].find(c.warningParts[i]), std::string::npos) << warnings[i];
            EXPECT_NE(warnings[i].find("host.json"), std::string::npos) << warnings[i];
        }
        EXPECT_EQ(settings.config.clientName, c.clientName);
    }
    std::vector<std::string> warnings;
    VVHost::load(folder_ / "missing.json", warnings);
    EXPECT_TRUE(warnings.empty()); // no file is no problem
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
