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
