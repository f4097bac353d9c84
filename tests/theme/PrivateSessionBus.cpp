#include "PrivateSessionBus.h"

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>

#include "velmo/foundation/Files.h"

extern char** environ;

namespace velmo::test {

PrivateSessionBus::PrivateSessionBus(const std::string& daemon)
    : folder_(Files::makeTemporaryDirectory("velmo-bus")) {
    const auto config = folder_ / "bus.conf";
    Files::writeAtomically(config,
                           R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=)" + (folder_ / "bus").string() +
                               R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)");
    std::vector<std::string> arguments = {daemon, "--config-file=" + config.string(), "--nofork",
                                          "--nopidfile"};
    std::vector<char*> argv;
    for (auto& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (::posix_spawn(&pid_, daemon.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
        pid_ = -1;
        stop();
        throw std::runtime_error("dbus-daemon could not be started");
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::error_code ec;
    while (!std::filesystem::is_socket(folder_ / "bus", ec)) {
        if (std::chrono::steady_clock::now() > deadline) {
            stop(); // a constructor that throws has no destructor run
            throw std::runtime_error("dbus-daemon did not listen");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

PrivateSessionBus::~PrivateSessionBus() {
    stop();
}

void PrivateSessionBus::stop() {
    if (pid_ > 0) {
        ::kill(pid_, SIGTERM);
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
    }
    std::error_code ec;
    std::filesystem::remove_all(folder_, ec);
}

std::string PrivateSessionBus::address() const {
    return "unix:path=" + (folder_ / "bus").string();
}

} // namespace velmo::test
