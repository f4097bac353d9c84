// Every seed and every input the fuzzers once failed on, through its harness, in the ordinary
// build: the failures found stay fixed, and the seeds stay meaningful as the library changes.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FuzzTargets.h"

namespace velmo::fuzz {

// Test names say which harness, not the bytes of its entry.
void PrintTo(const FuzzTarget& target, std::ostream* out) {
    *out << target.name;
}

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsOf(std::string_view name) {
    std::vector<fs::path> inputs;
    for (const char* kind : {"corpus", "regressions"}) {
        const fs::path folder = fs::path(VELMO_FUZZ_DATA_DIR) / kind / name;
        if (!fs::is_directory(folder)) continue;
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.is_regular_file()) inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

class FuzzReplay : public testing::TestWithParam<FuzzTarget> {
protected:
    static void SetUpTestSuite() { prepareFuzzProcess(); }
};

TEST_P(FuzzReplay, EverySeedAndFoundFailurePassesItsChecks) {
    const FuzzTarget target = GetParam();
    const std::vector<fs::path> inputs = inputsOf(target.name);
    ASSERT_FALSE(inputs.empty()) << "no seeds for " << target.name;
    for (const fs::path& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), {});
        EXPECT_TRUE(target.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()))
            << input.filename();
    }
}

INSTANTIATE_TEST_SUITE_P(Harnesses, FuzzReplay, testing::ValuesIn(kFuzzTargets),
                         [](const testing::TestParamInfo<FuzzTarget>& info) {
                             return std::string(info.param.name);
                         });

} // namespace
} // namespace velmo::fuzz
