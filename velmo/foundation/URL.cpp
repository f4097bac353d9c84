#include "velmo/foundation/URL.h"

#include <boost/url/parse.hpp>
#include <boost/url/url.hpp>

#include "velmo/foundation/VDClass.h"

namespace velmo {

namespace urls = boost::urls;

URL::URL(Private, std::string normalized, std::string path)
    : string_(std::move(normalized)), path_(std::move(path)) {}

std::shared_ptr<URL> URL::URLWithString(std::string_view string) {
    auto parsed = urls::parse_uri(string);
    if (!parsed) return nullptr;
    return std::make_shared<URL>(Private{}, std::string(parsed->buffer()), std::string(parsed->path()));
}

std::shared_ptr<URL> URL::fileURLWithPath(const std::filesystem::path& path) {
    std::error_code ec;
    std::filesystem::path absolute = std::filesystem::absolute(path, ec);
    if (ec) absolute = path;
    urls::url url;
    url.set_scheme("file");
    url.set_encoded_host("");
    url.set_path(absolute.generic_string());
    return std::make_shared<URL>(Private{}, std::string(url.buffer()), std::string(url.path()));
}

const VDClass& URL::classObject() {
    static const VDClass cls("NSURL", nullptr, nullptr);
    return cls;
}

std::string URL::scheme() const {
    return std::string(urls::parse_uri(string_)->scheme());
}

std::string URL::lastPathComponent() const {
    const auto url = *urls::parse_uri(string_);
    std::string last;
    for (auto segment : url.segments()) {
        if (!segment.empty()) last = segment;
    }
    return last;
}

bool URL::isFileURL() const {
    return urls::parse_uri(string_)->scheme_id() == urls::scheme::file;
}

bool URL::isEqual(const Object& other) const {
    const auto* url = dynamic_cast<const URL*>(&other);
    return url && url->string_ == string_;
}

std::size_t URL::hash() const {
    return std::hash<std::string>{}(string_);
}

} // namespace velmo
