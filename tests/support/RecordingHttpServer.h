#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <httplib.h>

namespace velmo::test {

/// A request as it arrived, its headers in the order they came.
struct RecordedRequest {
    std::string method;
    /// Path and query, as sent.
    std::string target;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// The header's value (names compare without case); empty when it wasn't sent.
    std::string header(std::string_view name) const;
    bool hasHeader(std::string_view name) const;
    /// Those of `names` that were sent, in the order they came.
    std::vector<std::string> headerOrder(const std::vector<std::string>& names) const;
};

/// An HTTP server on 127.0.0.1 and a free port for tests that check what a client sends,
/// header order included: the server library keeps headers sorted by name, so each connection
/// carries one request whose head is kept as it came. Routes are added with `handle` before
/// `start`; each request is recorded before its handler answers, so a client that has its answer
/// finds its request in `requests()`.
class RecordingHttpServer {
public:
    using Handler = std::function<void(const httplib::Request&, httplib::Response&)>;

    RecordingHttpServer();
    ~RecordingHttpServer();
    RecordingHttpServer(const RecordingHttpServer&) = delete;
    RecordingHttpServer& operator=(const RecordingHttpServer&) = delete;

    /// A route for "GET", "POST", "PUT" or "DELETE" and a path pattern (a regular expression).
    void handle(const std::string& method, const std::string& pattern, Handler handler);
    /// Binds and serves on background threads; returns once the server listens.
    void start();
    void stop();

    /// "http://127.0.0.1:PORT"
    std::string baseURL() const;
    /// The requests of the routes so far, in the order their handlers began.
    std::vector<RecordedRequest> requests() const;
    /// Requests of the routes whose answer has been written out in full.
    int answered() const { return answered_.load(); }

private:
    class Server;
    std::unique_ptr<Server> server_;
    std::thread thread_;
    int port_ = 0;
    std::atomic<int> listeningSocket_{-1};
    std::atomic<int> answered_{0};
    mutable std::mutex mutex_;
    std::vector<RecordedRequest> requests_;
};

} // namespace velmo::test
