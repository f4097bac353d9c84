#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "server/ServiceStore.h"

namespace velmo::server {

/// How `velmo serve` runs.
struct ServiceOptions {
    std::string host = "127.0.0.1";
    /// 0 takes a free port.
    int port = 8787;
    std::filesystem::path dataFolder;
    /// The remote configuration document it serves; none when empty.
    std::filesystem::path configFile;
    /// Requests handled at once; the others wait in line.
    std::size_t workers = 16;
    /// Larger bodies are refused with 413 before they are read.
    std::size_t maxBodyBytes = 8u * 1024 * 1024;
    /// Logging lines and events kept; the oldest go past it.
    std::size_t maxEvents = 10000;
};

/// The local service: the calls of the service's client, over HTTP on a bounded pool of workers,
/// with the state in the store. Every answer is JSON, refusals included ("error", "message").
class ServiceServer {
public:
    /// Opens the store in the data folder. Throws with the reason when it can't.
    explicit ServiceServer(ServiceOptions options);
    ~ServiceServer();
    ServiceServer(const ServiceServer&) = delete;
    ServiceServer& operator=(const ServiceServer&) = delete;

    /// Binds the address; gives the port. Throws std::runtime_error when the address can't be had.
    int bind();
    /// Serves until `stop`, then returns once the requests in flight have been answered.
    void serve();
    /// Ends `serve`; from any thread.
    void stop();

    int port() const;
    /// "http://host:port", the client's base address.
    std::string baseURL() const;
    ServiceStore& store();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velmo::server
