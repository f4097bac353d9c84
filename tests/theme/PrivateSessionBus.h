#pragma once

#include <filesystem>
#include <string>

#include <sys/types.h>

namespace velmo::test {

/// A session bus of the test's own: a dbus-daemon that can start no service, listening on a socket
/// in a temporary folder, ended when the object goes.
class PrivateSessionBus {
public:
    /// Throws `std::runtime_error` when the daemon can't be started.
    explicit PrivateSessionBus(const std::string& daemon);
    ~PrivateSessionBus();
    PrivateSessionBus(const PrivateSessionBus&) = delete;
    PrivateSessionBus& operator=(const PrivateSessionBus&) = delete;

    /// "unix:path=...", for DBUS_SESSION_BUS_ADDRESS.
    std::string address() const;

private:
    void stop();

    std::filesystem::path folder_;
    pid_t pid_ = -1;
};

} // namespace velmo::test
