#include "LocalHttpServer.h"

#include <chrono>
#include <stdexcept>

#include <sys/socket.h>

namespace velmo::test {

LocalHttpServer::LocalHttpServer() = default;

LocalHttpServer::~LocalHttpServer() {
    stop();
}

void LocalHttpServer::start() {
    // The server library listens with a backlog of 5. Tests that open dozens of connections at
    // once would overflow it, and the kernel drops what doesn't fit: the clients then retry after
    // 1, 3, 7, 15 s, and a test's time depends on that back-off. The listening socket is caught as
    // it is made and, once bound, given the system's own backlog.
    server_.set_socket_options([this](socket_t sock) {
        httplib::default_socket_options(sock);
        int none = -1;
        listeningSocket_.compare_exchange_strong(none, sock);
    });
    port_ = server_.bind_to_any_port("127.0.0.1");
    if (port_ <= 0) throw std::runtime_error("test server could not bind to 127.0.0.1");
    if (::listen(listeningSocket_.load(), SOMAXCONN) != 0)
        throw std::runtime_error("test server could not widen its backlog");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // This version of the server has no readiness call: wait for its running flag.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!server_.is_running() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    // One request before any concurrent ones: the server library sets up its own statics on the
    // first, and the thread sanitizer, which can't see inside it, would report the race.
    httplib::Client warmUp("127.0.0.1", port_);
    warmUp.Get("/velmo-test-warm-up");
}

void LocalHttpServer::stop() {
    if (thread_.joinable()) {
        server_.stop();
        thread_.join();
    }
}

std::string LocalHttpServer::baseURL() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

} // namespace velmo::test
