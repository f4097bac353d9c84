#include "velmo/runtime/VPLogSender.h"

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "velmo/foundation/URLRequest.h"
#include "velmo/net/HTTPTransfer.h"

namespace velmo {

namespace {

// "Name: value" as the pair a request holds; nothing for a line without a name.
std::optional<std::pair<std::string, std::string>> headerField(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || colon == 0) return std::nullopt;
    std::string_view value = line.substr(colon + 1);
    while (!value.empty() && (value.front() == ' ' || value.front() == '\t'))
        value.remove_prefix(1);
    return std::make_pair(std::string(line.substr(0, colon)), std::string(value));
}

} // namespace

struct VPLogSender::Impl : std::enable_shared_from_this<VPLogSender::Impl> {
    // Hears the end of one post, which frees its place for the next waiting one.
    struct Ending : HTTPTransferDelegate {
        Ending(std::weak_ptr<Impl> sender, std::uint64_t id) : sender(std::move(sender)), id(id) {}
        void transferDidReceiveResponse(std::shared_ptr<HTTPURLResponse>) override {}
        bool transferDidReceiveData(std::string_view) override { return true; }
        void transferDidSendBodyData(std::int64_t, std::int64_t) override {}
        void transferDidFinish() override { ended(); }
        void transferDidFail(VPErrorPtr) override { ended(); }
        void ended() {
            if (auto impl = sender.lock()) impl->ended(id);
        }

        std::weak_ptr<Impl> sender;
        std::uint64_t id;
    };

    explicit Impl(Limits l) : limits(l) {}

    /// Starts waiting posts while there is room; the caller holds `mutex`.
    void startWaiting();
    void ended(std::uint64_t id);

    const Limits limits;
    std::mutex mutex;
    std::deque<URLRequest> waiting;
    std::map<std::uint64_t, std::shared_ptr<HTTPTransfer>> inFlight;
    std::uint64_t nextId = 0;
    bool stopping = false;
};

void VPLogSender::Impl::startWaiting() {
    HTTPTransfer::Options options;
    options.deadline = limits.timeout;
    while (!stopping && inFlight.size() < limits.maxInFlight && !waiting.empty()) {
        URLRequest request = std::move(waiting.front());
        waiting.pop_front();
        const std::uint64_t id = nextId++;
        auto transfer = std::make_shared<HTTPTransfer>(
            std::move(request), std::make_shared<Ending>(weak_from_this(), id), options);
        inFlight.emplace(id, transfer);
        // Its events come on the transfer thread, never from within `start`.
        try {
            transfer->start();
        } catch (...) {
            // The engine couldn't start: the record is lost, as any failed post is.
            inFlight.erase(id);
        }
    }
}

void VPLogSender::Impl::ended(std::uint64_t id) {
    std::shared_ptr<HTTPTransfer> done; // let go after the lock
    std::lock_guard lock(mutex);
    if (auto it = inFlight.find(id); it != inFlight.end()) {
        done = std::move(it->second);
        inFlight.erase(it);
    }
    startWaiting();
}

VPLogSender::VPLogSender() : VPLogSender(Limits{}) {}

VPLogSender::VPLogSender(Limits limits) : impl_(std::make_shared<Impl>(limits)) {}

VPLogSender::~VPLogSender() {
    std::map<std::uint64_t, std::shared_ptr<HTTPTransfer>> abandoned;
    {
        std::lock_guard lock(impl_->mutex);
        impl_->stopping = true;
        impl_->waiting.clear();
        abandoned.swap(impl_->inFlight);
    }
    // Each transfer is cancelled as it goes, which hands the cancel over and doesn't wait.
}

bool VPLogSender::post(std::string url, std::string body, std::vector<std::string> headers) {
    URLRequest request;
    request.url = std::move(url);
    request.method = "POST";
    request.body = std::move(body);
    // No limit on quiet time of its own: `Limits::timeout` ends the whole post.
    request.timeoutInterval = 0;
    for (const auto& line : headers) {
        if (auto field = headerField(line)) request.headers.push_back(std::move(*field));
    }
    std::lock_guard lock(impl_->mutex);
    if (impl_->stopping || impl_->waiting.size() >= impl_->limits.maxQueued) return false;
    impl_->waiting.push_back(std::move(request));
    impl_->startWaiting();
    return true;
}

} // namespace velmo
