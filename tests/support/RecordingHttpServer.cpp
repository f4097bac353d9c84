#include "RecordingHttpServer.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <stdexcept>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace velmo::test {

namespace {

bool sameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

/// The connection as the server library reads it, keeping every byte that came in.
class RecordingStream final : public httplib::Stream {
public:
    explicit RecordingStream(socket_t sock) : sock_(sock) {}

    bool is_readable() const override { return wait(POLLIN); }
    bool is_writable() const override { return wait(POLLOUT); }
    ssize_t read(char* ptr, size_t size) override {
        if (!wait(POLLIN)) return -1;
        const ssize_t n = ::recv(sock_, ptr, size, 0);
        if (n > 0) received_.append(ptr, static_cast<std::size_t>(n));
        return n;
    }
    ssize_t write(const char* ptr, size_t size) override {
        if (!wait(POLLOUT)) return -1;
        return ::send(sock_, ptr, size, MSG_NOSIGNAL);
    }
    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 0;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override {
        ip = "127.0.0.1";
        port = 0;
    }
    socket_t socket() const override { return sock_; }

    /// The header lines of the request's head, in order; complete once the library has read it.
    std::vector<std::pair<std::string, std::string>> headers() const {
        std::vector<std::pair<std::string, std::string>> headers;
        const std::string_view head = std::string_view(received_).substr(0, received_.find("\r\n\r\n"));
        std::size_t at = head.find("\r\n"); // past the request line
        while (at != std::string_view::npos) {
            at += 2;
            const std::size_t end = head.find("\r\n", at);
            const std::string_view line = head.substr(at, end == std::string_view::npos ? end : end - at);
            const std::size_t colon = line.find(':');
            if (colon != std::string_view::npos) {
                std::string_view value = line.substr(colon + 1);
                while (!value.empty() && value.front() == ' ')
                    value.remove_prefix(1);
                headers.emplace_back(std::string(line.substr(0, colon)), std::string(value));
            }
            at = end;
        }
        return headers;
    }

private:
    bool wait(short events) const {
        pollfd descriptor{sock_, events, 0};
        return ::poll(&descriptor, 1, 5000) > 0;
    }

    socket_t sock_;
    std::string received_;
};

// The stream of the request that the calling thread serves, for the route wrappers.
thread_local const RecordingStream* tCurrentStream = nullptr;
// Whether that request went to a route, which `answered` counts.
thread_local bool tRouted = false;

} // namespace

std::string RecordedRequest::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (sameName(key, name)) return value;
    }
    return {};
}

bool RecordedRequest::hasHeader(std::string_view name) const {
    return std::any_of(headers.begin(), headers.end(),
                       [&](const auto& h) { return sameName(h.first, name); });
}

std::vector<std::string> RecordedRequest::headerOrder(const std::vector<std::string>& names) const {
    std::vector<std::string> order;
    for (const auto& [key, value] : headers) {
        const auto known =
            std::find_if(names.begin(), names.end(), [&](const auto& n) { return sameName(n, key); });
        if (known != names.end()) order.push_back(*known);
    }
    return order;
}

// One request per connection, read through a stream that keeps the head as it came.
class RecordingHttpServer::Server : public httplib::Server {
public:
    explicit Server(std::atomic<int>& answered) : answered_(answered) {}

private:
    bool process_and_close_socket(socket_t sock) override {
        RecordingStream stream(sock);
        tCurrentStream = &stream;
        tRouted = false;
        bool closed = false;
        const bool served = process_request(stream, true, closed, std::function<void(httplib::Request&)>());
        tCurrentStream = nullptr;
        if (tRouted) ++answered_;
        ::shutdown(sock, SHUT_RDWR);
        ::close(sock);
        return served;
    }

    std::atomic<int>& answered_;
};

RecordingHttpServer::RecordingHttpServer() : server_(std::make_unique<Server>(answered_)) {}

RecordingHttpServer::~RecordingHttpServer() {
    stop();
}

void RecordingHttpServer::handle(const std::string& method, const std::string& pattern, Handler handler) {
    auto recorded = [this, handler = std::move(handler)](const httplib::Request& req,
                                                         httplib::Response& res) {
        RecordedRequest request{req.method, req.target, {}, req.body};
        if (tCurrentStream) request.headers = tCurrentStream->headers();
        tRouted = true;
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(std::move(request));
        }
        handler(req, res);
    };
    if (method == "GET") {
        server_->Get(pattern, recorded);
    } else if (method == "POST") {
        server_->Post(pattern, recorded);
    } else if (method == "PUT") {
        server_->Put(pattern, recorded);
    } else if (method == "DELETE") {
        server_->Delete(pattern, recorded);
    } else {
        throw std::invalid_argument("no routes for the method " + method);
    }
}

void RecordingHttpServer::start() {
    // As LocalHttpServer: the system's backlog rather than the library's 5, a wait for the running
    // flag, and one request first so that the library's statics are set up before any concurrency.
    server_->set_socket_options([this](socket_t sock) {
        httplib::default_socket_options(sock);
        int none = -1;
        listeningSocket_.compare_exchange_strong(none, sock);
    });
    port_ = server_->bind_to_any_port("127.0.0.1");
    if (port_ <= 0) throw std::runtime_error("test server could not bind to 127.0.0.1");
    if (::listen(listeningSocket_.load(), SOMAXCONN) != 0)
        throw std::runtime_error("test server could not widen its backlog");
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!server_->is_running() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    httplib::Client warmUp("127.0.0.1", port_);
    warmUp.Get("/velmo-test-warm-up");
}

void RecordingHttpServer::stop() {
    if (thread_.joinable()) {
        server_->stop();
        thread_.join();
    }
}

std::string RecordingHttpServer::baseURL() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

std::vector<RecordedRequest> RecordingHttpServer::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

} // namespace velmo::test
