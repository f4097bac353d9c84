#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "velmo/archive/VPZipArchiveDelegate.h"
#include "velmo/archive/VPZipArchiveError.h"
#include "velmo/archive/VPZipUnzipLimits.h"
#include "velmo/foundation/VPError.h"

namespace velmo {

class ZipOutput;
// The ZIP library's results, as the writing instance acts on them; internal to the archive.
enum class ZipResult;

/// Reads ZIP archives into files, directories and symbolic links with their dates and
/// permissions, and writes archives from files, directories and data.
///
/// Reading is a set of class operations. Every unpacking form leads to the one main form; the
/// short forms fill in: preserve attributes, overwrite, no nesting, no password, no error, no
/// delegate, no handlers. Writing goes through an instance made on the archive's path, or through
/// the class operations that open, write and close one.
///
/// Passwords are UTF-8 text; an empty password means none. Instances are not shared between threads.
class VPZipArchive {
public:
    /// (entry name, entry information, entry index, number of entries), after each unpacked entry.
    using ProgressHandler = std::function<void(const std::string& entry, const VPZipFileInfo& info,
                                               std::int64_t entryNumber, std::int64_t total)>;
    /// (archive path, success, error); the path is empty when the archive never opened.
    using CompletionHandler =
        std::function<void(const std::string& path, bool succeeded, const VPErrorPtr& error)>;
    /// (paths done, paths in total) while writing an archive, once for each path as it is added.
    using WriteProgressHandler = std::function<void(std::uint64_t done, std::uint64_t total)>;
    /// (entries written, entries in the archive) while `close` writes the archive, which is where
    /// the time goes: files are read and compressed there, not when added. Entries, not paths: a
    /// folder that holds something adds none, nor does a file that takes the place of an
    /// earlier one of its name, and a file left out lowers the total. Called as each
    /// entry is finished, rising, and last with (total, total).
    using CompressionProgressHandler = std::function<void(std::uint64_t written, std::uint64_t total)>;

    using UnzipLimits = VPZipUnzipLimits;

    // ---- reading

    /// True when an entry is encrypted, or opens only with a password.
    static bool isFilePasswordProtectedAtPath(const std::string& path);
    /// False without an error for a wrong password; true for an archive with no encrypted entry.
    // isPasswordValidForArchiveAtPath:password:error:
    static bool isPasswordValidForArchiveAtPath(const std::string& path, const std::string& password,
                                                VPErrorPtr* error = nullptr);
    /// The sum of the entries' uncompressed sizes; 0 on failure.
    // payloadSizeForArchiveAtPath:error:
    static std::uint64_t payloadSizeForArchiveAtPath(const std::string& path, VPErrorPtr* error = nullptr);

    // ---- unpacking; each returns true on success

    // unzipFileAtPath:toDestination:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination);
    // unzipFileAtPath:toDestination:overwrite:password:error:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination, bool overwrite,
                                const std::string& password, VPErrorPtr* error);
    // unzipFileAtPath:toDestination:delegate:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination,
                                VPZipArchiveDelegate* delegate);
    // unzipFileAtPath:toDestination:overwrite:password:error:delegate:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination, bool overwrite,
                                const std::string& password, VPErrorPtr* error,
                                VPZipArchiveDelegate* delegate);
    // unzipFileAtPath:toDestination:overwrite:password:progressHandler:completionHandler:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination, bool overwrite,
                                const std::string& password, const ProgressHandler& progressHandler,
                                const CompletionHandler& completionHandler);
    // unzipFileAtPath:toDestination:progressHandler:completionHandler:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination,
                                const ProgressHandler& progressHandler,
                                const CompletionHandler& completionHandler);
    // unzipFileAtPath:toDestination:preserveAttributes:overwrite:password:error:delegate:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination,
                                bool preserveAttributes, bool overwrite, const std::string& password,
                                VPErrorPtr* error, VPZipArchiveDelegate* delegate);
    // unzipFileAtPath:toDestination:preserveAttributes:overwrite:password:error:delegate:progressHandler:completionHandler:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination,
                                bool preserveAttributes, bool overwrite, const std::string& password,
                                VPErrorPtr* error, VPZipArchiveDelegate* delegate,
                                const ProgressHandler& progressHandler,
                                const CompletionHandler& completionHandler);
    /// The main form. An empty path or destination fails with the invalid-argument error, an archive
    /// that doesn't open with -1, then a destination that is not a directory with -6. Entries are written
    /// under `destination`, never outside it: names are sanitized, and an entry that would be written through
    /// a symbolic link leading elsewhere stops the run with the invalid-argument error. Inner archives
    /// ("*.zip" in any case) are unpacked beside themselves and removed while `nestedZipLevel` is not 0;
    /// below 0 at every depth, up to 32 archives deep. A run that would pass `limits` stops with -7.
    /// An entry that can't be written where it belongs (a path too long for the system, a folder that
    /// can't be written, a link target over 4096 bytes) fails alone: it is logged, the delegate hears
    /// of it (`zipArchiveDidFailToUnzipFileAtIndex`) and the run goes on, still a success. Files are
    /// written under a temporary name and renamed into place whole, so a failed one leaves nothing.
    /// The out error can be set on success, when a symbolic link could not be made.
    // unzipFileAtPath:toDestination:preserveAttributes:overwrite:nestedZipLevel:password:error:delegate:progressHandler:completionHandler:
    static bool unzipFileAtPath(const std::string& path, const std::string& destination,
                                bool preserveAttributes, bool overwrite, int nestedZipLevel,
                                const std::string& password, VPErrorPtr* error,
                                VPZipArchiveDelegate* delegate, const ProgressHandler& progressHandler,
                                const CompletionHandler& completionHandler, const UnzipLimits& limits = {});

    // ---- writing: class operations

    /// Each file goes in under its last path component. True only if every file and the archive
    /// were written; a file that fails doesn't stop the others, which are written. Two files of
    /// the same last component both succeed, and the archive holds the later one under that name.
    // createZipFileAtPath:withFilesAtPaths:
    static bool createZipFileAtPath(const std::string& path, const std::vector<std::string>& filePaths);
    // createZipFileAtPath:withFilesAtPaths:withPassword:
    static bool createZipFileAtPath(const std::string& path, const std::vector<std::string>& filePaths,
                                    const std::string& password);
    /// The full form of the above, with the writing options of a directory and the first failure.
    static bool createZipFileAtPath(const std::string& path, const std::vector<std::string>& filePaths,
                                    int compressionLevel, const std::string& password, bool aes,
                                    const WriteProgressHandler& progressHandler, VPErrorPtr* error = nullptr,
                                    const CompressionProgressHandler& compressionProgressHandler = {});

    /// The directory's contents, recursively, in name order; with `keepParentDirectory` under the
    /// directory's own name. Sub-directories get an entry of their own only when empty. The keyword
    /// is part of the name: a list of paths and a directory path can't be told apart in a call.
    // createZipFileAtPath:withContentsOfDirectory:
    static bool createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                           const std::string& directoryPath);
    // createZipFileAtPath:withContentsOfDirectory:keepParentDirectory:
    static bool createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                           const std::string& directoryPath,
                                                           bool keepParentDirectory);
    // createZipFileAtPath:withContentsOfDirectory:withPassword:
    static bool createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                           const std::string& directoryPath,
                                                           const std::string& password);
    /// A text literal is a password, not a flag.
    static bool createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                           const std::string& directoryPath,
                                                           const char* password);
    // createZipFileAtPath:withContentsOfDirectory:keepParentDirectory:withPassword:
    static bool createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                           const std::string& directoryPath,
                                                           bool keepParentDirectory,
                                                           const std::string& password);
    // createZipFileAtPath:withContentsOfDirectory:keepParentDirectory:withPassword:andProgressHandler:
    static bool createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                           const std::string& directoryPath,
                                                           bool keepParentDirectory,
                                                           const std::string& password,
                                                           const WriteProgressHandler& progressHandler);
    /// Level -1 is the default (6), 0 stores, 1 to 9 deflate. With a password, entries are
    /// encrypted with AES-256, or with the traditional cipher when `aes` is false.
    // createZipFileAtPath:withContentsOfDirectory:keepParentDirectory:compressionLevel:password:AES:progressHandler:
    static bool createZipFileAtPathWithContentsOfDirectory(
        const std::string& path, const std::string& directoryPath, bool keepParentDirectory,
        int compressionLevel, const std::string& password, bool aes,
        const WriteProgressHandler& progressHandler, VPErrorPtr* error = nullptr,
        const CompressionProgressHandler& compressionProgressHandler = {});

    // ---- writing: an instance

    /// Throws `std::invalid_argument` for an empty path: an archive is always made on a path.
    explicit VPZipArchive(std::string path);
    /// Closes the archive if it is still open, so nothing written is lost.
    ~VPZipArchive();
    VPZipArchive(const VPZipArchive&) = delete;
    VPZipArchive& operator=(const VPZipArchive&) = delete;

    const std::string& path() const { return path_; }

    /// Starts a new archive; one already at the path is replaced when the archive is closed. An
    /// entry of a name already written replaces the earlier entry.
    bool open();
    /// An entry of the folder name plus "/", with the folder's date and permissions. It holds
    /// nothing, so it is never encrypted; the password is taken as every write takes one.
    // writeFolderAtPath:withFolderName:withPassword:
    bool writeFolderAtPath(const std::string& path, const std::string& folderName,
                           const std::string& password);
    // writeFile:withPassword:
    bool writeFile(const std::string& path, const std::string& password);
    // writeFileAtPath:withFileName:withPassword:
    bool writeFileAtPath(const std::string& path, const std::string& fileName, const std::string& password);
    /// A regular file (symbolic links are followed), under `fileName` or, when that is empty, its last
    /// path component, with its date and permissions.
    // writeFileAtPath:withFileName:compressionLevel:password:AES:
    bool writeFileAtPath(const std::string& path, const std::string& fileName, int compressionLevel,
                         const std::string& password, bool aes);
    // writeData:filename:withPassword:
    bool writeData(std::string_view data, const std::string& filename, const std::string& password);
    /// Dated now, mode 0644.
    // writeData:filename:compressionLevel:password:AES:
    bool writeData(std::string_view data, const std::string& filename, int compressionLevel,
                   const std::string& password, bool aes);
    /// Compresses and writes every entry. Entries are read from their files here, not when added:
    /// a file that can no longer be read is left out and logged, the rest is written, and the
    /// result is false with that file's error. An exception from the handler cancels what is left
    /// of the writing and is thrown again.
    bool close(const CompressionProgressHandler& compressionProgressHandler = {});

    /// Why the last operation failed; nullptr after a success.
    const VPErrorPtr& lastError() const { return lastError_; }

    /// An error of "VPZipArchiveErrorDomain"; the code's own text when `description` is empty, and
    /// `reason` as the failure reason when given (as `zipArchiveError`).
    static VPErrorPtr errorWithCode(VPZipArchiveErrorCode code, std::string_view description = {},
                                    std::string_view reason = {});

private:
    bool fail(VPErrorPtr error);
    bool checkWritable(int compressionLevel);
    bool added(ZipResult result, const std::string& name);

    std::string path_;
    std::unique_ptr<ZipOutput> output_;
    VPErrorPtr lastError_;
};

} // namespace velmo
