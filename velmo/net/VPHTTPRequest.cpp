#include "velmo/net/VPHTTPRequest.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include <boost/url/encode.hpp>
#include <boost/url/grammar/alnum_chars.hpp>
#include <boost/url/grammar/lut_chars.hpp>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "velmo/foundation/Base64.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/URL.h"
#include "velmo/foundation/Utf8.h"
#include "velmo/foundation/VDClass.h"
#include "velmo/net/HTTPTransfer.h"
#include "velmo/runtime/VPLogging.h"

namespace velmo {

namespace {

namespace urls = boost::urls;

// Letters, digits and "-._" pass; everything else is escaped, "~" included.
constexpr urls::grammar::lut_chars kParameterChars =
    urls::grammar::lut_chars(urls::grammar::alnum_chars) + "-._";

// Body bytes waiting for the serial queue: past the high mark the transfer stops reading until
// the queue is back under the low mark, so a body saved to a file never piles up in memory.
constexpr std::size_t kPendingHighWater = 4 * 1024 * 1024;
constexpr std::size_t kPendingLowWater = 1024 * 1024;

// Cut off at its deadline, an in-memory body has no separate limit on time without progress.
constexpr double kNoProgressLimit = 0;

// Engine work is short and doesn't wait (starts, bodies kept in memory, the finishing step): on
// one thread it waits behind other such work for less than work handed to an idle thread of a
// wider pool waits for that thread to wake, and small requests hand work over at every step.
constexpr std::size_t kEngineThreads = 1;
// Bodies saved to files are written on threads of their own, so that a slow disk holds up no
// other request, nor two downloads each other.
constexpr std::size_t kFileWriteThreads = 4;

// The serial queues of requests that save their bodies to files run here.
DispatchQueue& fileWriteQueue() {
    static const auto* queue = new std::shared_ptr<DispatchQueue>(
        DispatchQueue::createConcurrent("com.velmoapp.VPHTTPRequest.files", kFileWriteThreads));
    return **queue;
}

std::atomic<double> gDefaultTimeoutInterval{20};
std::mutex gDefaultUserAgentMutex;
std::optional<std::string> gDefaultUserAgent;
std::atomic<unsigned> gTaskCount{0};

const char* methodName(VPHTTPRequestMethod method) {
    switch (method) {
    case VPHTTPRequestMethod::GET:
        return "GET";
    case VPHTTPRequestMethod::POST:
        return "POST";
    case VPHTTPRequestMethod::PUT:
        return "PUT";
    case VPHTTPRequestMethod::DELETE:
        return "DELETE";
    case VPHTTPRequestMethod::HEAD:
        return "HEAD";
    }
    return "GET";
}

// The field when set, else the default in whole seconds.
unsigned effectiveTimeoutInterval(unsigned field) {
    return field != 0 ? field : static_cast<unsigned>(gDefaultTimeoutInterval.load());
}

bool hasBody(VPHTTPRequestMethod method) {
    return method == VPHTTPRequestMethod::POST || method == VPHTTPRequestMethod::PUT;
}

void increaseTaskCount() {
    gTaskCount.fetch_add(1);
}

// The count never goes below 0.
void decreaseTaskCount() {
    unsigned count = gTaskCount.load();
    while (count > 0 && !gTaskCount.compare_exchange_weak(count, count - 1)) {
    }
}

std::shared_ptr<URL> fileParameter(const Value& value) {
    return value.isObject() ? value.objectAs<URL>() : nullptr;
}

// Text that is not UTF-8 is read byte by byte as the platform's ASCII reading does, each byte
// one character.
std::string bytesAsCharacters(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes)
        Utf8::append(text, static_cast<unsigned char>(c));
    return text;
}

} // namespace

std::string encodedURLParameterString(std::string_view string) {
    return urls::encode(string, kParameterChars);
}

// ---------------------------------------------------------------- transfer events

// Forwards the transfer's events to the request, which it keeps alive while the transfer runs.
struct VPHTTPRequest::TransferEvents : HTTPTransferDelegate {
    using Kind = TransferEvent::Kind;

    explicit TransferEvents(std::shared_ptr<VPHTTPRequest> request) : request(std::move(request)) {}

    void transferDidReceiveResponse(std::shared_ptr<HTTPURLResponse> response) override {
        TransferEvent event(Kind::Response);
        event.response = std::move(response);
        request->keepEvent(std::move(event));
    }
    bool transferDidReceiveData(std::string_view data) override { return request->receiveData(data); }
    void transferDidSendBodyData(std::int64_t written, std::int64_t expected) override {
        // Upload progress is reported for POST only.
        if (request->method_ != VPHTTPRequestMethod::POST || !request->progress_ || expected <= 0) return;
        TransferEvent event(Kind::Sent);
        event.written = written;
        event.expected = expected;
        request->keepEvent(std::move(event));
    }
    void transferDidFinish() override { request->keepEvent(TransferEvent(Kind::Finished)); }
    void transferDidFail(VPErrorPtr error) override {
        TransferEvent event(Kind::Failed);
        event.error = std::move(error);
        request->keepEvent(std::move(event));
    }
    void transferDidDeliverEvents() override { request->queueEventsJob(); }

    std::shared_ptr<VPHTTPRequest> request;
};

// ---------------------------------------------------------------- creation

VPHTTPRequest::VPHTTPRequest(std::string_view address, VPHTTPRequestMethod method, Value parameters,
                             std::string saveToPath, Progress progress, Completion completion)
    : method_(method), savePath_(std::move(saveToPath)), progress_(std::move(progress)),
      completion_(std::move(completion)),
      saveDataDispatchQueue_(DispatchQueue::createSerial(
          kVPHTTPRequestQueueLabel, savePath_.empty() ? *engineQueue() : fileWriteQueue())) {
    // Switching pipelining on for requests other than POST without a save path has no
    // counterpart here: libcurl dropped HTTP/1.1 pipelining, and its transfers share kept-alive
    // connections anyway.
    fields_.with([&](Fields& f) {
        f.request.url = std::string(address);
        f.request.method = methodName(method);
        f.parameters = std::move(parameters);
    });
    if (auto url = URL::URLWithString(address)) {
        requestPath_ = url->path();
        if (requestPath_.starts_with('/')) requestPath_.erase(0, 1);
        fields_.set(&Fields::urlParses, true);
    }
}

VPHTTPRequest::VPHTTPRequest(std::string_view address, VPHTTPRequestMethod method, Value parameters,
                             Completion completion)
    : VPHTTPRequest(address, method, std::move(parameters), std::string(), nullptr, std::move(completion)) {}

VPHTTPRequest::~VPHTTPRequest() {
    if (auto transfer = this->transfer()) transfer->cancel();
    closeFile();
}

const VDClass& VPHTTPRequest::classObject() {
    static const VDClass cls("VPHTTPRequest", &Operation::classObject(), nullptr);
    return cls;
}

// ---------------------------------------------------------------- class operations

namespace {
std::shared_ptr<VPHTTPRequest> startNew(std::string_view address, VPHTTPRequestMethod method,
                                        Value parameters, std::string saveToPath,
                                        VPHTTPRequest::Progress progress,
                                        VPHTTPRequest::Completion completion) {
    auto request =
        std::make_shared<VPHTTPRequest>(address, method, std::move(parameters), std::move(saveToPath),
                                        std::move(progress), std::move(completion));
    request->start();
    return request;
}
} // namespace

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::GET(std::string_view address, Value parameters,
                                                  Completion completion) {
    return startNew(address, VPHTTPRequestMethod::GET, std::move(parameters), {}, nullptr,
                    std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::GET(std::string_view address, Value parameters,
                                                  std::string saveToPath, Progress progress,
                                                  Completion completion) {
    return startNew(address, VPHTTPRequestMethod::GET, std::move(parameters), std::move(saveToPath),
                    std::move(progress), std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::POST(std::string_view address, Value parameters,
                                                   Completion completion) {
    return startNew(address, VPHTTPRequestMethod::POST, std::move(parameters), {}, nullptr,
                    std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::POST(std::string_view address, Value parameters,
                                                   Progress progress, Completion completion) {
    return startNew(address, VPHTTPRequestMethod::POST, std::move(parameters), {}, std::move(progress),
                    std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::PUT(std::string_view address, Value parameters,
                                                  Completion completion) {
    return startNew(address, VPHTTPRequestMethod::PUT, std::move(parameters), {}, nullptr,
                    std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::DELETE(std::string_view address, Value parameters,
                                                     Completion completion) {
    return startNew(address, VPHTTPRequestMethod::DELETE, std::move(parameters), {}, nullptr,
                    std::move(completion));
}

std::shared_ptr<VPHTTPRequest> VPHTTPRequest::HEAD(std::string_view address, Value parameters,
                                                   Completion completion) {
    return startNew(address, VPHTTPRequestMethod::HEAD, std::move(parameters), {}, nullptr,
                    std::move(completion));
}

// ---------------------------------------------------------------- process-wide values

double VPHTTPRequest::defaultTimeoutInterval() {
    return gDefaultTimeoutInterval.load();
}

void VPHTTPRequest::setDefaultTimeoutInterval(double seconds) {
    gDefaultTimeoutInterval.store(seconds);
}

std::optional<std::string> VPHTTPRequest::defaultUserAgent() {
    std::lock_guard lock(gDefaultUserAgentMutex);
    return gDefaultUserAgent;
}

void VPHTTPRequest::setDefaultUserAgent(std::optional<std::string> userAgent) {
    std::lock_guard lock(gDefaultUserAgentMutex);
    gDefaultUserAgent = std::move(userAgent);
}

unsigned VPHTTPRequest::taskCount() {
    return gTaskCount.load();
}

const std::shared_ptr<DispatchQueue>& VPHTTPRequest::engineQueue() {
    static const auto* queue = new std::shared_ptr<DispatchQueue>(
        DispatchQueue::createConcurrent("com.velmoapp.VPHTTPRequest.engine", kEngineThreads));
    return *queue;
}

// ---------------------------------------------------------------- fields

void VPHTTPRequest::setValue(std::optional<std::string> value, std::string_view field) {
    fields_.with([&](Fields& f) {
        if (value) {
            f.request.setValueForHTTPHeaderField(std::move(*value), field);
        } else {
            f.request.removeValueForHTTPHeaderField(field);
        }
    });
}

void VPHTTPRequest::signRequestWithUsername(std::string_view username, std::string_view password) {
    // RFC 7617: the credentials travel as UTF-8, which is ASCII for ASCII names.
    setValue("Basic " + Base64::encode(fmt::format("{}:{}", username, password)), "Authorization");
}

bool VPHTTPRequest::sendParametersAsJSON() const {
    return fields_.get(&Fields::sendParametersAsJSON);
}

void VPHTTPRequest::setSendParametersAsJSON(bool json) {
    fields_.set(&Fields::sendParametersAsJSON, json);
}

std::optional<std::string> VPHTTPRequest::userAgent() const {
    return fields_.get(&Fields::userAgent);
}

void VPHTTPRequest::setUserAgent(std::optional<std::string> userAgent) {
    fields_.set(&Fields::userAgent, std::move(userAgent));
}

unsigned VPHTTPRequest::cachePolicy() const {
    return fields_.get(&Fields::cachePolicy);
}

void VPHTTPRequest::setCachePolicy(unsigned policy) {
    fields_.set(&Fields::cachePolicy, policy);
}

unsigned VPHTTPRequest::timeoutInterval() const {
    return effectiveTimeoutInterval(fields_.get(&Fields::timeoutInterval));
}

void VPHTTPRequest::setTimeoutInterval(unsigned seconds) {
    fields_.set(&Fields::timeoutInterval, seconds);
    // A caller may set the limit on a request its client has already started (the queue starts
    // requests at once): the running transfer takes it.
    if (isExecuting() && savePath_.empty()) applyDeadline();
}

URLRequest VPHTTPRequest::operationRequest() const {
    return fields_.get(&Fields::request);
}

Value VPHTTPRequest::parameters() const {
    return fields_.get(&Fields::parameters);
}

std::shared_ptr<HTTPURLResponse> VPHTTPRequest::operationURLResponse() const {
    return fields_.get(&Fields::response);
}

std::shared_ptr<VPHTTPClient> VPHTTPRequest::client() const {
    return fields_.get(&Fields::client).lock();
}

void VPHTTPRequest::setClient(const std::shared_ptr<VPHTTPClient>& client) {
    fields_.set(&Fields::client, client);
}

std::shared_ptr<HTTPTransfer> VPHTTPRequest::transfer() const {
    return fields_.get(&Fields::transfer);
}

// ---------------------------------------------------------------- encoding

std::string_view VPHTTPRequest::imageType(std::string_view bytes) {
    const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() >= 5 && b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF && b[3] == 0xE0) return "jpg";
    if (bytes.size() >= 4 && bytes.starts_with("GIF")) return "gif";
    if (bytes.size() >= 5 && b[0] == 0x89 && bytes.substr(1, 3) == "PNG") return "png";
    return {};
}

std::string VPHTTPRequest::parameterStringForDictionary(const Dictionary& parameters) const {
    std::string result;
    for (const auto& [key, value] : parameters) {
        if (!result.empty()) result += '&';
        result += key.stringView();
        result += '=';
        if (value.isString()) {
            result += encodedURLParameterString(value.stringView());
        } else if (value.isNumber()) {
            result += value.description();
        } else {
            throw std::invalid_argument(fmt::format(
                "{} requests only accept NSString, NSNumber and NSData parameters.", methodName(method_)));
        }
    }
    return result;
}

std::string VPHTTPRequest::multipartBody(const Dictionary& parameters) const {
    std::string body;
    int fileIndex = 0;
    auto fileHead = [&](std::string_view name, std::string_view fileName, std::string_view type) {
        body += fmt::format("--{}\r\n", kVPHTTPRequestBoundary);
        body +=
            fmt::format("Content-Disposition: attachment; name=\"{}\"; filename=\"{}\"\r\n", name, fileName);
        body += fmt::format("Content-Type: {}\r\n\r\n", type);
        ++fileIndex;
    };
    for (const auto& [key, value] : parameters) {
        const std::string_view name = key.stringView();
        if (auto url = fileParameter(value)) {
            fileHead(name, url->lastPathComponent(), "application/octet-stream");
            // Bytes that can't be read leave the part empty, and the request goes as it is.
            if (auto contents = url->isFileURL() ? Files::read(url->path()) : std::nullopt) {
                body += *contents;
            } else {
                SystemLog::log(fmt::format("[VPHTTPRequest] {} could not be read for the parameter {}",
                                           url->absoluteString(), name));
            }
        } else if (value.isBytes()) {
            const std::string_view bytes = value.bytesView();
            const std::string_view extension = imageType(bytes);
            // The index keeps the names of files sent in the same second apart.
            std::string fileName =
                fmt::format("userfile{}{:x}", fileIndex, static_cast<unsigned long long>(std::time(nullptr)));
            if (!extension.empty()) fileName += fmt::format(".{}", extension);
            fileHead(name, fileName,
                     extension.empty() ? std::string("application/octet-stream")
                                       : fmt::format("image/{}", extension));
            body += bytes;
        } else {
            body += fmt::format("--{}\r\n", kVPHTTPRequestBoundary);
            body += fmt::format("Content-Disposition: form-data; name=\"{}\"\r\n\r\n", name);
            body += value.isString() ? value.str() : value.description();
        }
        body += "\r\n";
    }
    body += fmt::format("--{}--\r\n", kVPHTTPRequestBoundary);
    return body;
}

void VPHTTPRequest::addParametersToRequest(const Value& parameters) {
    const char* method = methodName(method_);
    if (!hasBody(method_)) {
        if (!parameters.isDictionary()) {
            throw std::invalid_argument("GET and DELETE parameters must be provided as NSDictionary.");
        }
        const Dictionary dictionary = parameters.dictionary();
        if (dictionary.empty()) return;
        const std::string query = parameterStringForDictionary(dictionary);
        // Appended as text, keys as given, and always after a "?": an address that already has a
        // query gets a second one, which the server reads as part of its last value. Callers
        // that build addresses with queries rely on their parameters arriving this way.
        fields_.with([&](Fields& f) {
            f.request.url += "?" + query;
            f.urlParses = false;
        });
        return;
    }

    std::string body;
    std::string contentType;
    if (!sendParametersAsJSON()) {
        if (!parameters.isDictionary()) {
            throw std::invalid_argument("POST and PUT parameters must be provided as NSDictionary when "
                                        "sendParametersAsJSON is set to NO.");
        }
        const Dictionary dictionary = parameters.dictionary();
        bool multipart = false;
        for (const auto& entry : dictionary) {
            const Value& value = entry.value;
            if (value.isBytes() || fileParameter(value)) {
                multipart = true;
            } else if (!value.isString() && !value.isNumber()) {
                throw std::invalid_argument(
                    fmt::format("{} requests only accept NSString and NSNumber parameters.", method));
            }
        }
        if (multipart) {
            body = multipartBody(dictionary);
            contentType = fmt::format("multipart/form-data; boundary={}", kVPHTTPRequestBoundary);
        } else {
            body = parameterStringForDictionary(dictionary);
            contentType = "application/x-www-form-urlencoded";
        }
    } else {
        if (!parameters.isDictionary() && !parameters.isArray()) {
            throw std::invalid_argument(
                "POST and PUT parameters must be provided as NSDictionary or NSArray when "
                "sendParametersAsJSON is set to YES.");
        }
        try {
            body = Json::write(parameters);
        } catch (const JsonWriteError& e) {
            throw std::invalid_argument(fmt::format("Invalid type in JSON write: {}", e.what()));
        }
        contentType = "application/json";
    }
    fields_.with([&](Fields& f) {
        f.request.setValueForHTTPHeaderField(std::move(contentType), "Content-Type");
        f.request.body = std::move(body);
    });
}

// ---------------------------------------------------------------- start

void VPHTTPRequest::start() {
    if (isCancelled()) {
        finish();
        return;
    }
    // Scoped to the encoding, so that bytes given as parameters aren't held beside the body.
    if (const Value parameters = this->parameters(); !parameters.isNil()) addParametersToRequest(parameters);

    const std::optional<std::string> agent = defaultUserAgent();
    bool urlParses = false;
    URLRequest request = fields_.with([&](Fields& f) {
        f.parameters = Value();
        urlParses = f.urlParses;
        if (f.userAgent) {
            f.request.setValueForHTTPHeaderField(*f.userAgent, "User-Agent");
        } else if (agent) {
            f.request.setValueForHTTPHeaderField(*agent, "User-Agent");
        }
        if (savePath_.empty()) f.request.timeoutInterval = kNoProgressLimit;
        f.startTime = std::chrono::steady_clock::now();
        // The body goes to the transfer alone, so that it is held once.
        std::string body = std::exchange(f.request.body, std::string());
        URLRequest copy = f.request;
        copy.body = std::move(body);
        return copy;
    });
    taskCount_ = TaskCount::Raising;
    DispatchQueue::main().async([self = std::static_pointer_cast<VPHTTPRequest>(shared_from_this())] {
        TaskCount expected = TaskCount::Raising;
        if (self->taskCount_.compare_exchange_strong(expected, TaskCount::Raised)) increaseTaskCount();
    });

    setState(OperationState::Executing);
    VPErrorPtr failure = savePath_.empty() ? VPErrorPtr() : openSaveFile();
    if (!failure && !urlParses && !URL::URLWithString(request.url))
        failure = errorWithFailingURL(kNSURLErrorBadURL, "bad URL");
    if (failure) {
        saveDataDispatchQueue_->async([self = std::static_pointer_cast<VPHTTPRequest>(shared_from_this()),
                                       failure] { self->callCompletionBlockWithResponse(Value(), failure); });
        return;
    }

    const std::string address = request.url;
    HTTPTransfer::Options options;
    options.reportsUploadProgress = method_ == VPHTTPRequestMethod::POST && progress_ != nullptr;
    options.largeReads = !savePath_.empty();
    auto transfer = std::make_shared<HTTPTransfer>(
        std::move(request),
        std::make_shared<TransferEvents>(std::static_pointer_cast<VPHTTPRequest>(shared_from_this())),
        options);
    const bool handedOver = fields_.with([&](Fields& f) {
        // Cancelled while starting: the transfer never goes out. Starting only hands it to the
        // transfer thread, so it may happen under the lock.
        if (f.finishing) return false;
        f.transfer = transfer;
        // The limit in force now; a later change moves the deadline of the running transfer.
        if (savePath_.empty())
            transfer->setDeadline(f.startTime +
                                  std::chrono::seconds(effectiveTimeoutInterval(f.timeoutInterval)));
        transfer->start();
        return true;
    });
    if (!handedOver) return;
    SystemLog::log(fmt::format("[{}] {}", methodName(method_), address));
}

// A cancel that came first has already queued the closing of the file on the serial queue: the
// file is then not opened, since nothing would close it. Written on the serial queue only.
VPErrorPtr VPHTTPRequest::openSaveFile() {
    const bool opened = fields_.with([this](const Fields& f) {
        if (f.finishing) return true;
        fileDescriptor_ = ::open(savePath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        return fileDescriptor_ >= 0;
    });
    if (opened) return nullptr;
    return VPError::make(
        kVPHTTPRequestWriteErrorDomain, 0,
        Dictionary{{kNSLocalizedDescriptionKey, Value(fmt::format("The file \"{}\" could not be created: {}",
                                                                  savePath_, std::strerror(errno)))},
                   {"NSFilePath", Value(savePath_)}});
}

void VPHTTPRequest::applyDeadline() {
    // The limit is read and the deadline set under one lock, so that of two threads setting it at
    // once (`start` and a new limit) the one with the older limit can't set it last. A transfer
    // not yet made takes the limit when `start` makes it.
    fields_.with([&](const Fields& f) {
        if (completed_ || f.finishing || !f.transfer) return;
        f.transfer->setDeadline(f.startTime +
                                std::chrono::seconds(effectiveTimeoutInterval(f.timeoutInterval)));
    });
}

// ---------------------------------------------------------------- receiving (serial queue unless said)

VPErrorPtr VPHTTPRequest::errorWithFailingURL(std::int64_t code, const char* description) const {
    const std::string url = operationRequest().url;
    Dictionary info = Dictionary::create();
    if (description) info.set(kNSLocalizedDescriptionKey, Value(description));
    info.set(kNSURLErrorFailingURLErrorKey, Value(url));
    info.set(kNSURLErrorFailingURLStringErrorKey, Value(url));
    return VPError::make(kNSURLErrorDomain, code, info);
}

void VPHTTPRequest::requestTimeout() {
    if (completed_) return;
    if (auto transfer = this->transfer()) transfer->cancel();
    callCompletionBlockWithResponse(Value(),
                                    errorWithFailingURL(kNSURLErrorTimedOut, "The operation timed out."));
}

// On the transfer thread: the events go to the serial queue, in order, together at the end of the
// transfer thread's pass.
void VPHTTPRequest::keepEvent(TransferEvent event) {
    std::lock_guard lock(eventsMutex_);
    events_.push_back(std::move(event));
}

void VPHTTPRequest::queueEventsJob() {
    {
        std::lock_guard lock(eventsMutex_);
        // A job that is queued or running takes these too.
        if (events_.empty() || std::exchange(eventsJobQueued_, true)) return;
    }
    saveDataDispatchQueue_->async(
        [self = std::static_pointer_cast<VPHTTPRequest>(shared_from_this())] { self->handlePostedEvents(); });
}

void VPHTTPRequest::handlePostedEvents() {
    std::vector<TransferEvent> events;
    {
        std::lock_guard lock(eventsMutex_);
        events.swap(events_);
    }
    for (auto& event : events)
        handle(event);
    events.clear();
    // Events that came meanwhile get a job of their own, behind whatever else the queue holds.
    bool more = false;
    {
        std::lock_guard lock(eventsMutex_);
        more = !events_.empty();
        // The room the next pass fills is kept, rather than grown again each time.
        if (!more) events_.swap(events);
        eventsJobQueued_ = more;
    }
    if (more) {
        saveDataDispatchQueue_->async([self = std::static_pointer_cast<VPHTTPRequest>(shared_from_this())] {
            self->handlePostedEvents();
        });
    }
}

void VPHTTPRequest::handle(TransferEvent& event) {
    using Kind = TransferEvent::Kind;
    switch (event.kind) {
    case Kind::Response: {
        const std::int64_t expected = event.response->expectedContentLength;
        expectedContentLength_ = expected < 0 ? -1.0f : static_cast<float>(expected);
        receivedContentLength_ = 0;
        fields_.set(&Fields::response, std::move(event.response));
        break;
    }
    case Kind::Data:
        writeChunk(event.data);
        break;
    case Kind::Sent:
        if (!completed_)
            reportProgress(static_cast<float>(event.written) / static_cast<float>(event.expected));
        break;
    case Kind::Finished:
        finishLoading();
        break;
    case Kind::Failed:
        // An in-memory body has no time limit on its transfer but the deadline its own limit set.
        if (savePath_.empty() && event.error && event.error->code() == kNSURLErrorTimedOut) {
            requestTimeout();
        } else {
            callCompletionBlockWithResponse(Value(), std::move(event.error));
        }
        break;
    }
}

// On the transfer thread. False holds the transfer back until the queue has caught up.
bool VPHTTPRequest::receiveData(std::string_view data) {
    if (completed_) return true;
    paused_ = true;
    if (pendingBytes_.load() > kPendingHighWater) return false;
    paused_ = false;
    pendingBytes_ += data.size();
    TransferEvent event(TransferEvent::Kind::Data);
    event.data = data;
    keepEvent(std::move(event));
    return true;
}

void VPHTTPRequest::writeChunk(const std::string& chunk) {
    if (!completed_) {
        if (savePath_.empty()) {
            operationData_ += chunk;
        } else {
            std::size_t written = 0;
            while (written < chunk.size()) {
                const ssize_t n = ::write(fileDescriptor_, chunk.data() + written, chunk.size() - written);
                if (n < 0 && errno == EINTR) continue;
                if (n <= 0) {
                    const std::string reason = std::strerror(n < 0 ? errno : ENOSPC);
                    if (auto transfer = this->transfer()) transfer->cancel();
                    callCompletionBlockWithResponse(
                        Value(), VPError::make(kVPHTTPRequestWriteErrorDomain, 0,
                                               Dictionary{{kNSLocalizedDescriptionKey,
                                                           Value(fmt::format("Could not write to \"{}\": {}",
                                                                             savePath_, reason))},
                                                          {"NSFilePath", Value(savePath_)}}));
                    break;
                }
                written += static_cast<std::size_t>(n);
            }
        }
        // The received length counts only what progress reports, over a known length.
        const float expected = expectedContentLength_.load();
        if (progress_ && !completed_) {
            if (expected < 0) {
                reportProgress(-1.0f);
            } else {
                receivedContentLength_ = receivedContentLength_.load() + static_cast<float>(chunk.size());
                reportProgress(receivedContentLength_.load() / expected);
            }
        }
    }
    const std::size_t left = pendingBytes_ -= chunk.size();
    if (left <= kPendingLowWater && paused_.exchange(false)) {
        if (auto transfer = this->transfer()) transfer->resume();
    }
}

void VPHTTPRequest::finishLoading() {
    if (completed_) return;
    Value response = Value::bytes(operationData_);
    operationData_ = std::string();
    VPErrorPtr error;
    const auto urlResponse = operationURLResponse();
    const std::string_view data = response.bytesView();
    if (urlResponse && urlResponse->MIMEType() == "application/json" && !data.empty()) {
        Json::ReadOptions options;
        options.allowFragments = true;
        JsonParseError parseError("", 0);
        Value parsed = Json::tryParse(data, options, &parseError);
        if (parsed.isNil() && !Utf8::isValid(data)) parsed = Json::tryParse(bytesAsCharacters(data), options);
        if (!parsed.isNil()) {
            response = parsed;
        } else {
            error = VPError::make(
                kNSCocoaErrorDomain, kNSPropertyListReadCorruptError,
                Dictionary{
                    {kNSLocalizedDescriptionKey,
                     Value("The data couldn\u2019t be read because it isn\u2019t in the correct format.")},
                    {kNSDebugDescriptionErrorKey,
                     Value(
                         fmt::format("{} around character {}.", parseError.reason(), parseError.offset()))}});
        }
    }
    callCompletionBlockWithResponse(std::move(response), std::move(error));
}

// ---------------------------------------------------------------- completion

void VPHTTPRequest::callCompletionBlockWithResponse(Value response, VPErrorPtr error) {
    // Time-out, transfer end and write failure race for this step: the first one completes.
    // Under the lock that sets the deadline, so that none is set after this.
    const bool first = fields_.with([this](const Fields&) { return !completed_.exchange(true); });
    if (!first) return;
    closeFile();
    DispatchQueue::main().async([self = std::static_pointer_cast<VPHTTPRequest>(shared_from_this()),
                                 response = std::move(response), urlResponse = operationURLResponse(),
                                 error = std::move(error)]() mutable {
        self->completeOnMainQueue(response, urlResponse, std::move(error));
    });
}

void VPHTTPRequest::completeOnMainQueue(const Value& response,
                                        const std::shared_ptr<HTTPURLResponse>& urlResponse,
                                        VPErrorPtr error) {
    if (!error && urlResponse) {
        const long status = urlResponse->statusCode;
        if (status == 500) {
            error = errorWithFailingURL(kNSURLErrorBadServerResponse, "Bad Server Response.");
        } else if (status >= 300) {
            error = errorWithFailingURL(status, nullptr);
        }
    }
    Completion completion = std::move(completion_);
    if (completion && !isCancelled()) {
        // A failing callback must not keep the request from finishing and freeing its slot.
        try {
            completion(response, urlResponse, error);
        } catch (...) {
            VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);
        }
    }
    finish();
}

void VPHTTPRequest::cancel() {
    if (!isExecuting()) return;
    markCancelled();
    finish();
}

void VPHTTPRequest::reportProgress(float progress) const {
    // The caller's code: what it throws is logged, and the request goes on to its end.
    try {
        progress_(progress);
    } catch (...) {
        VPLogging::logCaughtException(__PRETTY_FUNCTION__, __LINE__);
    }
}

void VPHTTPRequest::finish() {
    std::shared_ptr<HTTPTransfer> transfer;
    const bool first = fields_.with([&](Fields& f) {
        // Cancel and the completion step may both end the request: only the first does.
        if (f.finishing) return false;
        f.finishing = true;
        transfer = std::move(f.transfer);
        return true;
    });
    if (!first) return;
    if (transfer) transfer->cancel();
    if (taskCount_.exchange(TaskCount::Done) == TaskCount::Raised) decreaseTaskCount();
    if (!savePath_.empty()) {
        saveDataDispatchQueue_->async(
            [self = std::static_pointer_cast<VPHTTPRequest>(shared_from_this())] { self->closeFile(); });
    }
    // From ready (cancelled before it ran) "isExecuting" is announced too, as at every end.
    if (setState(OperationState::Finished) == OperationState::Ready) didChangeValueForKey("isExecuting");
}

void VPHTTPRequest::closeFile() {
    if (fileDescriptor_ >= 0) ::close(fileDescriptor_);
    fileDescriptor_ = -1;
}

} // namespace velmo
