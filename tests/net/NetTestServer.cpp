#include "NetTestServer.h"

#include <algorithm>
#include <cctype>
#include <thread>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers' allocators count what is in use; g++ ships no header for it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

#include "velmo/foundation/Base64.h"
#include "velmo/foundation/Json.h"

namespace velmo::test {

namespace {

std::size_t param(const httplib::Request& request, const char* name, std::size_t fallback) {
    return request.has_param(name) ? std::stoul(request.get_param_value(name)) : fallback;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

} // namespace

struct NetTestServer::InFlight {
    explicit InFlight(NetTestServer& server) : server(server) {
        const int now = ++server.concurrent_;
        int seen = server.maxConcurrent_.load();
        while (now > seen && !server.maxConcurrent_.compare_exchange_weak(seen, now)) {
        }
    }
    ~InFlight() { --server.concurrent_; }
    NetTestServer& server;
};

NetTestServer::NetTestServer() {
    httplib::Server& s = server_.server();
    // Room for every connection a client queue opens at once, and idle connections let go fast,
    // so that neither waits on the other.
    s.new_task_queue = [] { return new httplib::ThreadPool(80); };
    s.set_keep_alive_timeout(1);

    auto echo = [this](const httplib::Request& req, httplib::Response& res) {
        InFlight inFlight(*this);
        Dictionary headers = Dictionary::create();
        for (const auto& [name, value] : req.headers)
            headers.set(lower(name), Value(value));
        const Dictionary body{{"method", Value(req.method)},
                              {"target", Value(req.target)},
                              {"body64", Value(Base64::encode(req.body))},
                              {"headers", Value(headers)}};
        res.set_content(Json::write(Value(body)), "application/json");
    };
    s.Get("/echo", echo);
    s.Post("/echo", echo);
    s.Put("/echo", echo);
    s.Delete("/echo", echo);

    s.Post("/sink", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("ok", "application/octet-stream");
    });
    s.Get("/text",
          [](const httplib::Request&, httplib::Response& res) { res.set_content("hello", "text/plain"); });
    s.Get("/json", [](const httplib::Request& req, httplib::Response& res) {
        res.set_content(req.get_param_value("body"), "application/json; charset=utf-8");
    });
    s.Get("/json/latin1", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("{\"name\":\"caf\xe9\"}", "application/json");
    });
    s.Get(R"(/status/(\d+))", [](const httplib::Request& req, httplib::Response& res) {
        res.status = std::stoi(req.matches[1]);
        res.set_content("{\"error\":\"status " + std::string(req.matches[1]) + "\"}", "application/json");
    });
    s.Get("/nocontent", [](const httplib::Request&, httplib::Response& res) { res.status = 204; });
    s.Get("/redirect", [](const httplib::Request&, httplib::Response& res) { res.set_redirect("/echo"); });
    s.Get("/loop", [](const httplib::Request&, httplib::Response& res) { res.set_redirect("/loop"); });
    s.Get("/slow", [this](const httplib::Request& req, httplib::Response& res) {
        InFlight inFlight(*this);
        ++slowStarted_;
        const auto until =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(param(req, "ms", 1000));
        while (std::chrono::steady_clock::now() < until && !stopping_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        res.set_content("late", "text/plain");
        ++slowAnswered_;
    });
    s.Get("/drip", [this](const httplib::Request& req, httplib::Response& res) {
        const std::size_t total = param(req, "bytes", 1000);
        const std::size_t ms = param(req, "ms", 1000);
        constexpr std::size_t kPieces = 20;
        res.set_chunked_content_provider(
            "application/octet-stream", [this, total, ms](std::size_t offset, httplib::DataSink& sink) {
                if (offset >= total || stopping_) {
                    sink.done();
                    return true;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(ms / kPieces));
                const std::string piece(std::min(total - offset, total / kPieces + 1), 'd');
                return sink.write(piece.data(), piece.size());
            });
    });
    s.Get("/big", [](const httplib::Request& req, httplib::Response& res) {
        const std::size_t total = param(req, "bytes", 1 << 20);
        res.set_content_provider(total, "application/octet-stream",
                                 [](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                     static const std::string piece(64 * 1024, 'b');
                                     (void)offset;
                                     return sink.write(piece.data(), std::min(length, piece.size()));
                                 });
    });
    s.Get("/truncated", [](const httplib::Request&, httplib::Response& res) {
        res.set_content_provider(100000, "application/octet-stream",
                                 [](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                     if (offset > 0) return false; // drop the connection
                                     const std::string piece(1000, 't');
                                     return sink.write(piece.data(), piece.size());
                                 });
    });
    server_.start();
    // Requests of each kind before any concurrent ones: the server's first requests set up its
    // lazily made statics, which a thread sanitizer can't see guarded inside the uninstrumented library.
    httplib::Client client(server_.baseURL());
    const httplib::Headers compressed{{"Accept-Encoding", "deflate, gzip, br, zstd"}};
    client.Get("/echo", compressed);
    client.Get("/big?bytes=10", compressed);
    client.Post("/sink", compressed, "x", "application/octet-stream");
}

NetTestServer::~NetTestServer() {
    stopping_ = true;
    server_.stop();
}

bool waitFor(const std::function<bool()>& done) {
    return runMainLoopUntil(done, std::chrono::seconds(20));
}

std::size_t heapBytesInUse() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace velmo::test

namespace velmo::test {

std::string NetTest::echoedBody(const Outcome& outcome) {
    return Base64::decode(outcome.echo().get("body64").stringView()).value_or("<not base64>");
}

std::string NetTest::echoedHeader(const Outcome& outcome, const char* name) {
    const Value& value = outcome.echo().get("headers").dictionary().get(name);
    return value.isString() ? value.str() : "<absent>";
}

} // namespace velmo::test
