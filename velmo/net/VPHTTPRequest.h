#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/Guarded.h"
#include "velmo/foundation/Operation.h"
#include "velmo/foundation/URLRequest.h"
#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"

// The resolver's headers define DELETE as a macro; the method of that name is declared as written.
#pragma push_macro("DELETE")
#undef DELETE

namespace velmo {

class HTTPTransfer;
class VPHTTPClient;

/// The stored numbers of the methods. (Where <arpa/nameser_compat.h> is included, undefine its
/// DELETE macro to use that name.)
enum class VPHTTPRequestMethod : int { GET = 0, POST = 1, PUT = 2, DELETE = 3, HEAD = 4 };

/// Domain of the error that ends a request whose body could not be written.
inline constexpr const char* kVPHTTPRequestWriteErrorDomain = "VPHTTPRequestWriteError";
/// Label of each request's own serial queue.
inline constexpr const char* kVPHTTPRequestQueueLabel = "com.velmoapp.VPHTTPRequest";
/// Boundary of multipart bodies.
inline constexpr const char* kVPHTTPRequestBoundary = "VPHTTPRequestBoundary";
/// The parser's error for a JSON body that does not parse.
inline constexpr const char* kNSCocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::int64_t kNSPropertyListReadCorruptError = 3840;
inline constexpr const char* kNSDebugDescriptionErrorKey = "NSDebugDescription";

/// Percent-escapes, in UTF-8, every character but letters, digits, "-", "." and "_": what a URL
/// never allows as it stands and every character with a meaning in URLs or forms.
std::string encodedURLParameterString(std::string_view string);

/// One HTTP exchange as a queueable operation: encodes its parameters into the request, runs the
/// transfer, collects the body in memory or in a file, decodes JSON, turns HTTP failures into
/// errors, and calls its completion once, on the main queue.
///
/// Concurrent: `start` hands the transfer over and returns; the operation is finished when its
/// completion step has run on the main queue, or when it is cancelled. Body writes, progress
/// reports and the finishing step run in order on the request's own serial queue.
///
/// Time-outs: a body collected in memory is cut off `timeoutInterval` seconds after `start`.
/// A body saved to a file is never cut off for taking long: `timeoutInterval` doesn't apply to
/// it. What stays is the transfer's stall guard, the request's own time-out as the platform has
/// it (60 s), counted only while not one byte moves: a download that keeps moving, however
/// slowly, always completes, and one whose server went silent still ends.
///
/// The HTTP engine (each request's serial queue and the starts of a client's queue) runs on
/// threads of its own, `engineQueue` and, for bodies saved to files, a pool for file writes; the
/// time-out of an in-memory body is the deadline of its transfer, kept by the transfer thread.
class VPHTTPRequest : public Operation {
public:
    /// (response, URL response, error): the response is the parsed JSON of an "application/json"
    /// body, else the body's bytes (empty when saved to a file), nil after a failed transfer.
    using Completion = std::function<void(const Value& response, std::shared_ptr<HTTPURLResponse> urlResponse,
                                          VPErrorPtr error)>;
    /// A fraction from 0 to 1, or -1 while the length of the body is unknown.
    using Progress = std::function<void(float progress)>;

    /// initWithAddress:method:parameters:saveToPath:progress:completion: — `parameters` is a
    /// dictionary, an array (JSON bodies only) or nil; an empty `saveToPath` keeps the body in
    /// memory.
    VPHTTPRequest(std::string_view address, VPHTTPRequestMethod method, Value parameters,
                  std::string saveToPath, Progress progress, Completion completion);
    /// initWithAddress:method:parameters:completion:
    VPHTTPRequest(std::string_view address, VPHTTPRequestMethod method, Value parameters,
                  Completion completion);
    ~VPHTTPRequest() override;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    // ---- create and start at once, on the calling thread

    /// GET:parameters:completion:
    static std::shared_ptr<VPHTTPRequest> GET(std::string_view address, Value parameters,
                                              Completion completion);
    /// GET:parameters:saveToPath:progress:completion:
    static std::shared_ptr<VPHTTPRequest> GET(std::string_view address, Value parameters,
                                              std::string saveToPath, Progress progress,
                                              Completion completion);
    /// POST:parameters:completion:
    static std::shared_ptr<VPHTTPRequest> POST(std::string_view address, Value parameters,
                                               Completion completion);
    /// POST:parameters:progress:completion:
    static std::shared_ptr<VPHTTPRequest> POST(std::string_view address, Value parameters, Progress progress,
                                               Completion completion);
    /// PUT:parameters:completion:
    static std::shared_ptr<VPHTTPRequest> PUT(std::string_view address, Value parameters,
                                              Completion completion);
    /// DELETE:parameters:completion:
    static std::shared_ptr<VPHTTPRequest> DELETE(std::string_view address, Value parameters,
                                                 Completion completion);
    /// HEAD:parameters:completion:
    static std::shared_ptr<VPHTTPRequest> HEAD(std::string_view address, Value parameters,
                                               Completion completion);

    // ---- process-wide values

    /// 20 seconds until changed.
    static double defaultTimeoutInterval();
    static void setDefaultTimeoutInterval(double seconds);
    static std::optional<std::string> defaultUserAgent();
    static void setDefaultUserAgent(std::optional<std::string> userAgent);
    /// Requests started and not yet finished (VPHTTPRequestTaskCount); raised on the main queue.
    static unsigned taskCount();
    /// The engine's thread: starts of a client's queue, and the serial queues of bodies kept in
    /// memory (those saved to files have threads of their own). Never shared with work that waits
    /// on requests: jobs of the global queues block until their requests end, and requests that
    /// needed a global thread to end would then wait for those jobs forever.
    static const std::shared_ptr<DispatchQueue>& engineQueue();

    // ---- the operation

    /// Raises `std::invalid_argument` for parameters of the wrong kinds, before anything starts.
    void start() override;
    /// Only a running request can be cancelled; its completion is then never called. A request
    /// that has not started ignores `cancel` and runs when its turn comes.
    void cancel() override;
    bool isConcurrent() const override { return true; }

    // ---- the request; changes after `start` have no effect unless said otherwise

    /// setValue:forHTTPHeaderField: — an absent value removes the field.
    void setValue(std::optional<std::string> value, std::string_view field);
    /// signRequestWithUsername:password: — Basic credentials in "Authorization".
    void signRequestWithUsername(std::string_view username, std::string_view password);

    bool sendParametersAsJSON() const;
    void setSendParametersAsJSON(bool json);
    std::optional<std::string> userAgent() const;
    void setUserAgent(std::optional<std::string> userAgent);
    /// The platform's cache policy, kept for callers that set it. Transfers keep no local cache,
    /// so every policy loads from the origin.
    unsigned cachePolicy() const;
    void setCachePolicy(unsigned policy);
    /// Seconds; the field when set, else the default truncated to whole seconds.
    unsigned timeoutInterval() const;
    /// 0 restores the default. A running request with an in-memory body takes the new limit,
    /// counted from its start.
    void setTimeoutInterval(unsigned seconds);

    VPHTTPRequestMethod method() const { return method_; }
    /// The URL's path, decoded, without its first "/"; the key of cancelling by path.
    const std::string& requestPath() const { return requestPath_; }
    const std::string& operationSavePath() const { return savePath_; }
    /// A copy of the request as it stands. The body goes to the transfer at `start`, so that it is
    /// held once: from then on the copy has none.
    URLRequest operationRequest() const;
    /// The parameters as given; cleared once `start` has encoded them.
    Value parameters() const;
    std::shared_ptr<HTTPURLResponse> operationURLResponse() const;
    /// From the response; -1 when the server announced no length.
    float expectedContentLength() const { return expectedContentLength_.load(); }
    /// Bytes of body received since the response.
    float receivedContentLength() const { return receivedContentLength_.load(); }

    std::shared_ptr<VPHTTPClient> client() const;
    void setClient(const std::shared_ptr<VPHTTPClient>& client);

    /// getImageType: "jpg", "gif" or "png" when the bytes begin as such an image does, else empty.
    static std::string_view imageType(std::string_view bytes);

private:
    struct TransferEvents;
    /// One event of the transfer, waiting for the serial queue.
    struct TransferEvent {
        enum class Kind { Response, Data, Sent, Finished, Failed };
        explicit TransferEvent(Kind kind) : kind(kind) {}
        Kind kind;
        std::shared_ptr<HTTPURLResponse> response;
        std::string data;
        std::int64_t written = 0;
        std::int64_t expected = 0;
        VPErrorPtr error;
    };
    // Checks the encodings on their own, with nothing sent.
    friend struct VPHTTPRequestEncodingProbe;

    // Encoding (addParametersToRequest:), run by `start`.
    void addParametersToRequest(const Value& parameters);
    std::string parameterStringForDictionary(const Dictionary& parameters) const;
    std::string multipartBody(const Dictionary& parameters) const;

    /// Gives the running transfer of an in-memory body the end that the limit in force sets.
    void applyDeadline();
    VPErrorPtr openSaveFile();
    void reportProgress(float progress) const;
    void requestTimeout();
    bool receiveData(std::string_view data);
    /// On the transfer thread: keeps the event for the serial queue; at the end of the transfer
    /// thread's pass, `queueEventsJob` queues one job for all the events kept so far.
    void keepEvent(TransferEvent event);
    void queueEventsJob();
    /// On the serial queue: handles the events kept so far, in order.
    void handlePostedEvents();
    void handle(TransferEvent& event);
    void writeChunk(const std::string& chunk);
    void finishLoading();
    /// callCompletionBlockWithResponse:error:
    void callCompletionBlockWithResponse(Value response, VPErrorPtr error);
    void completeOnMainQueue(const Value& response, const std::shared_ptr<HTTPURLResponse>& urlResponse,
                             VPErrorPtr error);
    void finish();
    std::shared_ptr<HTTPTransfer> transfer() const;
    VPErrorPtr errorWithFailingURL(std::int64_t code, const char* description) const;
    void closeFile();

    const VPHTTPRequestMethod method_;
    const std::string savePath_;
    const Progress progress_;
    Completion completion_; // taken by the completion step on the main queue
    std::string requestPath_;

    // What crosses threads: the caller's setters, `start`, the transfer's events, the serial queue
    // and the main queue all meet here, in one block under one lock. The same lock orders the
    // setting of the transfer's deadline against `finishing`.
    struct Fields {
        URLRequest request;
        Value parameters;
        bool sendParametersAsJSON = false;
        std::optional<std::string> userAgent;
        unsigned cachePolicy = 0;
        unsigned timeoutInterval = 0;
        // The client only made the request: a weak link, so that neither keeps the other.
        std::weak_ptr<VPHTTPClient> client;
        std::shared_ptr<HTTPTransfer> transfer;
        std::shared_ptr<HTTPURLResponse> response;
        std::chrono::steady_clock::time_point startTime;
        bool finishing = false;
        bool urlParses = false; // the request's URL as it stands is known to parse
    };
    Guarded<Fields> fields_;

    std::shared_ptr<DispatchQueue> saveDataDispatchQueue_;

    // The transfer's events on their way to the serial queue: one job takes all that have come,
    // so that a small answer (head, body and end in one go) costs the queue one job, not three.
    std::mutex eventsMutex_;
    std::vector<TransferEvent> events_;
    bool eventsJobQueued_ = false;

    // Touched on the serial queue only, but for the file's opening by `start`, under the fields' lock,
    // before the transfer can queue a write.
    std::string operationData_;
    int fileDescriptor_ = -1;

    std::atomic<float> expectedContentLength_{-1};
    std::atomic<float> receivedContentLength_{0};
    std::atomic<bool> completed_{false};
    std::atomic<std::size_t> pendingBytes_{0};
    std::atomic<bool> paused_{false};
    // This request's share of the task count: raised on the main queue, lowered by `finish`,
    // whichever runs first, so a request cancelled before the raise leaves the count as it was.
    enum class TaskCount { None, Raising, Raised, Done };
    std::atomic<TaskCount> taskCount_{TaskCount::None};
};

} // namespace velmo

#pragma pop_macro("DELETE")
