#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "LocalHttpServer.h"
#include "ShellCommand.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"

using namespace velmo;
namespace fs = std::filesystem;

namespace {

using CommandRun =
    velmo::test::ShellResult; // output: what the redirection sends to the pipe, both streams by default

/// Runs the command through the shell: `redirect` says where its streams go ("2>&1 >/dev/full":
/// standard error to the pipe, standard output to a full device), `environment` is put before it.
CommandRun runVelmo(const std::string& arguments, const std::string& redirect = "2>&1",
                    const std::string& environment = "") {
    return velmo::test::runShell(environment + " " + std::string(VELMO_CLI_PATH) + " " + arguments + " " +
                                 redirect);
}

const std::string kExamples = VELMO_EXAMPLES_DIR;

/// Case of a table: the command line, the exit code and a text the output must hold.
struct Case {
    std::string arguments;
    int exitCode;
    std::string says;
    std::string redirect = "2>&1";
};

class VelmoCommand : public ::testing::Test {
protected:
    void SetUp() override { dir_ = Files::makeTemporaryDirectory("velmo-cli"); }
    void TearDown() override { fs::remove_all(dir_); }
    std::string file(const std::string& name, const std::string& text) {
        const auto path = dir_ / name;
        Files::writeAtomically(path, text);
        return path.string();
    }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }
    void expectAll(const std::vector<Case>& cases) {
        for (const auto& c : cases) {
            const CommandRun run = runVelmo(c.arguments, c.redirect);
            EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.output;
            EXPECT_NE(run.output.find(c.says), std::string::npos) << c.arguments << "\n" << run.output;
        }
    }
    /// Names in the folder, to see that nothing half-written was left.
    std::vector<std::string> names(const std::string& folder) const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(dir_ / folder))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }
    fs::path dir_;
};

} // namespace

TEST_F(VelmoCommand, DocumentsAreReadFromAnyInputOrRefusedWithTheReason) {
    const std::string example = kExamples + "/document.json";
    expectAll({
        {"json " + example, 0, "\"model_class\": \"VDModelApp\""},
        {"json - < " + example, 0, "\"model_class\": \"VDModelApp\""},
        {"tree - < " + kExamples + "/view-tree.json", 0, "path=\"form;submit\""},
        {"json " + path("none.json"), 2, "cannot read " + path("none.json") + ": No such file or directory"},
        {"json " + dir_.string(), 2, "cannot read " + dir_.string() + ": Is a directory"},
        {"tree " + dir_.string(), 2, "cannot read " + dir_.string() + ": Is a directory"},
        {"json " + file("empty.json", ""), 2, "malformed JSON at offset 0"},
        {"json - < " + file("bad.json", "{\"model_class\": "), 2,
         "standard input: malformed JSON at offset 16"},
        {"json " + file("wrong.json", "{\"model_class\": \"Nope\"}"), 1,
         "not a known model class (\"Nope\")"},
        {"json " + file("list.json", "[1, 2]"), 1, "not a known model class"},
        {"info " + file("master.json",
                        R"({"model_class": "VDModelApp", "components": [{"model_class": "VDModelView",
            "componentMasterData": {"model_class": "VDModelComponentMasterData"}}]})"),
         1, "the document can't be decoded"},
        {"json", 2, "FILE is required"},
        {"frobnicate", 2,
         "unknown command 'frobnicate'; the commands are json, tree, info, zip, unzip, config, theme, login, "
         "logout, teams, projects, repair, serve"},
        {"", 2, "no command given"},
    });
    if (::geteuid() != 0) {
        const std::string secret = file("secret.json", "{}");
        fs::permissions(secret, fs::perms::none);
        expectAll({{"json " + secret, 2, "cannot read " + secret + ": Permission denied"}});
    }
}

TEST_F(VelmoCommand, OutputThatCannotBeWrittenFailsTheCommand) {
    const std::string example = kExamples + "/document.json";
    const std::string archive = path("a.zip");
    ASSERT_EQ(runVelmo("zip " + archive + " " + example).exitCode, 0);
    const std::string full = "2>&1 >/dev/full";
    expectAll({
        {"json " + example, 1, "cannot write the output: No space left on device", full},
        {"tree --json " + kExamples + "/view-tree.json", 1, "No space left on device", full},
        {"zip " + path("b.zip") + " " + example, 1, "No space left on device", full},
        {"unzip " + archive + " " + path("out"), 1, "No space left on device", full},
        {"--help", 1, "No space left on device", full},
        {"json " + example + " -o " + dir_.string(), 1, "cannot write " + dir_.string() + ": Is a directory"},
        {"json " + example + " -o " + archive + "/x.json", 1, "Not a directory"},
        {"repair " + example + " -o " + path("missing") + "/x.json", 1, "No such file or directory"},
        {"info " + example, 1, "No space left on device", full},
        {"repair " + example, 1, "No space left on device", full},
    });
    const CommandRun written = runVelmo("json --compact " + example + " -o " + path("copy.json"));
    EXPECT_EQ(written.exitCode, 0) << written.output;
    EXPECT_EQ(Json::parse(*Files::read(path("copy.json"))).dictionary().get("name"), Value("Sign-up flow"));
    // The archive was made; only its summary was lost.
    EXPECT_EQ(names(""), (std::vector<std::string>{"a.zip", "b.zip", "copy.json", "out"}))
        << "no temporary file left";
}

TEST_F(VelmoCommand, LibraryLogShowsOnlyWhenAskedAndIsCut) {
    const std::string wrong =
        file("wrong.json", "{\"model_class\": \"Nope\", \"x\": \"" + std::string(200'000, 'x') + "\"}");
    const std::string line = "velmo: " + wrong + ": the top level is not a known model class (\"Nope\")\n";
    EXPECT_EQ(runVelmo("json " + wrong).output, line);
    EXPECT_EQ(runVelmo("json -q " + wrong).output, line);
    for (const auto& [arguments, environment] :
         {std::pair{"--verbose json " + wrong, ""}, std::pair{"json " + wrong, "VELMO_LOG=debug"}}) {
        const CommandRun run = runVelmo(arguments, "2>&1", environment);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.output.find("Wrong model class in dictionary: "), std::string::npos) << arguments;
        EXPECT_NE(run.output.find(" [... cut, "), std::string::npos) << arguments;
        EXPECT_LT(run.output.size(), 2000u) << arguments;
        EXPECT_TRUE(run.output.ends_with(line)) << "the command's own line, once";
    }
}

TEST_F(VelmoCommand, HelpAndVersionPromiseOnlyWhatIsThere) {
    const CommandRun help = runVelmo("--help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("Usage: velmo [OPTIONS] SUBCOMMAND"), std::string::npos) << help.output;
    EXPECT_NE(help.output.find("  repair "), std::string::npos) << help.output;
    EXPECT_NE(help.output.find("  serve "), std::string::npos) << help.output;
    const CommandRun unzipHelp = runVelmo("unzip --help");
    EXPECT_NE(unzipHelp.output.find("(default 4G)"), std::string::npos) << unzipHelp.output;
    EXPECT_NE(unzipHelp.output.find("VELMO_ZIP_PASSWORD"), std::string::npos);

    // The host's settings are read when there is work, and only then warned about.
    const std::string badHost = "VELMO_HOST_CONFIG=" + file("host.json", "{oops");
    const CommandRun version = runVelmo("--version", "2>&1", badHost);
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.output.starts_with("velmo ") &&
                version.output.find('\n') == version.output.size() - 1)
        << version.output;
    const std::string example = kExamples + "/document.json";
    EXPECT_NE(runVelmo("json " + example, "2>&1 >/dev/null", badHost).output.find("warning: "),
              std::string::npos);
    EXPECT_EQ(runVelmo("json -q " + example, "2>&1 >/dev/null", badHost).output, "");
}

TEST_F(VelmoCommand, ZipWritesWholeArchivesOnlyAndCountsEntries) {
    file("site/a/one.txt", "1");
    file("site/a/two.txt", "2");
    file("site/three.txt", "3");
    fs::create_directories(dir_ / "site" / "empty");
    const std::string site = path("site");
    const std::string archive = path("out/site.zip");
    fs::create_directories(dir_ / "out");
    expectAll({
        // Three files and an empty folder; "a" holds files, so it has no entry of its own.
        {"zip " + archive + " " + site, 0, archive + ": 4 entries zipped"},
        {"zip " + path("out/one.zip") + " " + site + "/three.txt", 0, ": 1 entry zipped"},
        {"zip " + path("out/x.zip") + " " + path("nothing"), 2,
         "cannot read " + path("nothing") + ": No such"},
        {"zip " + path("out") + " " + site + "/three.txt", 1,
         "cannot write " + path("out") + ": Is a directory"},
        {"zip " + path("missing/x.zip") + " " + site + "/three.txt", 1, "No such file or directory"},
        {"zip " + path("site/in.zip") + " " + site, 2, "inside " + site + ", the directory being zipped"},
        {"zip - " + site, 2, "standard output (-) can't take it"},
        {"zip -q " + path("out/two.zip") + " " + site + "/three.txt", 0, ""},
    });
    EXPECT_EQ(names("out"), (std::vector<std::string>{"one.zip", "site.zip", "two.zip"}))
        << "no temporary file left";
    EXPECT_EQ(runVelmo("zip -q " + path("out/three.zip") + " " + site + "/three.txt").output, "");
    EXPECT_EQ(runVelmo("zip here.zip .", "2>&1", "cd " + site + " &&").exitCode, 2) << "relative paths alike";
}

TEST_F(VelmoCommand, UnzipCountsWhatLandsAndKeepsToItsLimits) {
    file("src/a/b.txt", "b");
    file("src/c.txt", "c");
    const std::string archive = path("two.zip");
    ASSERT_EQ(runVelmo("zip " + archive + " " + path("src")).exitCode, 0);
    file("blocked/a", "a file where the archive has a folder");
    file("zeros/zeros.bin", std::string(3 << 20, '\0'));
    const std::string bomb = path("zeros.zip");
    ASSERT_EQ(runVelmo("zip " + bomb + " " + path("zeros")).exitCode, 0);
    expectAll({
        {"unzip " + archive + " " + path("fine"), 0,
         archive + " -> " + path("fine") + ": 2 entries unzipped"},
        {"unzip " + archive + " " + path("blocked"), 1,
         "cannot write " + path("blocked") + "/a/b.txt: Not a directory"},
        {"unzip -q " + archive + " " + path("blocked"), 1, ": 1 entry unzipped, 1 failed"},
        {"unzip " + archive + " " + path("fine") + " --no-overwrite", 0,
         "0 entries unzipped, 2 kept as they were"},
        {"unzip " + archive + " " + path("src/c.txt"), 1,
         "cannot unzip into " + path("src/c.txt") + ": Not a directory"},
        {"unzip " + path("src") + " " + path("x"), 2, "cannot read " + path("src") + ": Is a directory"},
        {"unzip " + path("src/c.txt") + " " + path("x"), 2,
         "cannot read " + path("src/c.txt") + ": Not a zip archive"},
        {"unzip " + bomb + " " + path("x") + " --max-size 1M", 1, "the limits are 1M in all, 2G per entry"},
        {"unzip " + bomb + " " + path("x") + " --max-entry-size 2m", 1, "zeros.bin"},
        {"unzip " + bomb + " " + path("x") + " --max-size 12Q", 2, "--max-size: not a size"},
        {"unzip " + bomb + " " + path("x") + " --no-limits --max-size 1G", 2, "--no-limits leaves no limit"},
        {"unzip " + bomb + " " + path("big") + " --max-size 3M", 0, "1 entry unzipped"},
    });
    EXPECT_FALSE(fs::exists(dir_ / "x"))
        << "nothing unpacked past a limit, nor for an archive that doesn't open";
    EXPECT_EQ(fs::file_size(dir_ / "big" / "zeros.bin"), 3u << 20);
    if (::geteuid() != 0) {
        fs::create_directories(dir_ / "locked");
        fs::permissions(dir_ / "locked", fs::perms::owner_read | fs::perms::owner_exec);
        expectAll({{"unzip " + archive + " " + path("locked"), 1,
                    "cannot unzip into " + path("locked") + ": Permission denied"}});
    }
}

TEST_F(VelmoCommand, UnzipNamesEachFailedEntryAndUnpacksNestedArchivesAtAnyDepth) {
    // Twelve entries whose folders are files already, then one that lands.
    for (char folder = 'a'; folder < 'a' + 12; ++folder) {
        file(std::string("many/") + folder + "/f.txt", "f");
        file(std::string("blocked/") + folder, "in the way");
    }
    file("many/ok.txt", "ok");
    const std::string many = path("many.zip");
    ASSERT_EQ(runVelmo("zip " + many + " " + path("many")).exitCode, 0);
    // Noise doesn't deflate: its bytes are stored as they are, where one can be changed.
    std::string noise(100'000, '\0');
    std::mt19937 random(11);
    for (auto& c : noise)
        c = static_cast<char>(random());
    const std::string damaged = path("damaged.zip");
    ASSERT_EQ(runVelmo("zip " + damaged + " " + file("bad.bin", noise)).exitCode, 0);
    std::string bytes = *Files::read(damaged);
    const auto at = bytes.find(noise.substr(50'000, 64));
    ASSERT_NE(at, std::string::npos);
    bytes[at] = static_cast<char>(bytes[at] ^ 1);
    Files::writeAtomically(damaged, bytes);
    // An archive in an archive in an archive.
    file("in/x.txt", "x");
    fs::create_directories(dir_ / "mid");
    fs::create_directories(dir_ / "top");
    ASSERT_EQ(runVelmo("zip " + path("mid/in.zip") + " " + path("in")).exitCode, 0);
    ASSERT_EQ(runVelmo("zip " + path("top/mid.zip") + " " + path("mid")).exitCode, 0);
    ASSERT_EQ(runVelmo("zip " + path("outer.zip") + " " + path("top")).exitCode, 0);

    const CommandRun blocked = runVelmo("unzip " + many + " " + path("blocked"));
    EXPECT_EQ(blocked.exitCode, 1);
    EXPECT_NE(blocked.output.find("cannot write " + path("blocked") + "/j/f.txt: Not a directory"),
              std::string::npos)
        << blocked.output;
    EXPECT_EQ(blocked.output.find("/k/f.txt"), std::string::npos) << "ten are named";
    EXPECT_NE(blocked.output.find("... and 2 more\n"), std::string::npos) << blocked.output;
    EXPECT_NE(blocked.output.find(": 1 entry unzipped, 12 failed\n"), std::string::npos) << blocked.output;
    expectAll({
        {"unzip " + damaged + " " + path("damaged"), 1, "entry \"bad.bin\""},
        {"unzip -q " + damaged + " " + path("damaged"), 1, ": 0 entries unzipped, 1 failed"},
        {"unzip " + path("outer.zip") + " " + path("deep") + " --nested -1", 0, "1 entry unzipped"},
        {"unzip " + path("outer.zip") + " " + path("one") + " --nested 1", 0, "1 entry unzipped"},
        {"unzip --help", 0, "(negative: any depth"},
    });
    EXPECT_EQ(names("damaged"), std::vector<std::string>{}) << "nothing half-written";
    EXPECT_EQ(names("deep"), std::vector<std::string>{"x.txt"});
    EXPECT_EQ(names("one"), std::vector<std::string>{"in.zip"});
}

TEST_F(VelmoCommand, PasswordsComeFromStandardInputOrTheEnvironment) {
    const std::string source = file("notes.txt", "hello");
    const std::string archive = path("secret.zip");
    EXPECT_EQ(
        runVelmo("zip " + archive + " " + source + " --password -", "2>&1", "printf 'pw\\n' |").exitCode, 0);
    expectAll({
        {"unzip " + archive + " " + path("x"), 1, "the archive is encrypted: give its password"},
        {"unzip " + archive + " " + path("x") + " --password nope", 1, "Wrong password"},
        {"unzip " + archive + " " + path("x") + " --password - < /dev/null", 2,
         "standard input holds no password"},
    });
    EXPECT_EQ(runVelmo("unzip " + archive + " " + path("y"), "2>&1", "VELMO_ZIP_PASSWORD=pw").exitCode, 0);
    EXPECT_EQ(Files::read(dir_ / "y" / "notes.txt"), "hello");
    EXPECT_EQ(
        runVelmo("unzip " + archive + " " + path("z") + " --password -", "2>&1", "printf 'pw' |").exitCode,
        0);
    EXPECT_EQ(Files::read(dir_ / "z" / "notes.txt"), "hello");
}

TEST_F(VelmoCommand, CompactJsonIsOneLineThatReadsBack) {
    const std::string theme = file("theme.json", R"({"model_class": "VDModelTheme", "name": "Example Theme",
        "navBar": {"model_class": "VDModelBar", "titleFont": "Menlo", "unknownKey": "dropped on decoding"}})");
    const CommandRun run = runVelmo("json --compact " + theme);
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.output.find('\n'), run.output.size() - 1);
    const Value back = Json::parse(run.output);
    EXPECT_EQ(back.dictionary().get("name"), Value("Example Theme"));
    EXPECT_EQ(back.dictionary().get("navBar").dictionary().get("titleFont"), Value("Menlo"));
    EXPECT_FALSE(back.dictionary().get("navBar").dictionary().contains("unknownKey"));
}

TEST_F(VelmoCommand, TreePrintsEachViewWithItsPath) {
    const CommandRun run = runVelmo("tree " + kExamples + "/view-tree.json");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("    VDModelView submit \"Submit\" (16, 220, 343x48) path=\"form;submit\""),
              std::string::npos)
        << run.output;
    for (const char* line : {
             "  state \"compact\" (2 paths)",
             "  action VDModelActionScriptAnimation \"Transition (Idle -> Compact)\" on click(this;header) "
             "-> state "
             "idle -> compact (2 timelines, 2 keyframes, duration 0.3)",
             "  action VDModelActionPresentScreen \"help\" on trigger Tap -> screen help",
             "      action VDModelSubmitAction \"send\" on click(this) -> submit -> screen thanks / -",
         }) {
        EXPECT_NE(run.output.find(line), std::string::npos) << line << "\n" << run.output;
    }
    const CommandRun json = runVelmo("tree --json " + kExamples + "/view-tree.json");
    ASSERT_EQ(json.exitCode, 0);
    const Dictionary root = Json::parse(json.output).array()[0].dictionary();
    EXPECT_EQ(root.get("subviews").array().size(), 2u);
    EXPECT_EQ(root.get("states").array()[1], Json::parse(R"({"name": "compact", "paths": 2})"));
    const Dictionary transition = root.get("actions").array()[0].dictionary();
    EXPECT_EQ(transition.get("events"), Json::parse(R"j(["click(this;header)"])j"));
    EXPECT_EQ(transition.get("keyframes"), Value(2));
    const std::string bare =
        file("bare.json", R"({"model_class": "VDModelApp", "screens": [], "views": []})");
    EXPECT_EQ(runVelmo("tree " + bare).exitCode, 1) << "a document without views";
}

TEST_F(VelmoCommand, ConfigMergesTheRemoteDocumentAndKeepsTheUsersSettings) {
    test::LocalHttpServer server;
    server.server().set_keep_alive_max_count(1);
    server.server().Get(
        "/sketchplugin/plugin_config.json", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(R"({"features": {"fast_preview_export": false}})", "application/octet-stream");
        });
    server.start();
    fs::create_directories(dir_ / "home");
    Files::writeAtomically(dir_ / "home" / "host.json",
                           R"({"remoteConfigBaseURL": ")" + server.baseURL() + "\"}");
    const std::string home = "VELMO_HOME=" + path("home");
    const auto config = [&](const std::string& arguments, const std::string& environment = "") {
        const CommandRun run = runVelmo("config " + arguments, "2>&1", home + " " + environment);
        return std::pair{run, Json::tryParse(run.output)};
    };

    const auto [merged, mergedJson] = config("--json --refresh");
    ASSERT_EQ(merged.exitCode, 0) << merged.output;
    EXPECT_EQ(mergedJson.dictionary().keys(), (std::vector<std::string>{"config", "user"}));
    const Dictionary features =
        mergedJson.dictionary().get("config").dictionary().get("features").dictionary();
    EXPECT_EQ(features.get("fast_preview_export"), Value(false)) << "from the remote document";
    EXPECT_EQ(features.get("fast_preview"), Value(true)) << "from the local one";
    EXPECT_FALSE(mergedJson.dictionary()
                     .get("config")
                     .dictionary()
                     .get("available_code_optimizations")
                     .array()
                     .empty());

    for (const auto& [arguments, says] :
         {std::pair{R"(set enabledCodePrefValues '["flexbox_layout"]')",
                    R"(enabledCodePrefValues = ["flexbox_layout"])"},
          std::pair{"set lastCodePrefNotifID 42", R"(lastCodePrefNotifID = "42")"},
          std::pair{"set fastModelProcessingEnabled false", "fastModelProcessingEnabled = false"},
          std::pair{"unset fastModelProcessingEnabled", "fastModelProcessingEnabled removed"},
          std::pair{"unset fastModelProcessingEnabled", "fastModelProcessingEnabled was not set"}}) {
        const auto [run, json] = config(arguments);
        EXPECT_EQ(run.exitCode, 0) << arguments << "\n" << run.output;
        EXPECT_NE(run.output.find(says), std::string::npos) << arguments << "\n" << run.output;
    }
    const auto [local, localJson] = config("--json");
    EXPECT_EQ(localJson.dictionary().get("user"),
              Json::parse(R"({"enabledCodePrefValues": ["flexbox_layout"], "lastCodePrefNotifID": "42"})"));
    EXPECT_EQ(localJson.dictionary()
                  .get("config")
                  .dictionary()
                  .get("features")
                  .dictionary()
                  .get("fast_preview_export"),
              Value(true));

    const struct {
        std::string arguments, environment;
        int exitCode;
        std::string says;
    } failures[] = {
        {"set fastModelProcessingEnabled maybe", "", 2, "fastModelProcessingEnabled takes true or false"},
        {"set enabledCodePrefValues 3", "", 2, "takes a JSON array of strings"},
        {"--refresh", "VELMO_CONFIG_URL=", 2, "no remote configuration address"},
        {"--refresh", "VELMO_CONFIG_URL=http://127.0.0.1:1", 1, "was not applied"},
        {"set", "", 2, "KEY is required"},
    };
    for (const auto& f : failures) {
        const auto [run, json] = config(f.arguments, f.environment);
        EXPECT_EQ(run.exitCode, f.exitCode) << f.arguments << "\n" << run.output;
        EXPECT_NE(run.output.find(f.says), std::string::npos) << f.arguments << "\n" << run.output;
    }
    EXPECT_NE(
        config("--refresh", "VELMO_CONFIG_URL=http://127.0.0.1:1").first.output.find("fast_preview_export"),
        std::string::npos)
        << "the configuration in force is still printed";
}

TEST_F(VelmoCommand, ThemePrintsTheNamedColoursOfAnAppearance) {
    const CommandRun dark = runVelmo("theme --dark --json", "2>/dev/null");
    ASSERT_EQ(dark.exitCode, 0);
    const Dictionary colors = Json::parse(dark.output).dictionary();
    EXPECT_EQ(colors.size(), 48u);
    EXPECT_EQ(colors.get("panelBorder"),
              Json::parse(R"({"red": 0.2627450980392157, "green": 0.2627450980392157,
                                                         "blue": 0.2627450980392157, "alpha": 1})"));
    EXPECT_TRUE(colors.get("textPropertyBackground").isNull());
    EXPECT_EQ(colors.get("panelLabel").dictionary().get("alpha"), Value(1)) << "greys are given as RGB";

    // No session bus to be found: the environment decides.
    const std::string noBus = "DBUS_SESSION_BUS_ADDRESS= XDG_RUNTIME_DIR=";
    const struct {
        std::string arguments, environment;
        int exitCode;
        std::string says;
    } cases[] = {
        {"theme --bright", "", 0, "bright appearance (--bright)\n"},
        {"theme --bright", "", 0, "  hoverFillColor               #45c0ff alpha 0.3\n"},
        {"theme", noBus + " VELMO_APPEARANCE=dark", 0, "dark appearance (VELMO_APPEARANCE)\n"},
        {"theme", noBus + " VELMO_APPEARANCE=", 0, "bright appearance (no preference found)\n"},
        {"theme --dark --bright", "", 2, "--dark excludes --bright"},
    };
    for (const auto& c : cases) {
        const CommandRun run = runVelmo(c.arguments, "2>&1", c.environment);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.output;
        EXPECT_NE(run.output.find(c.says), std::string::npos) << c.arguments << "\n" << run.output;
    }
}

namespace {

// Two screens, states on a screen and on a view below it, a transition on the first screen, and
// "View_1" carried by a view of each screen.
const char* const kShop = R"({"model_class": "VDModelApp", "name": "Shop", "screens": [
  {"model_class": "VDModelScreen", "modelID": "screen_1", "variableID": "home", "viewName": "Home",
   "width": 390, "height": 844.5,
   "states": [{"model_class": "VDModelViewState", "name": "idle"},
              {"model_class": "VDModelViewState", "name": "open", "overrides": {"this;menu": {"x": 0}}}],
   "actions": [{"model_class": "VDModelActionScriptAnimation", "modelID": "Transition_1", "name": "open",
                "originStateName": "idle", "targetStateName": "open",
                "listeners": [{"model_class": "VDModelEventListener", "event": "click", "target": "this;menu"}],
                "timelines": [{"model_class": "VDModelAnimationTimeline", "target": "this;menu",
                               "animations": [{"model_class": "VDModelAnimation", "state": {"x": 0}}]}]}],
   "subviews": [{"model_class": "VDModelView", "modelID": "View_1", "variableID": "menu", "x": -200,
                 "states": [{"model_class": "VDModelViewState", "name": "folded"}],
                 "subviews": [{"model_class": "VDModelView", "modelID": "View_2", "variableID": "item"}]}]},
  {"model_class": "VDModelScreen", "modelID": "screen_2", "variableID": "cart", "viewName": "Cart",
   "subviews": [{"model_class": "VDModelView", "modelID": "View_1", "variableID": "total"}]}],
 "views": [{"model_class": "VDModelView", "modelID": "View_3"}],
 "components": [{"model_class": "VDModelView", "modelID": "View_4"}, {"model_class": "VDModelView", "modelID": "View_5"}]
})";

std::vector<std::string> keysOf(const Dictionary& d) {
    std::vector<std::string> keys;
    for (const auto& e : d)
        keys.push_back(e.key.str());
    return keys;
}

/// A document of an earlier version: a timeline component without a first state, change sets
/// joined with ".", an "animation" timeline whose default isn't its first state, a default that
/// names no state, and a child named as its parent, which relative paths reach.
const char* const kOldDocument = R"json({"model_class": "VDModelApp", "modelID": "app_1", "views": [],
 "screens": [
  {"model_class": "VDModelScreen", "modelID": "screen_1", "variableID": "home",
   "states": [{"model_class": "VDModelViewState", "name": "open",
               "overrides": {"this.card.card": {"alpha": 0.5}, "this.card": {"y": 10}}}],
   "actions": [{"model_class": "VDModelActionScriptAnimation", "modelID": "Transition_1", "name": "open",
                "originStateName": "closed", "targetStateName": "open",
                "listeners": [{"model_class": "VDModelEventListener", "modelID": "eventListener_1", "event": "click",
                               "target": "this.card.card"}],
                "timelines": [{"model_class": "VDModelAnimationTimeline", "modelID": "animationTimeline_1",
                               "target": "this;card;card",
                               "animations": [{"model_class": "VDModelAnimation", "modelID": "animation_1",
                                               "state": {"alpha": 0.5}}]}]}],
   "subviews": [
    {"model_class": "VDModelView", "modelID": "View_1", "variableID": "card",
     "subviews": [{"model_class": "VDModelView", "modelID": "View_2", "variableID": "card"}]},
    {"model_class": "VDModelView", "modelID": "View_3", "variableID": "spinner", "timelineType": "loop",
     "states": [{"model_class": "VDModelViewState", "name": "spun", "overrides": {"this.dot": {"rotation": 180}}}],
     "actions": [{"model_class": "VDModelActionScriptAnimation", "modelID": "Transition_2", "name": "spin",
                  "targetStateName": "spun",
                  "listeners": [{"model_class": "VDModelEventListener", "modelID": "eventListener_2",
                                 "event": "timer", "timerMS": 500}]}],
     "subviews": [{"model_class": "VDModelView", "modelID": "View_4", "variableID": "dot"}]},
    {"model_class": "VDModelView", "modelID": "View_5", "variableID": "badge", "timelineType": "animation",
     "defaultStateName": "big",
     "states": [{"model_class": "VDModelViewState", "name": "small"},
                {"model_class": "VDModelViewState", "name": "big"}]},
    {"model_class": "VDModelView", "modelID": "View_6", "variableID": "toggle", "timelineType": "toggle",
     "defaultStateName": "gone",
     "states": [{"model_class": "VDModelViewState", "name": "off"}, {"model_class": "VDModelViewState", "name": "on"}]}
   ]}]})json";

/// A document fresh from the exporter: component instances whose props and overrides know only
/// their targets, one instance inside another with a nested list of overrides, one instance done
/// already, a text named as its component, and an outside border.
const char* const kFreshExport = R"json({"model_class": "VDModelApp", "modelID": "app_1", "views": [],
 "screens": [
  {"model_class": "VDModelScreen", "modelID": "screen_1", "variableID": "home", "subviews": [
   {"model_class": "VDModelView", "modelID": "View_1", "variableID": "card",
    "componentInstanceData": {"model_class": "VDModelComponentInstanceData", "modelID": "componentInstanceData_1",
     "masterSymbolID": "S-card",
     "props": [{"model_class": "VDModelProp", "targetId": "T-title", "type": "text"},
               {"model_class": "VDModelProp", "targetId": "T-button", "type": "component"}],
     "overrides": [{"model_class": "VDModelComponentOverride", "targetId": "T-title", "value": "Hello"},
                   {"model_class": "VDModelComponentOverride", "targetId": "T-button",
                    "value": [{"model_class": "VDModelComponentOverride", "targetId": "T-caption", "value": "Go"}]}]},
    "subviews": [
     {"model_class": "VDModelLabel", "modelID": "Label_1", "variableID": "card", "viewName": "Card",
      "importedID": "T-title"},
     {"model_class": "VDModelView", "modelID": "View_2", "variableID": "button", "importedID": "T-button",
      "componentInstanceData": {"model_class": "VDModelComponentInstanceData", "modelID": "componentInstanceData_2",
       "masterSymbolID": "S-button",
       "props": [{"model_class": "VDModelProp", "targetId": "T-caption", "type": "text"}],
       "overrides": [{"model_class": "VDModelComponentOverride", "targetId": "T-caption", "value": "Go"}]},
      "subviews": [{"model_class": "VDModelLabel", "modelID": "Label_2", "variableID": "caption",
                    "viewName": "Caption", "importedID": "T-caption"}]}]},
   {"model_class": "VDModelView", "modelID": "View_3", "variableID": "banner",
    "componentInstanceData": {"model_class": "VDModelComponentInstanceData", "modelID": "componentInstanceData_3",
     "masterSymbolID": "S-banner",
     "props": [{"model_class": "VDModelProp", "targetId": "T-text", "path": "text", "name": "text"}],
     "overrides": [{"model_class": "VDModelComponentOverride", "targetId": "T-text", "path": "text",
                    "name": "text", "value": "Sale"}]},
    "subviews": [{"model_class": "VDModelLabel", "modelID": "Label_3", "variableID": "text", "viewName": "Text",
                  "importedID": "T-text"}]}]}],
 "components": [
  {"model_class": "VDModelView", "modelID": "View_4", "variableID": "cardMaster", "borderWidth": 2,
   "borderPosition": "outside",
   "constraints": {"model_class": "VDModelViewConstraints",
                   "width": {"model_class": "VDModelConstraint", "enabled": 1, "multiplier": 1, "constant": 300}},
   "subviews": [{"model_class": "VDModelLabel", "modelID": "Label_4", "variableID": "title",
                 "importedID": "T-title"}]}]})json";

Value counts(std::int64_t migrated, std::int64_t delimiters, std::int64_t defaults, std::int64_t names,
             std::int64_t paths, std::int64_t components) {
    return Value(Dictionary{{"statesMigrated", Value(migrated)},
                            {"delimitersFixed", Value(delimiters)},
                            {"defaultStatesNamed", Value(defaults)},
                            {"namesFixed", Value(names)},
                            {"pathsRewritten", Value(paths)},
                            {"componentsFixed", Value(components)}});
}

/// The object at a path of keys and indices ("screens", 0, "subviews", 1) of a parsed document.
Value at(const Value& root, std::initializer_list<std::variant<const char*, int>> steps) {
    Value v = root;
    for (const auto& step : steps) {
        v = std::holds_alternative<int>(step) ? v.array()[std::get<int>(step)]
                                              : v.dictionary().get(std::get<const char*>(step));
    }
    return v;
}

} // namespace

TEST_F(VelmoCommand, InfoCountsEachScreensTreeAndNamesClashingIdentifiers) {
    const std::string shop = file("shop.json", kShop);
    const CommandRun json = runVelmo("info --json " + shop);
    ASSERT_EQ(json.exitCode, 0) << json.output;
    const Dictionary info = Json::parse(json.output).dictionary();
    // Scripts rely on exactly these keys, in this order.
    EXPECT_EQ(keysOf(info), (std::vector<std::string>{"name", "screens", "freeViews", "components", "classes",
                                                      "clashingIDs"}));
    EXPECT_EQ(info.get("name"), Value("Shop"));
    EXPECT_EQ(info.get("screens"), Json::parse(R"([
        {"name": "Home", "modelID": "screen_1", "width": 390, "height": 844.5, "views": 3, "states": 3,
         "transitions": 1},
        {"name": "Cart", "modelID": "screen_2", "width": 375, "height": 667, "views": 2, "states": 0,
         "transitions": 0}])"));
    EXPECT_EQ(info.get("freeViews"), Value(1));
    EXPECT_EQ(info.get("components"), Value(2));
    EXPECT_EQ(info.get("clashingIDs"), Json::parse(R"(["View_1"])"));
    const Dictionary classes = info.get("classes").dictionary();
    for (const auto& [name, count] : std::vector<std::pair<std::string, int>>{
             {"VDModelApp", 1},
             {"VDModelScreen", 2},
             {"VDModelView", 6}, // screens' views, the free view and the components; screens apart
             {"VDModelViewState", 3},
             {"VDModelActionScriptAnimation", 1},
             {"VDModelEventListener", 1},
             {"VDModelAnimationTimeline", 1},
             {"VDModelAnimation", 1},
             {"VDModelTheme", 1},
         }) {
        EXPECT_EQ(classes.get(name), Value(count)) << name;
    }
    std::vector<std::string> names = keysOf(classes);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));

    expectAll({
        {"info " + shop, 0, "\"Shop\": 2 screens, 1 free view, 2 components, "},
        {"info " + shop, 0, "  home \"Home\" 390x844.5 [screen_1]: 3 views, 3 states, 1 transition\n"},
        {"info " + shop, 0, "  cart \"Cart\" 375x667 [screen_2]: 2 views, 0 states, 0 transitions\n"},
        {"info " + shop, 0, "identifiers held by more than one object: View_1\n"},
        {"info - < " + shop, 0, "  VDModelViewState              3\n"},
        {"json --compact " + shop, 0, R"("model_class":"VDModelApp")"},
        {"info --json - < " + kExamples + "/view-tree.json", 1,
         "not a whole document: the top level is a VDModelView, not a VDModelApp ('velmo tree'"},
        {"info " + file("theme.json", R"({"model_class": "VDModelTheme"})"), 1,
         "the top level is a VDModelTheme, not a VDModelApp"},
        {"info " + path("none.json"), 2, "cannot read " + path("none.json")},
        {"info - < " + file("bad.json", "{\"model_class\": \"VDModelApp\""), 2, "malformed JSON at offset"},
        {"info " + file("plain.json", R"({"model_class": "VDModelApp", "screens": [], "views": []})"), 0,
         "\"Untitled\": 0 screens, 0 free views, 0 components, "},
    });
}

TEST_F(VelmoCommand, RepairCountsWhatEachRepairChangedAndASecondRunNothing) {
    const struct {
        std::string name, input;
        Value expected;
    } cases[] = {
        // "spinner" migrated and named "initial"; states of "home" and "spinner" had "." keys;
        // "spinner", "badge" (first state) and "toggle" (a state that exists) get defaults; the
        // inner "card" becomes "card1", and with it a listener, a timeline and a change-set key.
        {"old", file("old.json", kOldDocument), counts(1, 2, 3, 1, 3, 0)},
        // Two records get paths and names, the third was done; the text named as its component is
        // renamed before the paths are worked out.
        {"export", file("export.json", kFreshExport), counts(0, 0, 0, 1, 0, 2)},
        // The sample: four button instances, and a heading named as its screen.
        {"sample", kExamples + "/document.json", counts(0, 0, 0, 1, 0, 4)},
    };
    for (const auto& c : cases) {
        const std::string once = path(c.name + "-1.json"), twice = path(c.name + "-2.json"),
                          thrice = path(c.name + "-3.json");
        const CommandRun first = runVelmo("repair " + c.input + " -o " + once + " --json", "2>&1");
        ASSERT_EQ(first.exitCode, 0) << c.name << "\n" << first.output;
        EXPECT_EQ(Json::tryParse(first.output), c.expected) << c.name << "\n" << first.output;
        const CommandRun second = runVelmo("repair " + once + " -o " + twice + " --json", "2>&1");
        EXPECT_EQ(Json::tryParse(second.output), counts(0, 0, 0, 0, 0, 0)) << c.name << "\n" << second.output;
        ASSERT_EQ(runVelmo("repair -q " + twice + " -o " + thrice).exitCode, 0);
        EXPECT_EQ(Files::read(twice), Files::read(thrice)) << c.name << ": the repairs leave it stable";
    }

    const Value old = Json::parse(*Files::read(path("old-1.json")));
    const Value home = at(old, {"screens", 0});
    EXPECT_EQ(at(home, {"actions", 0, "listeners", 0, "target"}), Value("this;card;card1"));
    EXPECT_EQ(at(home, {"actions", 0, "timelines", 0, "target"}), Value("this;card;card1"));
    EXPECT_TRUE(at(home, {"states", 0, "overrides"}).dictionary().contains("this;card;card1"));
    const Value spinner = at(home, {"subviews", 1});
    EXPECT_EQ(at(spinner, {"defaultStateName"}), Value("initial"));
    EXPECT_EQ(at(spinner, {"states", 0, "name"}), Value("initial"));
    EXPECT_EQ(at(spinner, {"states", 1, "overrides"}), Json::parse(R"({"this;dot": {"rotation": 180}})"));
    // The entry comes first, from no state into the new one, on a timer; the old transition
    // from no state now starts there.
    EXPECT_EQ(at(spinner, {"actions", 0, "targetStateName"}), Value("initial"));
    EXPECT_EQ(at(spinner, {"actions", 0, "listeners", 0, "event"}), Value("timer"));
    EXPECT_EQ(at(spinner, {"actions", 1, "originStateName"}), Value("initial"));
    EXPECT_EQ(at(home, {"subviews", 2, "defaultStateName"}), Value("small"));
    EXPECT_EQ(at(home, {"subviews", 3, "defaultStateName"}), Value("off"));
    // The entry is brought back before the default is checked, so it goes into the default as it
    // stood; the next run follows the checked one. Only this changes on the second run.
    EXPECT_EQ(at(home, {"subviews", 2, "actions", 0, "targetStateName"}), Value("big"));
    EXPECT_EQ(at(Json::parse(*Files::read(path("old-2.json"))),
                 {"screens", 0, "subviews", 2, "actions", 0, "targetStateName"}),
              Value("small"));

    const Value card = at(Json::parse(*Files::read(path("export-1.json"))), {"screens", 0, "subviews", 0});
    EXPECT_EQ(at(card, {"subviews", 0, "variableID"}), Value("card1"));
    // Compared as text, which a failure shows.
    EXPECT_EQ(
        Json::write(at(card, {"componentInstanceData", "props"})),
        R"([{"model_version":0,"model_class":"VDModelProp","name":"card1","type":"text","path":"card1",)"
        R"("targetId":"T-title"},{"model_version":0,"model_class":"VDModelProp","name":"button",)"
        R"("type":"component","path":"button","targetId":"T-button"}])");
    const Value nested = at(card, {"componentInstanceData", "overrides", 1});
    EXPECT_EQ(at(nested, {"path"}), Value("button"));
    EXPECT_FALSE(at(nested, {"value", 0}).dictionary().contains("path")) << "nested lists stay as they came";
    EXPECT_EQ(at(card, {"subviews", 1, "componentInstanceData", "overrides", 0, "path"}), Value("caption"));
}

TEST_F(VelmoCommand, RepairWritesTheDocumentWhereAskedAndRefusesWhatItCannotRepair) {
    const std::string old = file("old.json", kOldDocument);
    // Without -o the document goes to standard output, pretty, and the report to standard error.
    const CommandRun printed = runVelmo("repair " + old, "2>/dev/null");
    ASSERT_EQ(printed.exitCode, 0);
    EXPECT_NE(printed.output.find("\n  \"model_class\": \"VDModelApp\",\n"), std::string::npos);
    EXPECT_EQ(at(Json::parse(printed.output), {"screens", 0, "subviews", 1, "defaultStateName"}),
              Value("initial"));
    EXPECT_EQ(runVelmo("repair " + old, "2>&1 >/dev/null").output, old + R"(: repaired
  statesMigrated      1
  delimitersFixed     2
  defaultStatesNamed  3
  namesFixed          1
  pathsRewritten      3
  componentsFixed     0
)");
    EXPECT_EQ(runVelmo("repair -q " + old, "2>&1 >/dev/null").output, "");
    // In place, from standard input.
    const std::string inPlace = file("in-place.json", kOldDocument);
    EXPECT_EQ(runVelmo("repair " + inPlace + " -o " + inPlace).exitCode, 0);
    EXPECT_EQ(runVelmo("repair - -o " + path("again.json") + " --json < " + inPlace).output,
              R"({"statesMigrated":0,"delimitersFixed":0,"defaultStatesNamed":0,"namesFixed":0,)"
              R"("pathsRewritten":0,"componentsFixed":0})"
              "\n");

    // A pipe that is there already is written into, not replaced by a file, as a device would be:
    // `-o /dev/null --json` gives the counts alone.
    const std::string pipe = path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const CommandRun piped =
        runVelmo("repair " + old + " -o " + pipe + " --json", "2>&1; s=$?; wait; exit $s",
                 "timeout 10 cat " + pipe + " > " + path("piped.json") + " &");
    EXPECT_EQ(piped.exitCode, 0) << piped.output;
    EXPECT_NE(piped.output.find("\"statesMigrated\":1,"), std::string::npos) << piped.output;
    EXPECT_TRUE(fs::is_fifo(pipe));
    const Value pipedDocument = Json::tryParse(Files::read(path("piped.json")).value_or(""));
    ASSERT_TRUE(pipedDocument.isDictionary()) << "the document came through the pipe";
    EXPECT_EQ(at(pipedDocument, {"screens", 0, "subviews", 1, "defaultStateName"}), Value("initial"));

    // A shown table header without a name: the rename below the table can't ask it for the names.
    const std::string table = file("table.json", R"({"model_class": "VDModelApp", "screens": [
        {"model_class": "VDModelScreen", "variableID": "list", "subviews": [
         {"model_class": "VDModelTableView", "variableID": "table", "hasHeader": 1, "isStatic": 1,
          "header": {"model_class": "VDModelView"},
          "cells": [{"model_class": "VDModelCellView", "variableID": "list"}]}]}]})");
    expectAll({
        {"repair " + old + " --json", 2, "--json needs -o OUT"},
        {"repair " + old + " -o - --json", 2, "--json needs -o OUT"},
        {"repair " + path("none.json"), 2,
         "cannot read " + path("none.json") + ": No such file or directory"},
        {"repair - < " + file("bad.json", "{\"screens\": ["), 2,
         "standard input: malformed JSON at offset 13"},
        {"repair " + kExamples + "/view-tree.json", 1, "a VDModelView is not a document"},
        {"repair " + table + " -o " + path("table-out.json"), 1,
         "table.json: the document can't be repaired: allVariableIDs: the table's header has no variable "
         "name"},
        {"repair " + old + " -o " + dir_.string(), 1, "cannot write " + dir_.string() + ": Is a directory"},
        {"repair", 2, "FILE is required"},
    });
    EXPECT_FALSE(fs::exists(path("table-out.json"))) << "nothing written for a failed repair";
}

TEST_F(VelmoCommand, TheSampleDocumentDecodesWholeAndRoundTrips) {
    const std::string sample = kExamples + "/document.json";
    const CommandRun once = runVelmo("json --verbose " + sample + " -o " + path("once.json"));
    EXPECT_EQ(once.exitCode, 0);
    EXPECT_EQ(once.output, "") << "no class the decoder doesn't know, nothing logged";
    ASSERT_EQ(runVelmo("json " + path("once.json") + " -o " + path("twice.json")).exitCode, 0);
    EXPECT_EQ(Files::read(path("once.json")), Files::read(path("twice.json")));

    // Every image the document names is beside it.
    const std::string text = *Files::read(sample);
    std::size_t images = 0;
    for (std::size_t at = text.find("\"assets/"); at != std::string::npos;
         at = text.find("\"assets/", at + 1)) {
        const std::string name = text.substr(at + 1, text.find('"', at + 1) - at - 1);
        EXPECT_TRUE(fs::is_regular_file(fs::path(kExamples) / name)) << name;
        ++images;
    }
    EXPECT_GE(images, 5u);
}
