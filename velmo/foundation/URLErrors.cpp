#include "velmo/foundation/URLErrors.h"

#include <curl/curl.h>

namespace velmo {

namespace {
struct Mapped {
    std::int64_t code;
    const char* description;
};

Mapped mapCurlCode(CURLcode code) {
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
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    default:
        return {kNSURLErrorNetworkConnectionLost, "The network connection was lost."};
    }
}
} // namespace

VPErrorPtr urlErrorForCurlCode(int curlCode, const std::string& url, const std::string& detail) {
    const Mapped mapped = mapCurlCode(static_cast<CURLcode>(curlCode));
    Dictionary info{
        {kNSLocalizedDescriptionKey, Value(mapped.description)},
        {kNSURLErrorFailingURLStringErrorKey, Value(url)},
        {kNSURLErrorFailingURLErrorKey, Value(url)},
    };
    if (!detail.empty()) info.set(kNSLocalizedFailureReasonErrorKey, Value(detail));
    return VPError::make(kNSURLErrorDomain, mapped.code, info);
}

} // namespace velmo
