#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/archive/ZipResult.h"

namespace velmo {

/// An archive being written: the archive wrapper's only way into the ZIP library for writing.
/// Entries are recorded as they are added; their bytes are read, compressed and written by
/// `close`. A file that can no longer be read by then is left out, and the rest is written.
///
/// Deflated entries are compressed on worker threads ahead of the writing, which takes them
/// already compressed, in the order they were added. The archive is the same, byte for byte,
/// whatever the number of workers (encryption, which stays with the library, draws fresh random
/// salts each time).
class ZipOutput {
public:
    struct EntryOptions {
        /// -1 for the default level (6), 0 to store, 1 to 9 to deflate.
        int compressionLevel = -1;
        /// Empty for no encryption.
        std::string password;
        /// WinZip AES-256 when true, the traditional PKWARE cipher when false.
        bool aes = true;
        /// Directories only: files and data take their source's date (the file's modification
        /// time, or now), which is also what the traditional cipher's check byte is made from.
        std::uint32_t dosDate = 0;
        /// The POSIX mode with its file-type bits, kept in the top half of the external attributes.
        std::uint32_t mode = 0100644;
    };
    /// Hears how many entries `close` has written so far, and of how many.
    using CloseProgress = std::function<void(std::uint64_t written, std::uint64_t total)>;
    /// A file that `close` left out: its entry's name, its path and why it couldn't be read.
    struct DroppedFile {
        std::string name;
        std::string sourcePath;
        int error = 0;
    };

    /// `compressionThreads` workers deflate the entries, 0 for one per core.
    explicit ZipOutput(unsigned compressionThreads = 0);
    ~ZipOutput();
    ZipOutput(const ZipOutput&) = delete;
    ZipOutput& operator=(const ZipOutput&) = delete;

    /// Starts a new archive at `path`; an archive already there is replaced when `close` succeeds.
    ZipResult open(const std::string& path);
    bool isOpen() const;
    /// Entries added since `open`.
    std::uint64_t entryCount() const { return entries_; }

    /// An entry of a name already in the archive takes the earlier one's place: the archive holds a
    /// name once, and what any reader would unpack from two entries of one name is the later.
    /// The file's bytes, read when the archive is closed.
    ZipResult addFile(const std::string& name, const std::string& sourcePath, const EntryOptions& options);
    ZipResult addData(const std::string& name, std::string_view data, const EntryOptions& options);
    /// An entry of `name` plus "/" with no content, never encrypted: there is nothing to protect.
    ZipResult addDirectory(const std::string& name, const EntryOptions& options);

    /// Writes the archive. Files that no longer open are dropped and the rest written: the result
    /// is still `Ok`, and `droppedFiles` names them. An exception from `progress` stops the
    /// writing, drops the archive and is thrown again here.
    ZipResult close(const CloseProgress& progress = {});
    /// Drops the archive unwritten.
    void discard();

    const std::string& lastMessage() const { return lastMessage_; }
    /// The files the last `close` left out.
    const std::vector<DroppedFile>& droppedFiles() const { return dropped_; }

private:
    /// Counts an entry added, unless it took the place of one of the same name; one gone without
    /// a replacement is counted off.
    ZipResult counted(ZipResult result, std::int64_t replaced);
    /// Deletes the entries whose files no longer open; false when there is none.
    bool dropUnreadableFiles();
    /// One attempt at writing the archive, with the deflated entries compressed ahead of it.
    bool writeArchive();

    struct Impl;
    std::unique_ptr<Impl> impl_;
    std::uint64_t entries_ = 0;
    std::string lastMessage_;
    std::vector<DroppedFile> dropped_;
};

} // namespace velmo
