#include "velmo/runtime/VPLogSender.h"

#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include <curl/curl.h>

namespace velmo {

namespace {

struct Request {
    std::string url;
    std::string body;
    std::vector<std::string> headers;
};

// One transfer and what it owns; libcurl keeps pointers into both until the handle goes.
struct Transfer {
    CURL* easy = nullptr;
    curl_slist* headers = nullptr;

    ~Transfer() {
        if (easy) curl_easy_cleanup(easy);
        if (headers) curl_slist_free_all(headers);
    }
};

std::size_t discardBody(char*, std::size_t size, std::size_t count, void*) {
    return size * count;
}

void initCurlOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

template <class T> bool setOption(CURL* easy, CURLoption option, T value) {
    return curl_easy_setopt(easy, option, value) == CURLE_OK;
}

// Builds the transfer; nothing when libcurl refuses any part of it.
std::unique_ptr<Transfer> makeTransfer(const Request& request, std::chrono::milliseconds timeout) {
    auto transfer = std::make_unique<Transfer>();
    transfer->easy = curl_easy_init();
    if (!transfer->easy) return nullptr;
    for (const auto& header : request.headers) {
        curl_slist* list = curl_slist_append(transfer->headers, header.c_str());
        if (!list) return nullptr;
        transfer->headers = list;
    }
    // No "Expect: 100-continue" round trip for larger bodies.
    curl_slist* list = curl_slist_append(transfer->headers, "Expect:");
    if (!list) return nullptr;
    transfer->headers = list;

    CURL* easy = transfer->easy;
    const bool ok =
        setOption(easy, CURLOPT_URL, request.url.c_str()) &&
        setOption(easy, CURLOPT_PROTOCOLS_STR, "http,https") && setOption(easy, CURLOPT_NOSIGNAL, 1L) &&
        setOption(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size())) &&
        setOption(easy, CURLOPT_COPYPOSTFIELDS, request.body.c_str()) &&
        setOption(easy, CURLOPT_HTTPHEADER, transfer->headers) &&
        setOption(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count())) &&
        setOption(easy, CURLOPT_WRITEFUNCTION, &discardBody);
    return ok ? std::move(transfer) : nullptr;
}

} // namespace

struct VPLogSender::Impl {
    explicit Impl(Limits l) : limits(l) {}

    Limits limits;
    std::mutex mutex;
    std::deque<Request> queued;
    bool stopping = false;
    // False before the first post and after the worker gave up on a failing multi handle.
    bool working = false;
    // Made with each worker, then used by that worker alone, but for `curl_multi_wakeup`.
    CURLM* multi = nullptr;
    std::thread worker;

    void run();
    /// Starts a worker on a fresh multi handle; the caller holds `mutex`. False when it can't.
    bool startWorker();
    bool canStartMore(std::size_t active) {
        std::lock_guard lock(mutex);
        return !stopping && active < limits.maxInFlight && !queued.empty();
    }
    void startTransfers(std::vector<std::unique_ptr<Transfer>>& active);
};

void VPLogSender::Impl::startTransfers(std::vector<std::unique_ptr<Transfer>>& active) {
    std::vector<Request> starting;
    {
        std::lock_guard lock(mutex);
        while (active.size() + starting.size() < limits.maxInFlight && !queued.empty()) {
            starting.push_back(std::move(queued.front()));
            queued.pop_front();
        }
    }
    for (const auto& request : starting) {
        auto transfer = makeTransfer(request, limits.timeout);
        if (!transfer) continue;
        if (curl_multi_add_handle(multi, transfer->easy) != CURLM_OK) continue;
        active.push_back(std::move(transfer));
    }
}

void VPLogSender::Impl::run() {
    std::vector<std::unique_ptr<Transfer>> active;
    for (;;) {
        {
            std::lock_guard lock(mutex);
            if (stopping) break;
        }
        startTransfers(active);
        int running = 0;
        if (curl_multi_perform(multi, &running) != CURLM_OK) break;
        int left = 0;
        while (CURLMsg* message = curl_multi_info_read(multi, &left)) {
            if (message->msg != CURLMSG_DONE) continue;
            CURL* done = message->easy_handle;
            curl_multi_remove_handle(multi, done);
            std::erase_if(active, [done](const auto& t) { return t->easy == done; });
        }
        if (canStartMore(active.size())) continue; // a finished transfer freed a slot
        // Woken by the network, by `post`, or by the destructor.
        if (curl_multi_poll(multi, nullptr, 0, 1000, nullptr) != CURLM_OK) break;
    }
    for (const auto& transfer : active)
        curl_multi_remove_handle(multi, transfer->easy);
    active.clear();
    // Last: once this is seen, `post` may join this thread and replace the handle. Until then, what
    // is queued waits for the next post's worker rather than for a worker that is gone.
    std::lock_guard lock(mutex);
    working = false;
}

bool VPLogSender::Impl::startWorker() {
    // A worker that gave up has nothing left but to return.
    if (worker.joinable()) worker.join();
    // Its handle failed, so it isn't trusted again.
    if (multi) curl_multi_cleanup(std::exchange(multi, nullptr));
    initCurlOnce();
    multi = curl_multi_init();
    if (!multi) return false;
    try {
        worker = std::thread([this] { run(); });
    } catch (...) {
        curl_multi_cleanup(std::exchange(multi, nullptr));
        return false;
    }
    working = true;
    return true;
}

VPLogSender::VPLogSender() : VPLogSender(Limits{}) {}

VPLogSender::VPLogSender(Limits limits) : impl_(std::make_unique<Impl>(limits)) {}

VPLogSender::~VPLogSender() {
    {
        std::lock_guard lock(impl_->mutex);
        impl_->stopping = true;
        if (impl_->multi) curl_multi_wakeup(impl_->multi);
    }
    if (impl_->worker.joinable()) impl_->worker.join();
    if (impl_->multi) curl_multi_cleanup(impl_->multi);
}

bool VPLogSender::post(std::string url, std::string body, std::vector<std::string> headers) {
    std::lock_guard lock(impl_->mutex);
    if (impl_->stopping || impl_->queued.size() >= impl_->limits.maxQueued) return false;
    // The thread starts with the first post, so a sender that never posts costs nothing; and again
    // after a failure of libcurl ended it, so records aren't queued for nobody.
    if (!impl_->working && !impl_->startWorker()) return false;
    impl_->queued.push_back(Request{std::move(url), std::move(body), std::move(headers)});
    curl_multi_wakeup(impl_->multi);
    return true;
}

} // namespace velmo
