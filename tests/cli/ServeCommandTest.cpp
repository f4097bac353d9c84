// velmo serve as its operator and a user run it: the README's session against a real service
// process, and the operator's mistakes.
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <httplib.h>

#include "ShellCommand.h"
#include "velmo/foundation/Files.h"

using namespace velmo;
using namespace velmo::test;
namespace fs = std::filesystem;

extern char** environ;

namespace {

/// A port that was free a moment ago.
int freePort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(fd);
    return ntohs(address.sin_port);
}

class ServeCommand : public testing::Test {
protected:
    ServeCommand() : home_(Files::makeTemporaryDirectory("velmo-cli-serve")), port_(freePort()) {}
    ~ServeCommand() override {
        stopService();
        fs::remove_all(home_);
    }

    std::string data() const { return (home_ / "service").string(); }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

    /// `velmo ARGUMENTS` with its own home and the token store in a file there.
    ShellResult velmo(const std::string& arguments, const std::string& input = "") {
        const fs::path stdinFile = home_ / "stdin";
        Files::writeAtomically(stdinFile, input);
        return runShell("env -u VELMO_API_URL VELMO_HOME=" + home_.string() +
                        " DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/velmo-cli-tests " VELMO_CLI_PATH
                        " " +
                        arguments + " < " + stdinFile.string() + " 2>&1");
    }

    /// Starts `velmo serve` on the port and waits until it answers.
    void startService() {
        const std::string log = (home_ / "serve.log").string();
        const std::vector<std::string> args = {
            VELMO_CLI_PATH, "serve", "--data", data(), "--listen", "127.0.0.1:" + std::to_string(port_)};
        std::vector<char*> argv;
        for (const auto& arg : args)
            argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 2, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_EQ(::posix_spawn(&service_, VELMO_CLI_PATH, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        httplib::Client probe("127.0.0.1", port_);
        for (int i = 0; i < 200; ++i) {
            if (auto answer = probe.Get("/health"); answer && answer->status == 200) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        FAIL() << "velmo serve did not answer: " << Files::read(log).value_or("");
    }

    /// SIGTERM; gives the exit code.
    int stopService() {
        if (service_ <= 0) return -1;
        ::kill(service_, SIGTERM);
        int status = 0;
        ::waitpid(service_, &status, 0);
        service_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    fs::path home_;
    int port_;
    pid_t service_ = -1;
};

} // namespace

TEST_F(ServeCommand, TheReadmeSessionWorksAndTheServiceStopsCleanly) {
    const ShellResult token = velmo("serve --data " + data() + " --add-user ann@example.com --name Ann -q");
    ASSERT_EQ(token.exitCode, 0) << token.output;
    ASSERT_TRUE(std::regex_match(token.output, std::regex("[0-9a-f]{64}\n"))) << token.output;
    const ShellResult team = velmo("serve --data " + data() + " --add-team Design --member ann@example.com");
    ASSERT_EQ(team.exitCode, 0) << team.output;
    std::smatch id;
    ASSERT_TRUE(std::regex_search(team.output, id, std::regex(R"(added team Design \(([-0-9a-f]+)\))")))
        << team.output;
    const std::string teamId = id[1];

    startService();
    EXPECT_EQ(velmo("login --token -", token.output).exitCode, 0);
    const ShellResult created = velmo("projects create 'Landing page' --team " + teamId + " --api " + url());
    EXPECT_EQ(created.exitCode, 0) << created.output;
    EXPECT_NE(created.output.find("created Landing page ("), std::string::npos) << created.output;
    const ShellResult listed = velmo("projects --api " + url());
    EXPECT_EQ(listed.exitCode, 0) << listed.output;
    EXPECT_NE(listed.output.find("Design / Landing page ("), std::string::npos) << listed.output;
    const ShellResult taken = velmo("projects create 'Landing page' --team " + teamId + " --api " + url());
    EXPECT_EQ(taken.exitCode, 1) << taken.output;
    EXPECT_NE(taken.output.find("name_taken"), std::string::npos) << taken.output;

    httplib::Client(url()).Post("/mixpanel", {{"X-Client-Id", "c-1"}}, R"({"event": "Opened"})",
                                "application/json");
    EXPECT_EQ(stopService(), 0);
    EXPECT_NE(Files::read(home_ / "serve.log").value_or("").find("stopped"), std::string::npos);
    const ShellResult events = velmo("serve --data " + data() + " --events");
    EXPECT_EQ(events.exitCode, 0);
    EXPECT_NE(events.output.find("event Opened client=c-1"), std::string::npos) << events.output;
}

TEST_F(ServeCommand, TheOperatorsMistakesAreSaidAndNothingStarts) {
    Files::writeAtomically(home_ / "file", "x");
    ASSERT_EQ(velmo("serve --data " + data() + " --add-user ann@example.com -q").exitCode, 0);
    // One service holds the port; a second can't have it.
    startService();
    struct Case {
        std::string arguments;
        int exitCode;
        std::string says;
    };
    const std::vector<Case> cases = {
        {"serve --listen nowhere", 2, "is not HOST:PORT"},
        {"serve --listen 127.0.0.1:70000", 2, "is not HOST:PORT"},
        {"serve --data " + (home_ / "file").string(), 2, "is not a folder"},
        {"serve --data " + data() + " --config " + (home_ / "missing.json").string(), 2,
         "is not a readable file"},
        {"serve --data " + data() + " --config " + (home_ / "file").string(), 2,
         "is not a configuration document"},
        {"serve --data " + data() + " --config -", 2, "not standard input (-)"},
        {"serve --data " + data() + " --add-font -", 2, "\"-\" is not a font family's name"},
        {"serve --data " + data() + " --add-user not-an-address", 2, "is not an e-mail address"},
        {"serve --data " + data() + " --add-team Design --member nobody@example.com", 1,
         "No user has the address \"nobody@example.com\""},
        {"serve --data " + data() + " --listen 127.0.0.1:" + std::to_string(port_), 1, "cannot listen on"},
        {"serve --data " + (home_ / "file" / "sub").string(), 1, "--data: cannot make"},
        {"serve --name Ann", 2, "--name requires --add-user"},
    };
    for (const Case& c : cases) {
        const ShellResult run = velmo(c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.output;
        EXPECT_NE(run.output.find(c.says), std::string::npos) << c.arguments << "\n" << run.output;
    }
}

TEST_F(ServeCommand, ATokenThatCannotBeShownIsNotKept) {
    const ShellResult lost = runShell("VELMO_HOME=" + home_.string() + " " VELMO_CLI_PATH " serve --data " +
                                      data() + " --add-user ann@example.com 2>&1 >/dev/full");
    EXPECT_EQ(lost.exitCode, 1) << lost.output;
    EXPECT_NE(lost.output.find("no user or token was added"), std::string::npos) << lost.output;
    const ShellResult shown = velmo("serve --data " + data() + " --add-user ann@example.com");
    EXPECT_EQ(shown.exitCode, 0) << shown.output;
    EXPECT_NE(shown.output.find("added ann@example.com"), std::string::npos)
        << "the address is new: " << shown.output;
}
