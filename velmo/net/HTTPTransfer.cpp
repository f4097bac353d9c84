#include "velmo/net/HTTPTransfer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include <curl/curl.h>

namespace velmo {

namespace {

// Without an idle limit the transfer must not be cut off by libcurl's default connect limit
// either: the caller's deadline, if any, decides.
constexpr long kUnlimitedConnectMs = 24L * 3600 * 1000;
constexpr long kMaxRedirects = 16;
constexpr long kLargeReadSize = 512 * 1024;
// Handles of ended transfers kept for the next ones: making a handle costs more than a small
// exchange on a kept-alive connection. Enough for the turnover of a busy queue, not for its peak.
constexpr std::size_t kIdleHandles = 16;

class CurlSetupError : public std::runtime_error {
public:
    explicit CurlSetupError(CURLcode code) : std::runtime_error(curl_easy_strerror(code)), code(code) {}
    CURLcode code;
};

template <class T> void setopt(CURL* easy, CURLoption option, T value) {
    const CURLcode code = curl_easy_setopt(easy, option, value);
    if (code != CURLE_OK) throw CurlSetupError(code);
}

// The one translation of libcurl's results into the URL error domain, with the failing URL and
// libcurl's own words as the reason.
struct MappedError {
    std::int64_t code;
    const char* description;
};

MappedError mapCurlCode(CURLcode code) {
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return {kNSURLErrorTimedOut, "The request timed out."};
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return {kNSURLErrorCannotFindHost, "A server with the specified hostname could not be found."};
    case CURLE_COULDNT_CONNECT:
        return {kNSURLErrorCannotConnectToHost, "Could not connect to the server."};
    case CURLE_URL_MALFORMAT:
        return {kNSURLErrorBadURL, "bad URL"};
    case CURLE_UNSUPPORTED_PROTOCOL:
        return {kNSURLErrorUnsupportedURL, "unsupported URL"};
    case CURLE_TOO_MANY_REDIRECTS:
        return {kNSURLErrorHTTPTooManyRedirects, "too many HTTP redirects"};
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
        return {kNSURLErrorSecureConnectionFailed,
                "An SSL error has occurred and a secure connection to the server cannot be made."};
    case CURLE_WRITE_ERROR:
        return {kNSURLErrorCannotWriteToFile, "The file could not be written."};
    case CURLE_ABORTED_BY_CALLBACK:
        return {kNSURLErrorCancelled, "cancelled"};
    case CURLE_BAD_CONTENT_ENCODING:
        return {kNSURLErrorCannotDecodeContentData, "cannot decode raw data"};
    default:
        // A reply cut short, a connection reset, nothing sent back: the connection was lost.
        return {kNSURLErrorNetworkConnectionLost, "The network connection was lost."};
    }
}

VPErrorPtr urlErrorForCurlCode(CURLcode code, const std::string& url, const std::string& detail) {
    const MappedError mapped = mapCurlCode(code);
    Dictionary info{
        {kNSLocalizedDescriptionKey, Value(mapped.description)},
        {kNSURLErrorFailingURLStringErrorKey, Value(url)},
        {kNSURLErrorFailingURLErrorKey, Value(url)},
    };
    if (!detail.empty()) info.set(kNSLocalizedFailureReasonErrorKey, Value(detail));
    return VPError::make(kNSURLErrorDomain, mapped.code, info);
}

class TransferLoop;

} // namespace

using Clock = std::chrono::steady_clock;

struct HTTPTransfer::Impl : std::enable_shared_from_this<HTTPTransfer::Impl> {
    URLRequest request;
    Options options;
    std::atomic<bool> cancelled{false};
    std::atomic<bool> started{false};
    // Set once the transfer thread has let go of the handle: a cancel then has nothing to stop.
    std::atomic<bool> released{false};
    // The end of the whole transfer, in ticks of the steady clock; the largest value: none.
    std::atomic<Clock::rep> deadline{Clock::time_point::max().time_since_epoch().count()};

    // Touched on the transfer thread only, once started.
    std::shared_ptr<HTTPTransferDelegate> delegate;
    CURL* easy = nullptr;
    curl_slist* headerList = nullptr;
    char errorBuffer[CURL_ERROR_SIZE] = {};
    std::vector<std::pair<std::string, std::string>> responseHeaders;
    bool responseDelivered = false;
    curl_off_t lastUploaded = 0;
    curl_off_t lastDownloaded = 0;
    // The idle guard: when a byte last moved, and whether the delegate holds the transfer back,
    // which is a wait of our own and never counts as idle.
    std::chrono::steady_clock::time_point lastMoved;
    bool heldBack = false;
    bool stalled = false;
    // Events went to the delegate in this pass of the transfer thread.
    bool eventsDelivered = false;

    ~Impl() {
        if (easy) curl_easy_cleanup(easy);
        easy = nullptr;
        release();
    }

    /// On the transfer thread. The handle of a transfer that ended well serves another.
    void release(bool reusable = false);

    Clock::time_point deadlineTime() const { return Clock::time_point(Clock::duration(deadline.load())); }
    void configure();
    void deliverResponse();
    void ended(CURLcode result);
    /// Notes that events went to the delegate, to be followed by the end of the pass.
    void delivered();
    void endPass();

    static size_t onHeader(char* data, size_t size, size_t count, void* self);
    static size_t onWrite(char* data, size_t size, size_t count, void* self);
    static int onProgress(void* self, curl_off_t, curl_off_t dlnow, curl_off_t ultotal, curl_off_t ulnow);
};

namespace {

// The transfer thread: one libcurl multi handle driven by one thread, woken for new work.
class TransferLoop {
public:
    static TransferLoop& shared() {
        // Lives for the process and is never joined, like the global queues: a transfer stuck
        // on the network must not hold the process at exit.
        static TransferLoop* loop = new TransferLoop();
        return *loop;
    }

    void post(std::function<void()> work) {
        {
            std::lock_guard lock(mutex_);
            commands_.push_back(std::move(work));
            hasCommands_ = true;
        }
        // A busy thread finds the command before it sleeps again: only a sleeping one is woken,
        // and once. (The thread marks itself sleeping before it looks for commands, and the
        // command is there before this looks at the mark: one of the two sees the other.)
        if (sleeping_ && !woken_.exchange(true)) curl_multi_wakeup(multi_);
    }

    // On the transfer thread.
    void add(const std::shared_ptr<HTTPTransfer::Impl>& transfer) {
        if (transfer->cancelled) {
            transfer->release();
            return;
        }
        try {
            transfer->configure();
        } catch (const CurlSetupError& e) {
            failEarly(*transfer, e.code);
            return;
        }
        const CURLMcode code = curl_multi_add_handle(multi_, transfer->easy);
        if (code != CURLM_OK) {
            failEarly(*transfer, CURLE_FAILED_INIT);
            return;
        }
        transfer->lastMoved = Clock::now();
        active_.emplace(transfer->easy, transfer);
        noteDeadline(transfer->deadlineTime());
    }

    // On the transfer thread: a transfer's deadline may have come nearer.
    void noteDeadline(Clock::time_point deadline) { nextDeadline_ = std::min(nextDeadline_, deadline); }

    // On the transfer thread: the transfer hears of the end of this pass.
    void delivered(std::shared_ptr<HTTPTransfer::Impl> transfer) {
        delivered_.push_back(std::move(transfer));
    }

    // On the transfer thread: a handle in its first state, kept or new.
    CURL* handle() {
        if (idleHandles_.empty()) return curl_easy_init();
        CURL* easy = idleHandles_.back();
        idleHandles_.pop_back();
        return easy;
    }

    // On the transfer thread: a handle out of the multi handle. Options and state of a kept one go
    // back to their first values; its connection stays in the multi handle's cache either way.
    void letGo(CURL* easy, bool reusable) {
        if (reusable && idleHandles_.size() < kIdleHandles) {
            curl_easy_reset(easy);
            idleHandles_.push_back(easy);
        } else {
            curl_easy_cleanup(easy);
        }
    }

    // On the transfer thread: stops a transfer that is still running, without a word.
    void remove(HTTPTransfer::Impl& transfer) {
        if (!transfer.easy) return;
        auto it = active_.find(transfer.easy);
        if (it == active_.end()) return;
        auto keep = it->second;
        active_.erase(it);
        curl_multi_remove_handle(multi_, transfer.easy);
        transfer.release();
    }

private:
    TransferLoop() {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
            throw std::runtime_error("libcurl failed to start");
        multi_ = curl_multi_init();
        if (!multi_) throw std::runtime_error("libcurl failed to make a multi handle");
        std::thread([this] { run(); }).detach();
    }

    static void failEarly(HTTPTransfer::Impl& transfer, CURLcode code) {
        auto delegate = transfer.delegate;
        const std::string detail = transfer.errorBuffer;
        transfer.release();
        if (delegate && !transfer.cancelled) {
            delegate->transferDidFail(urlErrorForCurlCode(code, transfer.request.url, detail));
            delegate->transferDidDeliverEvents();
        }
    }

    void run() {
        std::vector<std::function<void()>> commands;
        for (;;) {
            if (hasCommands_) {
                std::lock_guard lock(mutex_);
                commands.swap(commands_);
                hasCommands_ = false;
            }
            for (auto& command : commands)
                command();
            commands.clear();

            int running = 0;
            curl_multi_perform(multi_, &running);
            int queued = 0;
            while (CURLMsg* message = curl_multi_info_read(multi_, &queued)) {
                if (message->msg != CURLMSG_DONE) continue;
                complete(message->easy_handle, message->data.result);
            }
            const Clock::time_point now = Clock::now();
            if (now >= nextDeadline_) endOverdue(now);
            for (const auto& transfer : delivered_)
                transfer->endPass();
            delivered_.clear();

            woken_ = false;
            sleeping_ = true;
            if (hasCommands_) {
                sleeping_ = false;
                continue;
            }
            constexpr auto kLongestWait = std::chrono::milliseconds(1000);
            const auto wait = nextDeadline_ - now < kLongestWait
                                  ? std::chrono::ceil<std::chrono::milliseconds>(nextDeadline_ - now)
                                  : kLongestWait;
            curl_multi_poll(multi_, nullptr, 0, static_cast<int>(wait.count()), nullptr);
            sleeping_ = false;
        }
    }

    void complete(CURL* easy, CURLcode result) {
        auto it = active_.find(easy);
        if (it == active_.end()) return;
        auto transfer = it->second;
        active_.erase(it);
        curl_multi_remove_handle(multi_, easy);
        transfer->ended(result);
    }

    // Ends the transfers whose deadline has passed, and finds the next deadline.
    void endOverdue(Clock::time_point now) {
        std::vector<CURL*> overdue;
        nextDeadline_ = Clock::time_point::max();
        for (const auto& [easy, transfer] : active_) {
            const Clock::time_point deadline = transfer->deadlineTime();
            if (deadline <= now) {
                overdue.push_back(easy);
            } else {
                nextDeadline_ = std::min(nextDeadline_, deadline);
            }
        }
        for (CURL* easy : overdue)
            complete(easy, CURLE_OPERATION_TIMEDOUT);
    }

    CURLM* multi_ = nullptr;
    std::mutex mutex_;
    std::vector<std::function<void()>> commands_;
    std::atomic<bool> hasCommands_{false};
    std::atomic<bool> sleeping_{false}; // in the poll, or about to be
    std::atomic<bool> woken_{false};    // a wakeup has been sent for this sleep
    // On the transfer thread only.
    std::unordered_map<CURL*, std::shared_ptr<HTTPTransfer::Impl>> active_;
    std::vector<std::shared_ptr<HTTPTransfer::Impl>> delivered_;
    std::vector<CURL*> idleHandles_;
    // No deadline of a running transfer is earlier; one may be later, after a change.
    Clock::time_point nextDeadline_ = Clock::time_point::max();
};

} // namespace

void HTTPTransfer::Impl::release(bool reusable) {
    released = true;
    if (easy) TransferLoop::shared().letGo(easy, reusable);
    easy = nullptr;
    if (headerList) curl_slist_free_all(headerList);
    headerList = nullptr;
    delegate.reset();
}

void HTTPTransfer::Impl::configure() {
    easy = TransferLoop::shared().handle();
    if (!easy) throw CurlSetupError(CURLE_FAILED_INIT);
    setopt(easy, CURLOPT_ERRORBUFFER, errorBuffer);
    setopt(easy, CURLOPT_PRIVATE, static_cast<void*>(this));
    setopt(easy, CURLOPT_URL, request.url.c_str());
    setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    setopt(easy, CURLOPT_NOSIGNAL, 1L);
    setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    setopt(easy, CURLOPT_MAXREDIRS, kMaxRedirects);
    // Compressed bodies are decoded, as the platform's transfers do.
    setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    setopt(easy, CURLOPT_HEADERFUNCTION, &Impl::onHeader);
    setopt(easy, CURLOPT_HEADERDATA, static_cast<void*>(this));
    setopt(easy, CURLOPT_WRITEFUNCTION, &Impl::onWrite);
    setopt(easy, CURLOPT_WRITEDATA, static_cast<void*>(this));
    if (options.largeReads) setopt(easy, CURLOPT_BUFFERSIZE, kLargeReadSize);
    const double limit = request.timeoutInterval;
    if (options.reportsUploadProgress || limit > 0) {
        setopt(easy, CURLOPT_XFERINFOFUNCTION, &Impl::onProgress);
        setopt(easy, CURLOPT_XFERINFODATA, static_cast<void*>(this));
        setopt(easy, CURLOPT_NOPROGRESS, 0L);
    }
    // libcurl's own low-speed limit averages over a window, so a transfer trickling slower than its
    // floor would be cut off while still moving: the idle guard in `onProgress` counts only time
    // in which not one byte moved.
    setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
           limit > 0 ? static_cast<long>(limit * 1000) : kUnlimitedConnectMs);

    const std::string& method = request.method;
    const std::string& body = request.body;
    if (method == "GET" && body.empty()) {
        setopt(easy, CURLOPT_HTTPGET, 1L);
    } else if (method == "HEAD") {
        setopt(easy, CURLOPT_NOBODY, 1L);
    } else {
        // The body stays in `request` for the life of the transfer.
        setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        setopt(easy, CURLOPT_POSTFIELDS, body.data());
        if (method != "POST") setopt(easy, CURLOPT_CUSTOMREQUEST, method.c_str());
    }

    // Only the caller's fields are sent: libcurl's own "Content-Type" for bodies and "Expect"
    // for large ones are switched off by naming them without a value.
    auto append = [this](const std::string& line) {
        curl_slist* list = curl_slist_append(headerList, line.c_str());
        if (!list) throw CurlSetupError(CURLE_OUT_OF_MEMORY);
        headerList = list;
    };
    for (const auto& [name, value] : request.headers)
        append(value.empty() ? name + ";" : name + ": " + value);
    if (request.valueForHTTPHeaderField("Content-Type").empty()) append("Content-Type:");
    if (request.valueForHTTPHeaderField("Expect").empty()) append("Expect:");
    setopt(easy, CURLOPT_HTTPHEADER, headerList);
}

void HTTPTransfer::Impl::delivered() {
    if (eventsDelivered) return;
    eventsDelivered = true;
    TransferLoop::shared().delivered(shared_from_this());
}

void HTTPTransfer::Impl::endPass() {
    if (!std::exchange(eventsDelivered, false)) return;
    if (delegate) delegate->transferDidDeliverEvents();
}

void HTTPTransfer::Impl::deliverResponse() {
    if (responseDelivered) return;
    responseDelivered = true;
    long status = 0;
    curl_off_t length = -1;
    char* effectiveURL = nullptr;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &effectiveURL);
    auto response = std::make_shared<HTTPURLResponse>();
    response->url = effectiveURL ? std::string(effectiveURL) : request.url;
    response->statusCode = status;
    response->headers = std::move(responseHeaders);
    // A compressed body is handed on decoded, so the announced length says nothing of what arrives.
    const std::string encoding = response->valueForHTTPHeaderField("Content-Encoding");
    const bool decoded = !encoding.empty() && encoding != "identity";
    response->expectedContentLength = length < 0 || decoded ? -1 : static_cast<std::int64_t>(length);
    if (delegate && !cancelled) {
        delegate->transferDidReceiveResponse(std::move(response));
        delivered();
    }
}

void HTTPTransfer::Impl::ended(CURLcode result) {
    auto keep = shared_from_this();
    if (!cancelled && delegate) {
        if (result == CURLE_OK) {
            deliverResponse();
            if (!cancelled) delegate->transferDidFinish();
        } else {
            if (stalled && result == CURLE_ABORTED_BY_CALLBACK) result = CURLE_OPERATION_TIMEDOUT;
            delegate->transferDidFail(urlErrorForCurlCode(result, request.url, errorBuffer));
        }
        eventsDelivered = true;
    }
    endPass();
    release(result == CURLE_OK);
}

size_t HTTPTransfer::Impl::onHeader(char* data, size_t size, size_t count, void* self) {
    auto* transfer = static_cast<Impl*>(self);
    const size_t length = size * count;
    std::string_view line(data, length);
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n'))
        line.remove_suffix(1);
    if (line.starts_with("HTTP/")) {
        // A new head (after a redirect or an interim answer) replaces the fields of the last.
        transfer->responseHeaders.clear();
    } else if (const auto colon = line.find(':'); colon != std::string_view::npos) {
        std::string_view value = line.substr(colon + 1);
        while (!value.empty() && (value.front() == ' ' || value.front() == '\t'))
            value.remove_prefix(1);
        transfer->responseHeaders.emplace_back(std::string(line.substr(0, colon)), std::string(value));
    }
    return length;
}

size_t HTTPTransfer::Impl::onWrite(char* data, size_t size, size_t count, void* self) {
    auto* transfer = static_cast<Impl*>(self);
    const size_t length = size * count;
    // Cancelled: refuse the bytes, which ends the transfer at once.
    if (transfer->cancelled || !transfer->delegate) return 0;
    transfer->deliverResponse();
    if (transfer->cancelled) return 0;
    if (!transfer->delegate->transferDidReceiveData(std::string_view(data, length))) {
        transfer->heldBack = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    transfer->delivered();
    return length;
}

int HTTPTransfer::Impl::onProgress(void* self, curl_off_t, curl_off_t dlnow, curl_off_t ultotal,
                                   curl_off_t ulnow) {
    auto* transfer = static_cast<Impl*>(self);
    if (transfer->cancelled) return 1;
    const auto now = Clock::now();
    // Counts go back to 0 after a redirect, so any change is a byte moved.
    if (dlnow != transfer->lastDownloaded || ulnow != transfer->lastUploaded || transfer->heldBack)
        transfer->lastMoved = now;
    transfer->lastDownloaded = dlnow;
    if (ulnow > transfer->lastUploaded && transfer->options.reportsUploadProgress && transfer->delegate) {
        transfer->delegate->transferDidSendBodyData(static_cast<std::int64_t>(ulnow),
                                                    static_cast<std::int64_t>(ultotal));
        transfer->delivered();
    }
    transfer->lastUploaded = ulnow;
    const double limit = transfer->request.timeoutInterval;
    if (limit > 0 && now - transfer->lastMoved >= std::chrono::duration<double>(limit)) {
        transfer->stalled = true;
        return 1;
    }
    return 0;
}

HTTPTransfer::HTTPTransfer(URLRequest request, std::shared_ptr<HTTPTransferDelegate> delegate,
                           Options options)
    : impl_(std::make_shared<Impl>()) {
    impl_->request = std::move(request);
    impl_->delegate = std::move(delegate);
    impl_->options = options;
}

HTTPTransfer::~HTTPTransfer() {
    cancel();
}

void HTTPTransfer::start() {
    if (impl_->started.exchange(true)) return;
    if (impl_->options.deadline.count() > 0) {
        // A deadline set on its own already stands in place of the option's.
        Clock::rep none = Clock::time_point::max().time_since_epoch().count();
        impl_->deadline.compare_exchange_strong(
            none, (Clock::now() + impl_->options.deadline).time_since_epoch().count());
    }
    TransferLoop::shared().post([impl = impl_] { TransferLoop::shared().add(impl); });
}

void HTTPTransfer::cancel() {
    if (impl_->cancelled.exchange(true)) return;
    if (!impl_->started) {
        // Never handed over: the delegate can go now. Nothing else touches the transfer.
        impl_->delegate.reset();
        return;
    }
    // Ended already (the usual case, when the owner lets go after the end): nothing to stop.
    if (impl_->released) return;
    TransferLoop::shared().post([impl = impl_] { TransferLoop::shared().remove(*impl); });
}

void HTTPTransfer::setDeadline(std::chrono::steady_clock::time_point deadline) {
    impl_->deadline = deadline.time_since_epoch().count();
    // Before `start` the transfer thread reads it when it takes the transfer on.
    if (!impl_->started || impl_->cancelled || impl_->released) return;
    TransferLoop::shared().post([deadline] { TransferLoop::shared().noteDeadline(deadline); });
}

void HTTPTransfer::resume() {
    if (!impl_->started || impl_->cancelled) return;
    TransferLoop::shared().post([impl = impl_] {
        if (!impl->easy || impl->cancelled) return;
        impl->heldBack = false;
        impl->lastMoved = std::chrono::steady_clock::now();
        curl_easy_pause(impl->easy, CURLPAUSE_CONT);
    });
}

} // namespace velmo
