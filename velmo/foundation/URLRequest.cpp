#include "velmo/foundation/URLRequest.h"

#include <algorithm>
#include <strings.h>

namespace velmo {

namespace {
bool sameField(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::string headerValue(const std::vector<std::pair<std::string, std::string>>& headers, std::string_view field) {
    for (const auto& [name, value] : headers) {
        if (sameField(name, field)) return value;
    }
    return {};
}

std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

std::string lower(std::string_view s) {
    std::string out(s);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return std::tolower(c); });
    return out;
}
} // namespace

void URLRequest::setValueForHTTPHeaderField(std::string value, std::string_view field) {
    removeValueForHTTPHeaderField(field);
    headers.emplace_back(std::string(field), std::move(value));
}

void URLRequest::removeValueForHTTPHeaderField(std::string_view field) {
    std::erase_if(headers, [&](const auto& h) { return sameField(h.first, field); });
}

std::string URLRequest::valueForHTTPHeaderField(std::string_view field) const { return headerValue(headers, field); }

std::string HTTPURLResponse::valueForHTTPHeaderField(std::string_view field) const {
    return headerValue(headers, field);
}

std::string HTTPURLResponse::MIMEType() const {
    const std::string type = valueForHTTPHeaderField("Content-Type");
    return lower(trim(std::string_view(type).substr(0, type.find(';'))));
}

std::string HTTPURLResponse::textEncodingName() const {
    const std::string type = valueForHTTPHeaderField("Content-Type");
    std::string_view rest(type);
    for (std::size_t semi = rest.find(';'); semi != std::string_view::npos; semi = rest.find(';')) {
        rest.remove_prefix(semi + 1);
        std::string_view param = trim(rest.substr(0, rest.find(';')));
        if (param.size() > 8 && lower(param.substr(0, 8)) == "charset=") {
            std::string_view value = param.substr(8);
            if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
            return std::string(value);
        }
    }
    return {};
}

} // namespace velmo
