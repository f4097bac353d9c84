#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velmo/archive/ReadAhead.h"
#include "velmo/archive/ZipInput.h"
#include "velmo/archive/ZipResult.h"

namespace velmo {

/// Reads an archive's entries on worker threads, ahead of a single reader that takes each entry's
/// bytes in order as it writes them out: decrypting, inflating and checking the checksum happen off
/// the reader's thread. Each worker reads the archive through a handle of its own, since the ZIP
/// library serves one reader per handle. The handles are opened before any worker starts, so the
/// workers read the archive that was there then, whatever the reader writes meanwhile (an entry
/// can take the archive's own name).
class ParallelInflater {
public:
    /// Starts min(`threads`, entries) workers over entries 0 to `entries` - 1, each opened as
    /// `ZipInput::openEntry` opens it, with `password`. Only as many as have a handle on the archive.
    ParallelInflater(std::string archivePath, std::uint64_t entries, std::optional<std::string> password,
                     unsigned threads, std::size_t bufferLimit = ReadAhead::kDefaultBufferLimit);

    /// Reads entry `index` as `ZipInput::read` reads an open entry: `count` is 0 at its end, and a
    /// checksum that doesn't match fails there. Reading an entry gives up those before it.
    ZipResult read(std::size_t index, char* buffer, std::size_t size, std::size_t& count);
    /// The library's text for the last failure `read` returned.
    const std::string& lastMessage() const { return lastMessage_; }
    /// True when no worker could be started: the entries must then be read some other way.
    bool unstaffed() const { return handles_.empty() || ahead_.unstaffed(); }

private:
    /// A worker's own handle on the archive.
    class Reader;

    /// The archive opened `count` times, or fewer when it can't be opened again.
    static std::vector<std::unique_ptr<ZipInput>> openHandles(const std::string& path, std::size_t count);

    const std::optional<std::string> password_;
    std::vector<std::unique_ptr<ZipInput>> handles_;
    /// The next handle a worker takes.
    std::atomic<std::size_t> handed_{0};
    /// Why an entry's bytes ended early, with the library's text; written by the worker before it
    /// ends the entry.
    std::vector<ZipResult> failures_;
    std::vector<std::string> messages_;
    std::string lastMessage_;
    /// Last, so that its workers stop before what they read and write goes.
    ReadAhead ahead_;
};

} // namespace velmo
