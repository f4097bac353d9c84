#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "../support/LocalHttpServer.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/URLRequest.h"
#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"
#include "velmo/net/VPHTTPRequest.h"

// The resolver's headers, which the test server pulls in, define DELETE as a macro.
#undef DELETE

namespace velmo::test {

/// The server of the net tests, on 127.0.0.1, with the routes they need:
///   /echo             the request as JSON: "method", "target", "body", "headers" (any method)
///   /text             "hello" as text/plain
///   /sink             POST: "ok" as bytes, whatever was sent
///   /json?body=TEXT   TEXT as application/json
///   /json/latin1      a JSON object whose text is Latin-1, not UTF-8
///   /status/CODE      {"error":"status CODE"} as JSON with that status
///   /nocontent        204 without a body
///   /redirect         302 to /echo
///   /loop             302 to itself
///   /slow?ms=N        "late" after N milliseconds
///   /drip?bytes=N&ms=M  N bytes spread over M milliseconds, without a length
///   /big?bytes=N      N bytes with a length, in 64 KiB pieces
///   /truncated        announces 100000 bytes, sends 1000 and closes
class NetTestServer {
public:
    NetTestServer();
    ~NetTestServer();

    std::string url(const std::string& path) const { return server_.baseURL() + path; }
    std::string baseURL() const { return server_.baseURL(); }

    /// Requests being served now, and the most there ever were at once.
    int maxConcurrent() const { return maxConcurrent_.load(); }
    /// Handlers of /slow that have begun, and those that have finished answering.
    int slowStarted() const { return slowStarted_.load(); }
    int slowAnswered() const { return slowAnswered_.load(); }

private:
    struct InFlight;
    LocalHttpServer server_;
    std::atomic<bool> stopping_{false};
    std::atomic<int> concurrent_{0};
    std::atomic<int> maxConcurrent_{0};
    std::atomic<int> slowStarted_{0};
    std::atomic<int> slowAnswered_{0};
};

/// What a completion received.
struct Outcome {
    int calls = 0;
    bool onMainThread = true;
    Value response;
    std::shared_ptr<HTTPURLResponse> urlResponse;
    VPErrorPtr error;

    VPHTTPRequest::Completion completion() {
        return [this](const Value& r, std::shared_ptr<HTTPURLResponse> u, VPErrorPtr e) {
            ++calls;
            onMainThread = onMainThread && isMainThread();
            response = r;
            urlResponse = std::move(u);
            error = std::move(e);
        };
    }
    /// Runs the main loop until the completion has been called (10 s at most).
    bool wait() {
        return runMainLoopUntil([this] { return calls > 0; }, std::chrono::seconds(10));
    }
    /// The JSON the echo route answered with.
    Dictionary echo() const { return response.dictionary(); }
};

/// Runs the main loop until `done` answers true, 20 s at most.
bool waitFor(const std::function<bool()>& done);

/// Bytes the process has allocated and not freed.
std::size_t heapBytesInUse();

} // namespace velmo::test

#include <gtest/gtest.h>

#include "velmo/foundation/SystemLog.h"

namespace velmo::test {

/// A fixture with the server running and the request log kept off the test output.
class NetTest : public testing::Test {
protected:
    NetTest() {
        previousSink_ = SystemLog::setSink([](std::string_view) {});
    }
    ~NetTest() override { SystemLog::setSink(previousSink_); }

    /// The body the echo route received.
    static std::string echoedBody(const Outcome& outcome);
    static std::string echoedHeader(const Outcome& outcome, const char* name);

    NetTestServer server;

private:
    SystemLog::Sink previousSink_;
};

} // namespace velmo::test
