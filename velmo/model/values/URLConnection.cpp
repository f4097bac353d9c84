#include "velmo/model/values/URLConnection.h"

#include <condition_variable>
#include <memory>
#include <mutex>

#include "velmo/net/HTTPTransfer.h"

namespace velmo {

namespace {

// Collects the answer on the transfer thread and tells the waiting caller when it is complete.
struct Collector : HTTPTransferDelegate {
    void transferDidReceiveResponse(std::shared_ptr<HTTPURLResponse> r) override {
        std::lock_guard lock(mutex);
        response = std::move(r);
    }
    bool transferDidReceiveData(std::string_view data) override {
        std::lock_guard lock(mutex);
        body.append(data);
        return true;
    }
    void transferDidSendBodyData(std::int64_t, std::int64_t) override {}
    void transferDidFinish() override { end(nullptr); }
    void transferDidFail(VPErrorPtr e) override { end(std::move(e)); }

    void end(VPErrorPtr e) {
        std::lock_guard lock(mutex);
        error = std::move(e);
        ended = true;
        changed.notify_all();
    }
    void wait() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return ended; });
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool ended = false;
    std::shared_ptr<HTTPURLResponse> response;
    std::string body;
    VPErrorPtr error;
};

} // namespace

std::optional<std::string> URLConnection::sendSynchronousRequest(const URLRequest& request,
                                                                 HTTPURLResponse* response,
                                                                 VPErrorPtr* error) {
    // The engine's transfer, with its protocols, redirects and error translation; the request's
    // time-out is its limit on time without progress.
    auto collector = std::make_shared<Collector>();
    HTTPTransfer transfer(request, collector, {});
    transfer.start();
    collector->wait();

    // The transfer has ended and lets go of the collector: what it gathered is the caller's.
    if (collector->error) {
        if (error) *error = std::move(collector->error);
        return std::nullopt;
    }
    if (response && collector->response) *response = std::move(*collector->response);
    if (error) *error = nullptr;
    return std::move(collector->body);
}

} // namespace velmo
