#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "velmo/archive/ParallelInflater.h"
#include "velmo/archive/VPZipArchiveDelegate.h"
#include "velmo/archive/VPZipUnzipLimits.h"
#include "velmo/archive/ZipInput.h"

namespace velmo {

/// One run of unpacking an archive into a destination: the work behind the main unpacking form.
class ZipUnpacker {
public:
    /// `VPZipArchive::ProgressHandler`, spelled out: the unpacker sits below the archive class.
    using ProgressHandler = std::function<void(const std::string& entry, const VPZipFileInfo& info,
                                               std::int64_t entryNumber, std::int64_t total)>;

    struct Options {
        bool preserveAttributes = true;
        bool overwrite = true;
        /// Inner archives are unpacked while this is not 0; below 0, at every depth (up to a bound).
        int nestedZipLevel = 0;
        std::string password;
        VPZipUnzipLimits limits;
    };

    ZipUnpacker(std::string path, std::string destination, Options options, VPZipArchiveDelegate* delegate,
                ProgressHandler progressHandler);

    /// Unpacks every entry. `error` is the error to report, which a successful run can have too
    /// (a symbolic link that could not be made).
    bool run(VPErrorPtr& error);
    /// False when the archive never opened.
    bool opened() const { return opened_; }

private:
    using Operation = VPZipArchiveDelegate::Operation;

    template <class Call> void tell(Operation operation, Call&& call) {
        if (delegate_ && delegate_->respondsTo(operation)) call(*delegate_);
    }

    /// The password entries are opened with.
    std::optional<std::string> entryPassword() const;
    VPErrorPtr checkDeclaredSizes();
    /// The error of a run that passes a limit.
    VPErrorPtr limitPassed(std::string reason);
    /// Unpacks an inner archive beside itself with what is left of the limits; true on success.
    bool unpackNested(const std::filesystem::path& archive);
    void unpackEntry(std::uint64_t index);
    /// Where the entry goes, when it can go there: nullptr, or the entry's own failure. A path that
    /// leads out of the destination through a link fails the run instead.
    VPErrorPtr checkPlace(const std::filesystem::path& fullPath, bool isDirectory, const std::string& name);
    /// nullptr, or the entry's failure; a full disk fails the run.
    VPErrorPtr makeDirectory(const std::filesystem::path& directory);
    /// The open entry's bytes into `target`, through a temporary file beside it: true once in place.
    /// `entryError` is set for a failure the run goes on after.
    bool writeRegularFile(const std::filesystem::path& target, VPErrorPtr& entryError);
    void finishRegularFile(const std::filesystem::path& target, const VPZipFileInfo& info);
    /// nullptr, or why the link was not made.
    VPErrorPtr writeSymbolicLink(const std::filesystem::path& target, const std::string& name);
    /// The rest of the open entry, up to `limit` bytes; `tooLong` when there is more. False when the
    /// run has failed on the data.
    bool readEntry(std::string& content, std::size_t limit, bool& tooLong);
    /// The next bytes of the open entry, 0 at its end; false when the run has failed on them
    /// (a checksum that doesn't match ends it too, reported after the loop).
    bool readChunk(char* buffer, std::size_t size, std::size_t& count);
    void applyDirectoryDates();
    /// False for a path that leads out of the destination, and when it can't be resolved (`ec`).
    bool staysInside(const std::filesystem::path& path, std::error_code& ec) const;
    void fail(VPErrorPtr error);
    void tellFailure(std::int64_t fileIndex, const VPZipFileInfo& info, const VPErrorPtr& error);

    std::string path_;
    std::string destination_;
    Options options_;
    VPZipArchiveDelegate* delegate_;
    ProgressHandler progressHandler_;

    ZipInput input_;
    /// Entries' bytes, read ahead on other cores; null on one core, where `input_` reads them.
    std::unique_ptr<ParallelInflater> inflater_;
    bool opened_ = false;
    std::filesystem::path root_;
    VPZipArchiveInfo zipInfo_;
    std::uint64_t fileSize_ = 0;
    std::uint64_t position_ = 0;
    /// Bytes of entries written, inner archives' included, against the total limit.
    std::uint64_t written_ = 0;
    /// Entries' paths and DOS dates, for the directories' dates at the end.
    std::vector<std::pair<std::filesystem::path, std::uint32_t>> dates_;
    /// How many archives this one is inside.
    int depth_ = 0;
    /// The entry being read, and its name for messages about its data.
    std::uint64_t entryIndex_ = 0;
    std::string entryName_;

    bool failed_ = false;
    bool cancelled_ = false;
    /// Set when an entry's checksum failed; reported when no other error was kept.
    VPErrorPtr crcError_;
    /// Why the entry that ended the run failed, naming it, for the delegate; a read failure has one
    /// here though the run reports no error of its own.
    VPErrorPtr runEnding_;
    bool limitPassed_ = false;
    VPErrorPtr error_;
};

} // namespace velmo
