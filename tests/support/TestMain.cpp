// The main of every test executable: each run gets its own VELMO_HOME, so tests never touch a
// user's settings, and the folder goes when the run ends.
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "velmo/foundation/Files.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const std::filesystem::path home = velmo::Files::makeTemporaryDirectory("velmo-test-home");
    ::setenv("VELMO_HOME", home.c_str(), 1);
    const int result = RUN_ALL_TESTS();
    std::error_code ec;
    std::filesystem::remove_all(home, ec);
    return result;
}
