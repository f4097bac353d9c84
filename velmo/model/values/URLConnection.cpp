#include "velmo/model/values/URLConnection.h"

#include <memory>
#include <mutex>

#include <curl/curl.h>

#include "velmo/foundation/URLErrors.h"

namespace velmo {

namespace {

struct CurlDeleter {
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct SlistDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

size_t appendBody(char* data, size_t size, size_t count, void* user) {
    static_cast<std::string*>(user)->append(data, size * count);
    return size * count;
}

size_t appendHeader(char* data, size_t size, size_t count, void* user) {
    auto* headers = static_cast<std::vector<std::pair<std::string, std::string>>*>(user);
    std::string_view line(data, size * count);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.remove_suffix(1);
    // A new status line starts a new response (after a redirect or a 100 Continue).
    if (line.starts_with("HTTP/")) headers->clear();
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos) {
        std::string_view value = line.substr(colon + 1);
        while (!value.empty() && value.front() == ' ')
            value.remove_prefix(1);
        headers->emplace_back(std::string(line.substr(0, colon)), std::string(value));
    }
    return size * count;
}

} // namespace

std::optional<std::string> URLConnection::sendSynchronousRequest(const URLRequest& request,
                                                                 HTTPURLResponse* response,
                                                                 VPErrorPtr* error) {
    static std::once_flag curlReady;
    std::call_once(curlReady, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });

    std::unique_ptr<CURL, CurlDeleter> curl(curl_easy_init());
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
    std::unique_ptr<curl_slist, SlistDeleter> headerList;
    for (const auto& [name, value] : request.headers) {
        const std::string line = name + ": " + value;
        curl_slist* appended = curl_slist_append(headerList.get(), line.c_str());
        if (appended) {
            (void)headerList.release();
            headerList.reset(appended);
        }
    }
    char message[CURL_ERROR_SIZE] = {0};
    CURLcode code = curl ? CURLE_OK : CURLE_FAILED_INIT;
    const auto set = [&](auto option, auto value) {
        if (code == CURLE_OK) code = curl_easy_setopt(curl.get(), option, value);
    };
    const long idleSeconds =
        request.timeoutInterval > 0 ? static_cast<long>(request.timeoutInterval + 0.999) : 0;
    set(CURLOPT_URL, request.url.c_str());
    set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    set(CURLOPT_HTTPHEADER, headerList.get());
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_ERRORBUFFER, message);
    set(CURLOPT_WRITEFUNCTION, &appendBody);
    set(CURLOPT_WRITEDATA, &body);
    set(CURLOPT_HEADERFUNCTION, &appendHeader);
    set(CURLOPT_HEADERDATA, &headers);
    set(CURLOPT_ACCEPT_ENCODING, "");
    if (request.method == "HEAD") set(CURLOPT_NOBODY, 1L);
    if (!request.body.empty()) {
        set(CURLOPT_POSTFIELDS, request.body.data());
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    }
    if (idleSeconds > 0) {
        // The request's time-out counts the time without progress, not the whole transfer.
        set(CURLOPT_CONNECTTIMEOUT, idleSeconds);
        set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        set(CURLOPT_LOW_SPEED_TIME, idleSeconds);
    }
    if (code == CURLE_OK) code = curl_easy_perform(curl.get());

    if (code != CURLE_OK) {
        if (error) *error = urlErrorForCurlCode(code, request.url, message);
        return std::nullopt;
    }
    if (response) {
        long status = 0;
        char* effective = nullptr;
        curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
        curl_easy_getinfo(curl.get(), CURLINFO_EFFECTIVE_URL, &effective);
        response->statusCode = status;
        response->url = effective ? effective : request.url;
        response->headers = std::move(headers);
    }
    if (error) *error = nullptr;
    return body;
}

} // namespace velmo
