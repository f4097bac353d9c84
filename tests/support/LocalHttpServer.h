#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include <httplib.h>

namespace velmo::test {

/// An HTTP server on 127.0.0.1 and a free port, for tests: routes are set on `server()` before
/// `start()`; `stop()` (or destruction) ends it.
class LocalHttpServer {
public:
    LocalHttpServer();
    ~LocalHttpServer();
    LocalHttpServer(const LocalHttpServer&) = delete;
    LocalHttpServer& operator=(const LocalHttpServer&) = delete;

    httplib::Server& server() { return server_; }
    /// Binds and starts serving on a background thread; returns once the server listens.
    void start();
    void stop();

    int port() const { return port_; }
    /// "http://127.0.0.1:PORT"
    std::string baseURL() const;

private:
    httplib::Server server_;
    std::thread thread_;
    int port_ = 0;
    /// The socket the server listens on, once made.
    std::atomic<int> listeningSocket_{-1};
};

} // namespace velmo::test
