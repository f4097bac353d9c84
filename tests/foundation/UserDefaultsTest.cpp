#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "ValuePrinting.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/UserDefaults.h"

using namespace velmo;
namespace fs = std::filesystem;

namespace {
class UserDefaultsFixture : public ::testing::Test {
protected:
    void SetUp() override { dir_ = Files::makeTemporaryDirectory("velmo-defaults"); }
    void TearDown() override { fs::remove_all(dir_); }
    fs::path file() const { return dir_ / "defaults.json"; }
    fs::path dir_;
};
} // namespace

TEST_F(UserDefaultsFixture, ValuesSurviveANewStore) {
    UserDefaults defaults(file());
    EXPECT_TRUE(defaults.objectForKey("missing").isNil());
    ASSERT_TRUE(defaults.setObject(Value(Dictionary{{"fps", Value(30)}, {"on", Value(true)}}), "settings"));
    ASSERT_TRUE(defaults.setObject(Value("x"), "other"));
    UserDefaults again(file());
    EXPECT_EQ(again.objectForKey("settings"), Json::parse(R"({"fps":30,"on":true})"));
    ASSERT_TRUE(again.removeObjectForKey("other"));
    EXPECT_TRUE(defaults.objectForKey("other").isNil()) << "a store sees the other's writes";
    EXPECT_FALSE(defaults.setObject(Value(std::numeric_limits<double>::infinity()), "bad"));
    EXPECT_EQ(defaults.objectForKey("settings").dictionary().get("fps"), Value(30))
        << "a failed write changes nothing";
}

TEST_F(UserDefaultsFixture, ConcurrentWritersOfTwoProcessesLoseNothing) {
    constexpr int kKeys = 40;
    const pid_t child = ::fork();
    if (child == 0) {
        UserDefaults mine(file());
        bool ok = true;
        for (int i = 0; i < kKeys; ++i)
            ok = mine.setObject(Value(i), "child" + std::to_string(i)) && ok;
        ::_exit(ok ? 0 : 1);
    }
    UserDefaults mine(file());
    for (int i = 0; i < kKeys; ++i)
        EXPECT_TRUE(mine.setObject(Value(i), "parent" + std::to_string(i)));
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    const auto text = Files::read(file());
    ASSERT_TRUE(text);
    const Dictionary all = Json::parse(*text).dictionary();
    EXPECT_EQ(all.size(), 2u * kKeys);
    for (int i = 0; i < kKeys; ++i) {
        EXPECT_EQ(all.get("child" + std::to_string(i)), Value(i));
        EXPECT_EQ(all.get("parent" + std::to_string(i)), Value(i));
    }
}

TEST_F(UserDefaultsFixture, CorruptFileReadsEmptyIsReportedOnceAndKept) {
    ASSERT_TRUE(Files::writeAtomically(file(), "{\"half\": "));
    std::vector<std::string> lines;
    auto previous = SystemLog::setSink([&](std::string_view line) { lines.emplace_back(line); });
    UserDefaults defaults(file());
    EXPECT_TRUE(defaults.objectForKey("half").isNil());
    EXPECT_TRUE(defaults.objectForKey("other").isNil());
    SystemLog::setSink(previous);
    EXPECT_EQ(lines.size(), 1u);
    EXPECT_EQ(Files::read(file()), "{\"half\": ") << "not deleted";

    SystemLog::setSink([](std::string_view) {});
    ASSERT_TRUE(defaults.setObject(Value(1), "fresh"));
    SystemLog::setSink(previous);
    EXPECT_EQ(Files::read(file().string() + ".corrupt"), "{\"half\": ") << "kept aside before the rewrite";
    EXPECT_EQ(defaults.objectForKey("fresh"), Value(1));
}
