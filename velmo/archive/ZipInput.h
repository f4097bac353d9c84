#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "velmo/archive/VPZipArchiveDelegate.h"
#include "velmo/archive/ZipResult.h"

namespace velmo {

/// An archive open for reading, one entry at a time: the archive wrapper's only way into the ZIP
/// library for reading.
class ZipInput {
public:
    ZipInput();
    ~ZipInput();
    ZipInput(const ZipInput&) = delete;
    ZipInput& operator=(const ZipInput&) = delete;

    ZipResult open(const std::string& path);
    void close();

    std::uint64_t entryCount() const;
    std::string comment() const;

    ZipResult entryInfo(std::uint64_t index, VPZipFileInfo& info);

    /// Opens an entry for reading, closing the one open before. Without a password an encrypted
    /// entry fails with `PasswordError`; the empty password is a password like any other.
    ZipResult openEntry(std::uint64_t index, const std::optional<std::string>& password);
    /// Reads from the open entry; `count` is 0 at its end. The checksum is checked at the end.
    ZipResult read(char* buffer, std::size_t size, std::size_t& count);
    void closeEntry();

    /// The library's text for the last failure, for failure reasons and logs.
    const std::string& lastMessage() const { return lastMessage_; }

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    std::string lastMessage_;
};

} // namespace velmo
