// The service commands, run as a user runs them, against a recording service on 127.0.0.1.
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "RecordingHttpServer.h"
#include "ShellCommand.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

namespace {

const std::string kToken = "good-token-31337";

using Result = ShellResult; // output: both streams

/// How a run is told where the service is.
enum class Address { Option, Environment, HostFile, None };

/// A signed-in user's service: memberships need the token, a team lists two projects (one
/// personal), and a project named "Taken" can't be made.
class ServiceCommand : public testing::Test {
protected:
    void SetUp() override {
        home_ = Files::makeTemporaryDirectory("velmo-cli-service");
        peer_.handle("GET", "/v2/users/me/team_memberships",
                     [](const httplib::Request& req, httplib::Response& res) {
                         const std::string authorization = req.get_header_value("Authorization");
                         if (authorization == "JWT " + kToken) {
                             res.set_content(R"({"results":[{"id":"m1","team":"t1","team_name":"Alpha"}]})",
                                             "application/json");
                         } else {
                             res.status = 401;
                             res.set_content(R"({"error":"not_authenticated","message":"Sign in first"})",
                                             "application/json");
                         }
                     });
        peer_.handle("GET", "/v2/teams/t1/projects/", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(
                R"({"results":[{"id":"p1","name":"Site","team":"t1"},{"id":"p2","name":"Notes"}]})",
                "application/json");
        });
        peer_.handle(
            "POST", R"(/v2/teams/([^/]+)/projects)", [](const httplib::Request& req, httplib::Response& res) {
                const Dictionary body = Json::parse(req.body).dictionary();
                if (body.get("name") == Value("Taken")) {
                    res.status = 400;
                    res.set_content(R"({"error":"name_taken","message":"A project of that name exists"})",
                                    "application/json");
                    return;
                }
                res.status = 201;
                res.set_content(
                    Json::write(Value(Dictionary{{"id", Value("p9")}, {"name", body.get("name")}})),
                    "application/json");
            });
        peer_.start();
    }
    void TearDown() override {
        peer_.stop();
        fs::remove_all(home_);
    }

    /// Runs `velmo ARGUMENTS` with its own home, the token store in a file there, and the service's
    /// address given as `address` says.
    Result velmo(const std::string& arguments, Address address = Address::Option,
                 const std::string& input = "", const std::string& environment = "") {
        std::string prefix = "env -u VELMO_API_URL VELMO_HOME=" + home_.string() +
                             " VELMO_HOST_CONFIG=" + (home_ / "host.json").string() +
                             " DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/velmo-cli-tests " +
                             environment;
        std::string line = std::string(VELMO_CLI_PATH) + " " + arguments;
        fs::remove(home_ / "host.json");
        switch (address) {
        case Address::Option:
            line += " --api " + peer_.baseURL() + "/";
            break;
        case Address::Environment:
            prefix += " VELMO_API_URL=" + peer_.baseURL();
            break;
        case Address::HostFile:
            Files::writeAtomically(home_ / "host.json", R"({"customAPIBaseURL":")" + peer_.baseURL() + "\"}");
            break;
        case Address::None:
            break;
        }
        const fs::path stdinFile = home_ / "stdin";
        Files::writeAtomically(stdinFile, input);
        return runShell(prefix + " " + line + " < " + stdinFile.string() + " 2>&1");
    }

    struct Case {
        std::string arguments;
        int exitCode;
        std::vector<std::string> says;
        Address address = Address::Option;
        std::string input = "";
        std::string environment = "";
    };
    void expectAll(const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            const Result run = velmo(c.arguments, c.address, c.input, c.environment);
            EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.output;
            for (const std::string& text : c.says)
                EXPECT_NE(run.output.find(text), std::string::npos) << c.arguments << "\n" << run.output;
            EXPECT_EQ(run.output.find(kToken), std::string::npos) << "the token never shows: " << c.arguments;
        }
    }

    RecordingHttpServer peer_;
    fs::path home_;
};

} // namespace

TEST_F(ServiceCommand, SignedInTheCommandsListTeamsAndProjectsAndCreateProjects) {
    expectAll({
        {"teams", 1, {"velmo: the service refused: not_authenticated: Sign in first", "not signed in"}},
        {"login --token -", 0, {"signed in"}, Address::Option, kToken + "\n"},
        {"teams", 0, {"Alpha (t1)\n"}, Address::Environment},
        {"teams --json", 0, {R"("team_name": "Alpha")"}, Address::HostFile},
        {"projects", 0, {"Alpha / Site (p1)\nPersonal / Notes (p2)\n"}},
        {"projects --json", 0, {R"("name": "Notes")"}},
        {"projects create New --team t1", 0, {"created New (p9) in team t1\n"}},
        {"projects create Solo --json", 0, {R"("id": "p9")"}},
        {"projects create Taken --team t1",
         1,
         {"velmo: the service refused: name_taken: A project of that name exists"}},
    });
    const auto sent = peer_.requests();
    ASSERT_EQ(sent.size(), 10u);
    EXPECT_EQ(sent[1].header("Authorization"), "JWT " + kToken) << "the stored token signs the next commands";
    const auto created = [&](std::size_t i) { return Json::parse(sent[i].body); };
    EXPECT_EQ(sent[7].target, "/v2/teams/t1/projects");
    EXPECT_EQ(created(7), Json::parse(R"({"name":"New","team":{"type":"teams","id":"t1"}})"));
    EXPECT_EQ(sent[8].target, "/v2/teams/(null)/projects");
    EXPECT_EQ(created(8), Json::parse(R"({"name":"Solo"})"));

    expectAll({
        {"logout", 0, {"signed out"}},
        {"teams", 1, {"not_authenticated", "not signed in: run 'velmo login --token -' first"}},
    });
    EXPECT_FALSE(peer_.requests().back().hasHeader("Authorization"));
}

TEST_F(ServiceCommand, FailuresSayWhyWithTheRightExitCode) {
    expectAll({
        {"teams --api http://127.0.0.1:1",
         1,
         {"velmo: cannot reach the service at http://127.0.0.1:1: "},
         Address::None},
        {"projects --api ftp://example.com",
         2,
         {"velmo: --api: not an http or https URL: ftp://example.com"},
         Address::None},
        {"teams",
         2,
         {"VELMO_API_URL or host.json): not an http or https URL: nowhere"},
         Address::None,
         "",
         "VELMO_API_URL=nowhere"},
        {"login --token ''", 2, {"velmo: the token is empty"}},
        {"login --token -", 2, {"velmo: --token -: standard input holds no token"}},
        {"login --token x",
         1,
         {"set keyChainServiceName to \"Velmo-Sketch-Plugin\""},
         Address::Option,
         "",
         "VELMO_KEYCHAIN_SERVICE_NAME=Other"},
        {"login", 2, {"--token is required"}},
        {"projects create '' --team t1", 2, {"velmo: the project's name is empty"}},
        {"projects create Site --team ''", 2, {"velmo: --team: the team's id is empty"}},
    });
    EXPECT_TRUE(peer_.requests().empty());
}
