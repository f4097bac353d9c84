#include <sys/stat.h>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/foundation/Files.h"

using namespace velmo;
namespace fs = std::filesystem;

TEST(Files, AtomicWritesNeverLeaveHalfAFile) {
    const fs::path dir = Files::makeTemporaryDirectory();
    const fs::path target = dir / "sub" / "settings.json";
    std::vector<std::thread> writers;
    for (int w = 0; w < 4; ++w) {
        writers.emplace_back([&, w] {
            const std::string body(100'000, static_cast<char>('a' + w));
            for (int i = 0; i < 20; ++i)
                EXPECT_TRUE(Files::writeAtomically(target, body, 0600));
        });
    }
    for (int i = 0; i < 200; ++i) {
        if (auto text = Files::read(target)) {
            ASSERT_EQ(text->size(), 100'000u);
            EXPECT_EQ(text->find_first_not_of(text->front()), std::string::npos) << "one writer's bytes only";
        }
    }
    for (auto& t : writers)
        t.join();
    struct stat st {};
    ASSERT_EQ(::stat(target.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir / "sub"))
        ++files;
    EXPECT_EQ(files, 1u) << "no temporary file is left behind";
    EXPECT_FALSE(Files::read(dir / "missing"));
    fs::remove_all(dir);
}

TEST(Files, VelmoHomeFollowsTheEnvironment) {
    const char* saved = std::getenv("VELMO_HOME");
    ::setenv("VELMO_HOME", "/tmp/velmo-home-test", 1);
    EXPECT_EQ(Files::velmoHome(), fs::path("/tmp/velmo-home-test"));
    ::unsetenv("VELMO_HOME");
    ::setenv("XDG_CONFIG_HOME", "/tmp/xdg", 1);
    EXPECT_EQ(Files::velmoHome(), fs::path("/tmp/xdg/velmo"));
    ::unsetenv("XDG_CONFIG_HOME");
    if (saved) ::setenv("VELMO_HOME", saved, 1);
}

TEST(Files, ReadingAndWritingSayWhyTheyFailed) {
    const fs::path dir = Files::makeTemporaryDirectory();
    std::error_code error;
    EXPECT_FALSE(Files::read(dir, error));
    EXPECT_EQ(error, std::errc::is_a_directory) << "a directory has no bytes, not a huge size";
    EXPECT_FALSE(Files::read(dir / "missing", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    // Files the system makes up as they are read say they are empty.
    const auto status = Files::read("/proc/self/status", error);
    ASSERT_TRUE(status) << error.message();
    EXPECT_NE(status->find("Name:"), std::string::npos);
    EXPECT_FALSE(error);

    ASSERT_TRUE(Files::writeAtomically(dir / "file", "x"));
    EXPECT_FALSE(Files::writeAtomically(dir, "x", 0644, error));
    EXPECT_EQ(error, std::errc::is_a_directory);
    EXPECT_FALSE(Files::writeAtomically(dir / "file" / "below", "x", 0644, error));
    EXPECT_EQ(error, std::errc::not_a_directory);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir))
        ++files;
    EXPECT_EQ(files, 1u) << "no temporary file is left behind";
    fs::remove_all(dir);
}
