#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "velmo/foundation/Guarded.h"
#include "velmo/foundation/Object.h"
#include "velmo/foundation/OperationQueue.h"
#include "velmo/foundation/Value.h"
#include "velmo/net/VPHTTPRequest.h"

// The resolver's headers define DELETE as a macro; the method of that name is declared as written.
#pragma push_macro("DELETE")
#undef DELETE

namespace velmo {

/// What many requests have in common — base path, base parameters, default headers, Basic
/// credentials, caching, time-out, user agent — and a private queue that runs them.
///
/// Fields may be set from any thread while others make requests (a background job sets a header,
/// the main thread the token, page loaders send from their own queues): they are kept under a
/// lock, and each request takes a copy of them as they stand when it is queued.
class VPHTTPClient : public Object {
public:
    VPHTTPClient();
    ~VPHTTPClient() override;

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    /// The client under "master".
    static std::shared_ptr<VPHTTPClient> sharedClient();
    /// One client per identifier, made on first use, whichever class asks.
    static std::shared_ptr<VPHTTPClient> sharedClientWithIdentifier(std::string_view identifier);
    /// sharedClientWithIdentifier: as sent to the class `receiver`. A receiver that conforms to
    /// VVAPIClientInterface (`receiverIsAPIClient`) gets an instance of the class bound to that
    /// interface in VVDI, which is then bound there as the interface's instance; any other
    /// receiver gets an instance of itself.
    static std::shared_ptr<VPHTTPClient> sharedClientWithIdentifier(std::string_view identifier,
                                                                    const VDClass& receiver,
                                                                    bool receiverIsAPIClient);

    // ---- fields

    /// Copied to each request; stays as last set.
    bool sendParametersAsJSON() const;
    void setSendParametersAsJSON(bool json);
    /// Merged into the parameters of each request; on a clash these win. Kept as a copy: a change
    /// to the given dictionary afterwards doesn't reach the client.
    Dictionary baseParameters() const;
    void setBaseParameters(const Dictionary& parameters);
    std::optional<std::string> username() const;
    std::optional<std::string> password() const;
    /// Put in front of each path; "" by default.
    std::string basePath() const;
    void setBasePath(std::string basePath);
    std::optional<std::string> userAgent() const;
    void setUserAgent(std::optional<std::string> userAgent);
    unsigned cachePolicy() const;
    void setCachePolicy(unsigned policy);
    /// Seconds; 0 leaves each request the default.
    unsigned timeoutInterval() const;
    void setTimeoutInterval(unsigned seconds);
    OperationQueue& operationQueue() { return operationQueue_; }
    /// A copy of the headers of each request; `setValue` changes them.
    Dictionary HTTPHeaderFields() const;

    /// setBasicAuthWithUsername:password:
    void setBasicAuthWithUsername(std::optional<std::string> username, std::optional<std::string> password);
    /// setValue:forHTTPHeaderField: — an absent value removes the field.
    void setValue(std::optional<std::string> value, std::string_view field);

    // ---- sending; each returns the queued request, which may still be changed until it starts

    using Completion = VPHTTPRequest::Completion;
    using Progress = VPHTTPRequest::Progress;

    /// GET:parameters:completion:
    std::shared_ptr<VPHTTPRequest> GET(std::string_view path, Value parameters, Completion completion);
    /// GET:parameters:saveToPath:progress:completion:
    std::shared_ptr<VPHTTPRequest> GET(std::string_view path, Value parameters, std::string saveToPath,
                                       Progress progress, Completion completion);
    /// POST:parameters:completion:
    std::shared_ptr<VPHTTPRequest> POST(std::string_view path, Value parameters, Completion completion);
    /// POST:parameters:requestHTTPHeaders:completion:
    std::shared_ptr<VPHTTPRequest> POST(std::string_view path, Value parameters,
                                        Dictionary requestHTTPHeaders, Completion completion);
    /// POST:parameters:progress:completion:
    std::shared_ptr<VPHTTPRequest> POST(std::string_view path, Value parameters, Progress progress,
                                        Completion completion);
    /// PUT:parameters:completion:
    std::shared_ptr<VPHTTPRequest> PUT(std::string_view path, Value parameters, Completion completion);
    /// DELETE:parameters:completion:
    std::shared_ptr<VPHTTPRequest> DELETE(std::string_view path, Value parameters, Completion completion);
    /// HEAD:parameters:completion:
    std::shared_ptr<VPHTTPRequest> HEAD(std::string_view path, Value parameters, Completion completion);

    /// Cancels each queued request whose `requestPath` is exactly `path` (no leading "/").
    void cancelRequestsWithPath(std::string_view path);
    void cancelAllRequests();

protected:
    /// queueRequest:method:parameters:saveToPath:progress:requestHTTPHeaders:completion: — where
    /// every sending form arrives.
    virtual std::shared_ptr<VPHTTPRequest> queueRequest(std::string_view path, VPHTTPRequestMethod method,
                                                        Value parameters, std::string saveToPath,
                                                        Progress progress, Dictionary requestHTTPHeaders,
                                                        Completion completion);
    /// queueRequest: — adds the request to the queue.
    virtual void queueRequest(const std::shared_ptr<VPHTTPRequest>& request);

private:
    // Written by any thread while others queue requests, in one block under one lock.
    struct Fields {
        bool sendParametersAsJSON = false;
        // Replaced, never changed in place, so sharing it is as good as a copy.
        Dictionary baseParameters;
        std::optional<std::string> username;
        std::optional<std::string> password;
        std::string basePath;
        std::optional<std::string> userAgent;
        unsigned cachePolicy = 0;
        unsigned timeoutInterval = 0;
        // Changed in place: copied when read.
        Dictionary HTTPHeaderFields = Dictionary::create();
    };
    /// The fields as they stand, copied under the lock.
    Fields fields() const;

    Guarded<Fields> fields_;

    // Requests start on the engine's threads, which nothing that waits on a request can hold.
    OperationQueue operationQueue_{"VPHTTPClient", VPHTTPRequest::engineQueue()};
};

} // namespace velmo

#pragma pop_macro("DELETE")
