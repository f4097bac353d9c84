#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "velmo/foundation/Crypto.h"
#include "velmo/foundation/Files.h"
#include "velmo/runtime/VPSystemInfo.h"

namespace velmo {
namespace {

class VPSystemInfoTest : public testing::Test {
protected:
    void SetUp() override { folder_ = Files::makeTemporaryDirectory("velmo-sysinfo"); }
    void TearDown() override { std::filesystem::remove_all(folder_); }
    std::filesystem::path file(const std::string& name, const std::string& text) {
        const auto path = folder_ / name;
        EXPECT_TRUE(Files::writeAtomically(path, text));
        return path;
    }
    std::filesystem::path folder_;
};

TEST_F(VPSystemInfoTest, SystemVersionComesFromOsRelease) {
    struct Case {
        const char* text;
        const char* version;
    };
    const Case cases[] = {
        {"# a comment\n\n  VERSION_ID = \"1\\\"2\"  \n", "1\"2"},
        {"VERSION_ID='3.18'\n", "3.18"},
        {"VERSION_ID=\"\"\nBUILD_ID=rolling\n", "rolling"}, // no version: the build stands in
        {"VERSION_ID=40\nBUILD_ID=rolling\n", "40"},
        {"NAME=Nothing\n", ""},
    };
    int i = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(VPSystemInfo::systemVersion(file("os-release-" + std::to_string(i++), c.text)), c.version);
    }
    EXPECT_EQ(VPSystemInfo::systemVersion(folder_ / "missing"), "");
}

TEST_F(VPSystemInfoTest, MachineIdentifierIsStableAndNeverTheRawId) {
    const std::string raw = "0123456789abcdef0123456789abcdef";
    const std::string id = VPSystemInfo::machineIdentifier(file("a", raw + "\n"));
    EXPECT_EQ(id, VPSystemInfo::machineIdentifier(file("b", raw)));
    EXPECT_EQ(id.size(), 64u);
    EXPECT_EQ(id.find(raw), std::string::npos);
    EXPECT_NE(id, Crypto::hex(Crypto::sha256(raw))); // ours alone, not the id's plain digest
    EXPECT_NE(id, VPSystemInfo::machineIdentifier(file("c", "fedcba9876543210fedcba9876543210\n")));

    EXPECT_EQ(VPSystemInfo::machineIdentifier(file("empty", "\n")), "");
    EXPECT_EQ(VPSystemInfo::machineIdentifier(file("first-boot", "uninitialized\n")), "");
    EXPECT_EQ(VPSystemInfo::machineIdentifier(folder_ / "missing"), "");
}

} // namespace
} // namespace velmo
