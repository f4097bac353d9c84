#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace velmo {

/// Fire-and-forget HTTP POSTs for logging, through the process's HTTP engine.
///
/// `post` never waits: it queues the request and returns. Requests run concurrently up to
/// `maxInFlight`; `maxQueued` more wait their turn, and beyond that new requests are dropped, so an
/// unreachable or hanging endpoint costs a bounded number of connections and bytes, and no threads.
/// Each request ends by `timeout` at the latest. Answers and failures are not looked at.
class VPLogSender {
public:
    struct Limits {
        std::size_t maxInFlight = 4;
        std::size_t maxQueued = 256;
        std::chrono::milliseconds timeout{30000};
    };

    VPLogSender();
    explicit VPLogSender(Limits limits);
    /// Abandons what is queued or in flight, without waiting for the network.
    ~VPLogSender();
    VPLogSender(const VPLogSender&) = delete;
    VPLogSender& operator=(const VPLogSender&) = delete;

    /// `headers` as "Name: value" lines. Returns false when the request was dropped.
    bool post(std::string url, std::string body, std::vector<std::string> headers);

private:
    struct Impl;
    // Held weakly by the handlers of its transfers' ends, which may hear of them after it is gone.
    std::shared_ptr<Impl> impl_;
};

} // namespace velmo
