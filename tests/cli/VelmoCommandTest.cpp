#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"

using namespace velmo;

namespace {

struct CommandRun {
    int exitCode = -1;
    std::string output; // standard output and error together
};

CommandRun runVelmo(const std::string& arguments) {
    CommandRun run;
    const std::string command = std::string(VELMO_CLI_PATH) + " " + arguments + " 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe) return run;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.output.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

class VelmoCommand : public ::testing::Test {
protected:
    void SetUp() override { dir_ = Files::makeTemporaryDirectory("velmo-cli"); }
    void TearDown() override { std::filesystem::remove_all(dir_); }
    std::string file(const std::string& name, const std::string& text) {
        const auto path = dir_ / name;
        Files::writeAtomically(path, text);
        return path.string();
    }
    std::filesystem::path dir_;
};

} // namespace

TEST_F(VelmoCommand, JsonReEncodesAndFailsClearly) {
    const std::string example = std::string(VELMO_EXAMPLES_DIR) + "/document.json";
    const struct {
        std::string arguments;
        int exitCode;
        std::string says;
    } cases[] = {
        {"json " + example, 0, "\"model_class\": \"VDModelTheme\""},
        {"json " + file("missing-dir/none.json", "") + "x", 2, "cannot read"},
        {"json " + file("bad.json", "{\"model_class\": "), 2, "malformed JSON at offset 16"},
        {"json " + file("wrong.json", "{\"model_class\": \"Nope\"}"), 1, "not a known model class"},
        {"json " + file("list.json", "[1, 2]"), 1, "not a known model class"},
        {"json", 2, "FILE is required"},
        {"frobnicate", 2, ""},
    };
    for (const auto& c : cases) {
        const CommandRun run = runVelmo(c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.output;
        EXPECT_NE(run.output.find(c.says), std::string::npos) << c.arguments << "\n" << run.output;
    }
}

TEST_F(VelmoCommand, CompactJsonIsOneLineThatReadsBack) {
    const CommandRun run = runVelmo("json --compact " + std::string(VELMO_EXAMPLES_DIR) + "/document.json");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.output.find('\n'), run.output.size() - 1);
    const Value back = Json::parse(run.output);
    EXPECT_EQ(back.dictionary().get("name"), Value("Example Theme"));
    EXPECT_FALSE(back.dictionary().get("navBar").dictionary().contains("unknownKey"));
}

TEST_F(VelmoCommand, TreePrintsEachViewWithItsPath) {
    const CommandRun run = runVelmo("tree " + std::string(VELMO_EXAMPLES_DIR) + "/view-tree.json");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("    VDModelView submit \"Submit\" (16, 220, 343x48) path=\"form;submit\""),
              std::string::npos)
        << run.output;
    const CommandRun json = runVelmo("tree --json " + std::string(VELMO_EXAMPLES_DIR) + "/view-tree.json");
    ASSERT_EQ(json.exitCode, 0);
    EXPECT_EQ(Json::parse(json.output).array()[0].dictionary().get("subviews").array().size(), 2u);
    EXPECT_EQ(runVelmo("tree " + std::string(VELMO_EXAMPLES_DIR) + "/document.json").exitCode, 1)
        << "a document without views";
}

TEST_F(VelmoCommand, ZipAndUnzipRoundTripAndReportFailures) {
    const std::string source = file("notes.txt", "hello");
    const std::string archive = (dir_ / "out.zip").string();
    EXPECT_EQ(runVelmo("zip " + archive + " " + source + " --password pw").exitCode, 0);
    const CommandRun wrong = runVelmo("unzip " + archive + " " + (dir_ / "x").string() + " --password nope");
    EXPECT_EQ(wrong.exitCode, 1) << wrong.output;
    EXPECT_EQ(runVelmo("unzip " + archive + " " + (dir_ / "y").string() + " --password pw").exitCode, 0);
    EXPECT_EQ(Files::read(dir_ / "y" / "notes.txt"), "hello");
    EXPECT_EQ(runVelmo("zip " + archive).exitCode, 2) << "no paths is bad usage";
}
