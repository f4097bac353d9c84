#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "velmo/foundation/Object.h"

namespace velmo {

/// An absolute URL as an object, so that it can travel in containers (a file to upload among
/// request parameters, for one). Parsing follows RFC 3986.
class URL : public Object {
public:
    /// nullptr when the text is not an absolute URL.
    static std::shared_ptr<URL> URLWithString(std::string_view string);
    /// A "file" URL for an absolute or relative path (made absolute against the working folder).
    static std::shared_ptr<URL> fileURLWithPath(const std::filesystem::path& path);

    static const VDClass& classObject();
    const VDClass& objectClass() const override { return classObject(); }

    const std::string& absoluteString() const { return string_; }
    std::string scheme() const;
    /// The path with its percent-escapes decoded.
    const std::string& path() const { return path_; }
    /// The last non-empty segment of the path, decoded; empty for a path of only "/".
    std::string lastPathComponent() const;
    bool isFileURL() const;

    bool isEqual(const Object& other) const override;
    std::size_t hash() const override;
    std::string description() const override { return string_; }

private:
    struct Private {};

public:
    /// Use `URLWithString` or `fileURLWithPath`.
    URL(Private, std::string normalized, std::string path);

private:
    std::string string_;
    std::string path_; // decoded once, when parsed
};

} // namespace velmo
