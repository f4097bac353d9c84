#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmo {

/// What a request says: URL, method, headers, body and the time-out between bytes.
struct URLRequest {
    std::string url;
    std::string method = "GET";
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    /// Seconds without progress before the request fails, as the platform's requests count it.
    double timeoutInterval = 60.0;

    /// Replaces a header of the same name (names compare without case).
    void setValueForHTTPHeaderField(std::string value, std::string_view field);
    /// Removes the header, as setting no value does on the platform.
    void removeValueForHTTPHeaderField(std::string_view field);
    /// The header's value, or empty.
    std::string valueForHTTPHeaderField(std::string_view field) const;
};

/// What a response said.
struct HTTPURLResponse {
    std::string url;
    long statusCode = 0;
    std::vector<std::pair<std::string, std::string>> headers;
    /// The length the server announced for the body, -1 when it announced none.
    std::int64_t expectedContentLength = -1;

    std::string valueForHTTPHeaderField(std::string_view field) const;
    /// The media type of "Content-Type", lower case, without parameters.
    std::string MIMEType() const;
    /// The "charset" parameter of "Content-Type", or empty.
    std::string textEncodingName() const;
};

} // namespace velmo
