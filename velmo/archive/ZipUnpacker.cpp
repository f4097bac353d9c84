#include "velmo/archive/ZipUnpacker.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "velmo/archive/DosDate.h"
#include "velmo/archive/VPZipArchiveError.h"
#include "velmo/archive/ZipEntryName.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/foundation/Uuid.h"

namespace velmo {

namespace fs = std::filesystem;

namespace {

constexpr std::uint8_t kHostUnix = 3;
constexpr std::uint32_t kSymbolicLinkType = 0xA;
constexpr std::size_t kChunkSize = 4096;
// The longest target a symbolic link can have here.
constexpr std::size_t kMaxLinkTarget = 4096;
// Inner archives are unpacked at most this deep, whatever the level asks: an archive that holds
// itself would otherwise never end.
constexpr int kMaxNestingDepth = 32;

constexpr const char* kFailedOpenFileInZip = "failed to open file in zip file";
constexpr const char* kFailedRetrieveInfo = "failed to retrieve info for file";
constexpr const char* kCrcCheckFailed = "crc check failed for file";
constexpr const char* kFailedToWrite = "Failed to write file (check your free space)";

bool setModificationDate(const fs::path& path, Date date) {
    const auto sinceEpoch = date.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch - seconds);
    const timespec times[2] = {
        {0, UTIME_OMIT}, {static_cast<time_t>(seconds.count()), static_cast<long>(nanoseconds.count())}};
    return ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
}

/// 0, or the errno of the write that failed.
int writeAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        // A write that takes nothing sets no errno.
        if (n == 0) return EIO;
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return 0;
}

/// A name or path for a message: as it is, or cut in the middle when it is longer than a reader
/// would want to see (a path too long for the system is thousands of bytes).
std::string shown(std::string_view text) {
    constexpr std::size_t kKept = 100;
    if (text.size() <= 2 * kKept + 3) return std::string(text);
    const auto continues = [&](std::size_t i) {
        return (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
    };
    std::size_t head = kKept;
    while (head > 0 && continues(head))
        --head;
    std::size_t tail = text.size() - kKept;
    while (tail < text.size() && continues(tail))
        ++tail;
    return fmt::format("{}...{}", text.substr(0, head), text.substr(tail));
}

std::string entryReason(std::string_view name, std::string_view why = {}) {
    return why.empty() ? fmt::format("entry \"{}\"", shown(name))
                       : fmt::format("entry \"{}\": {}", shown(name), why);
}

/// An error of the platform's errno domain.
VPErrorPtr posixError(int code, std::string_view description) {
    return VPError::withDescription(kNSPOSIXErrorDomain, code, std::string(description));
}

/// An error of the platform's errno domain about a path being written.
VPErrorPtr pathError(int code, const fs::path& path) {
    return VPError::withDescription(kNSPOSIXErrorDomain, code,
                                    fmt::format("\"{}\": {}", shown(path.string()), std::strerror(code)));
}

bool isZipFile(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".zip";
}

} // namespace

ZipUnpacker::ZipUnpacker(std::string path, std::string destination, Options options,
                         VPZipArchiveDelegate* delegate, ProgressHandler progressHandler)
    : path_(std::move(path)), destination_(std::move(destination)), options_(std::move(options)),
      delegate_(delegate), progressHandler_(std::move(progressHandler)) {}

bool ZipUnpacker::run(VPErrorPtr& error) {
    if (input_.open(path_) != ZipResult::Ok) {
        error = zipArchiveError(VPZipArchiveErrorCode::FailedOpenZipFile, {}, input_.lastMessage());
        return false;
    }
    opened_ = true;
    std::error_code ec;
    // Checked once the archive has opened, so its failure comes first. Every entry would fail on
    // its own, quietly, in a destination that is a file; one clear error instead.
    if (fs::exists(destination_, ec) && !fs::is_directory(destination_, ec)) {
        error = zipArchiveError(VPZipArchiveErrorCode::InvalidArguments, {},
                                fmt::format("\"{}\" is not a directory", destination_));
        return false;
    }
    fileSize_ = fs::file_size(path_, ec);
    if (ec) fileSize_ = 0;
    zipInfo_ = VPZipArchiveInfo{input_.entryCount(), input_.comment()};
    fs::path destination = fs::absolute(destination_).lexically_normal();
    if (!destination.has_filename() && destination.has_relative_path())
        destination = destination.parent_path();
    root_ = fs::weakly_canonical(destination, ec);
    if (ec) root_ = destination;

    if (VPErrorPtr tooLarge = checkDeclaredSizes()) {
        error = tooLarge;
        return false;
    }

    tell(Operation::WillUnzipArchive, [&](auto& d) { d.zipArchiveWillUnzipArchiveAtPath(path_, zipInfo_); });
    tell(Operation::ProgressEvent, [&](auto& d) { d.zipArchiveProgressEvent(0, fileSize_); });
    // While this thread makes the files, the entries' bytes are read, decrypted and inflated on the
    // other cores, in the order the loop takes them. Inner archives are read here, one after
    // another: read ahead at every depth, the threads, handles and buffers would multiply. Nothing
    // past what the run may write is kept ahead.
    const unsigned cores = std::thread::hardware_concurrency();
    if (depth_ == 0 && cores > 1 && zipInfo_.numberOfEntries > 1) {
        const auto room = static_cast<std::size_t>(
            std::min<std::uint64_t>(ReadAhead::kDefaultBufferLimit, options_.limits.maxTotalSize));
        inflater_ =
            std::make_unique<ParallelInflater>(path_, zipInfo_.numberOfEntries, entryPassword(), cores, room);
        if (inflater_->unstaffed()) inflater_.reset();
    }
    for (std::uint64_t index = 0; index < zipInfo_.numberOfEntries && !failed_; ++index)
        unpackEntry(index);
    inflater_.reset();
    input_.close();

    const bool success = !failed_;
    if (success && options_.preserveAttributes) applyDirectoryDates();
    if (success) {
        tell(Operation::DidUnzipArchive,
             [&](auto& d) { d.zipArchiveDidUnzipArchiveAtPath(path_, zipInfo_, destination_); });
    }
    if (!cancelled_)
        tell(Operation::ProgressEvent, [&](auto& d) { d.zipArchiveProgressEvent(fileSize_, fileSize_); });
    error = error_ ? error_ : crcError_;
    return success;
}

std::optional<std::string> ZipUnpacker::entryPassword() const {
    // An empty password means none.
    return options_.password.empty() ? std::nullopt : std::optional(options_.password);
}

VPErrorPtr ZipUnpacker::checkDeclaredSizes() {
    const auto& limits = options_.limits;
    const VPZipUnzipLimits none;
    if (limits.maxEntrySize == none.maxEntrySize && limits.maxTotalSize == none.maxTotalSize) return nullptr;
    std::uint64_t total = 0;
    VPZipFileInfo info;
    for (std::uint64_t index = 0; index < zipInfo_.numberOfEntries; ++index) {
        // An entry without a record fails in the run itself.
        if (input_.entryInfo(index, info) != ZipResult::Ok) continue;
        const std::uint64_t size = info.uncompressedSize;
        if (size > limits.maxEntrySize) {
            return limitPassed(fmt::format("entry \"{}\" declares {} bytes, more than the limit of {}",
                                           ZipEntryName::decode(info.rawName, info.hostSystem, info.utf8Name),
                                           size, limits.maxEntrySize));
        }
        // `total` never passes the limit here, so the subtraction can't wrap.
        if (size > limits.maxTotalSize - total) {
            return limitPassed(fmt::format("the archive declares more than the {} bytes left to write",
                                           limits.maxTotalSize));
        }
        total += size;
    }
    return nullptr;
}

VPErrorPtr ZipUnpacker::limitPassed(std::string reason) {
    limitPassed_ = true;
    return zipArchiveError(VPZipArchiveErrorCode::UnzipLimitPassed, {}, reason);
}

void ZipUnpacker::unpackEntry(std::uint64_t index) {
    const auto fileIndex = static_cast<std::int64_t>(index);
    const auto totalFiles = static_cast<std::int64_t>(zipInfo_.numberOfEntries);
    VPZipFileInfo info;
    entryIndex_ = index;
    const ZipResult opened = input_.openEntry(index, entryPassword());
    if (opened != ZipResult::Ok) {
        const std::string why = input_.lastMessage();
        // The entry's record can still be there to name it.
        entryName_ = input_.entryInfo(index, info) == ZipResult::Ok
                         ? ZipEntryName::decode(info.rawName, info.hostSystem, info.utf8Name)
                         : fmt::format("#{}", index);
        fail(zipArchiveError(VPZipArchiveErrorCode::FailedOpenFileInZip, kFailedOpenFileInZip,
                             entryReason(entryName_, why)));
        tellFailure(fileIndex, info, runEnding_);
        return;
    }
    if (input_.entryInfo(index, info) != ZipResult::Ok) {
        fail(zipArchiveError(VPZipArchiveErrorCode::FileInfoNotLoadable, kFailedRetrieveInfo,
                             entryReason(fmt::format("#{}", index), input_.lastMessage())));
        tellFailure(fileIndex, info, runEnding_);
        return;
    }
    if (delegate_ && delegate_->respondsTo(Operation::ShouldUnzipFile) &&
        !delegate_->zipArchiveShouldUnzipFileAtIndex(fileIndex, totalFiles, path_, info)) {
        failed_ = true;
        cancelled_ = true;
        return;
    }
    tell(Operation::WillUnzipFile,
         [&](auto& d) { d.zipArchiveWillUnzipFileAtIndex(fileIndex, totalFiles, path_, info); });
    position_ += info.compressedSize;
    tell(Operation::ProgressEvent, [&](auto& d) { d.zipArchiveProgressEvent(position_, fileSize_); });

    const bool isLink = info.hostSystem == kHostUnix && (info.externalAttributes >> 28) == kSymbolicLinkType;
    const std::string name = ZipEntryName::decode(info.rawName, info.hostSystem, info.utf8Name);
    entryName_ = name;
    if (ZipEntryName::isMacOSXMetadata(name)) {
        input_.closeEntry();
        return;
    }
    const bool isDirectory = ZipEntryName::isDirectory(info.rawName);
    std::string relative = ZipEntryName::sanitizedPath(name);
    while (!relative.empty() && relative.back() == '/')
        relative.pop_back();
    if (relative.empty()) relative = std::to_string(index);
    const fs::path fullPath = fs::path(destination_) / relative;

    // An entry that can't be written fails alone, and the run goes on; one that ends the run
    // reaches `failed_`.
    VPErrorPtr entryError = checkPlace(fullPath, isDirectory, name);
    if (!entryError && !failed_) {
        if (options_.preserveAttributes) dates_.emplace_back(fullPath, info.dosDate);
        entryError = makeDirectory(isDirectory ? fullPath : fullPath.parent_path());
    }
    if (!entryError && !failed_) {
        struct stat existing;
        if (!isDirectory && !options_.overwrite && ::lstat(fullPath.c_str(), &existing) == 0) {
            input_.closeEntry();
            return;
        }
        if (isLink) {
            entryError = writeSymbolicLink(fullPath, name);
        } else if (!isDirectory && writeRegularFile(fullPath, entryError)) {
            finishRegularFile(fullPath, info);
        }
    }
    if (failed_) {
        tellFailure(fileIndex, info, runEnding_);
        return;
    }
    input_.closeEntry();

    if (entryError) tellFailure(fileIndex, info, entryError);
    tell(Operation::DidUnzipFileWithInfo,
         [&](auto& d) { d.zipArchiveDidUnzipFileAtIndex(fileIndex, totalFiles, path_, info); });
    tell(Operation::DidUnzipFileToPath,
         [&](auto& d) { d.zipArchiveDidUnzipFileAtIndex(fileIndex, totalFiles, path_, fullPath.string()); });
    if (progressHandler_) progressHandler_(name, info, fileIndex, totalFiles);
}

VPErrorPtr ZipUnpacker::checkPlace(const fs::path& fullPath, bool isDirectory, const std::string& name) {
    // Checked before anything is made, so a path the system can't name leaves no folders behind.
    int code = fullPath.native().size() >= PATH_MAX ? ENAMETOOLONG : 0;
    for (const auto& part : fullPath) {
        if (part.native().size() > NAME_MAX) code = ENAMETOOLONG;
    }
    // Names can't climb out any more, but links unpacked earlier still could lead elsewhere.
    std::error_code ec;
    if (code == 0 && !staysInside(isDirectory ? fullPath : fullPath.parent_path(), ec)) {
        if (!ec) {
            fail(zipArchiveError(
                VPZipArchiveErrorCode::InvalidArguments, {},
                fmt::format("entry \"{}\" would be written outside the destination through a symbolic link",
                            shown(name))));
            return nullptr;
        }
        // Where the path can't be resolved (a folder that can't be searched, a loop of links), nothing
        // is written there.
        code = ec.value();
    }
    if (code == 0) return nullptr;
    const VPErrorPtr error = pathError(code, fullPath);
    SystemLog::log(fmt::format("[VPZipArchive] Error: {}", error->description()));
    return error;
}

VPErrorPtr ZipUnpacker::makeDirectory(const fs::path& directory) {
    std::error_code ec;
    fs::create_directories(directory, ec);
    if (!ec) return nullptr;
    const VPErrorPtr error = pathError(ec.value(), directory);
    if (ec.value() == ENOSPC) {
        fail(error);
        return nullptr;
    }
    SystemLog::log(fmt::format("[VPZipArchive] Error: {}", error->description()));
    return error;
}

bool ZipUnpacker::writeRegularFile(const fs::path& target, VPErrorPtr& entryError) {
    const auto notOpened = [&](int code) {
        const VPErrorPtr error = pathError(code, target);
        if (code == EMFILE || code == ENOSPC) {
            fail(error);
        } else {
            SystemLog::log(
                fmt::format("[VPZipArchive] Failed to open file on unzipping.({})", error->description()));
            entryError = error;
        }
        return false;
    };
    struct stat existing;
    if (::lstat(target.c_str(), &existing) == 0 && S_ISDIR(existing.st_mode)) {
        // A directory in the way passes quietly, though the file is not written.
        entryError = pathError(EISDIR, target);
        return false;
    }
    // Written under a temporary name beside the target and renamed into place only when whole: a
    // failed entry leaves nothing behind, and a file or link already there is replaced, never
    // written through. The name is short, so any folder that can hold the target can hold it.
    const fs::path temporary = target.parent_path() / (".velmo-unzip-" + Uuid::lowercaseString());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0) return notOpened(errno);
    const auto writeFailed = [&](int code) {
        SystemLog::log(fmt::format("[VPZipArchive] {}", kFailedToWrite));
        fail(zipArchiveError(VPZipArchiveErrorCode::FailedToWriteFile, {},
                             fmt::format("\"{}\": {}", shown(target.string()), std::strerror(code))));
    };
    const auto& limits = options_.limits;
    std::uint64_t entryBytes = 0;
    char buffer[kChunkSize];
    for (;;) {
        std::size_t count = 0;
        if (!readChunk(buffer, sizeof buffer, count) || count == 0) break;
        entryBytes += count;
        written_ += count;
        if (entryBytes > limits.maxEntrySize || written_ > limits.maxTotalSize) {
            fail(limitPassed(fmt::format("\"{}\" holds more than its limit", shown(target.string()))));
            break;
        }
        if (const int code = writeAll(fd, buffer, count); code != 0) {
            writeFailed(code);
            break;
        }
    }
    const int closeError = ::close(fd) == 0 ? 0 : errno;
    if (closeError != 0 && !failed_) writeFailed(closeError);
    if (!failed_ && ::rename(temporary.c_str(), target.c_str()) == 0) return true;
    const int renameError = errno;
    ::unlink(temporary.c_str());
    return failed_ ? false : notOpened(renameError);
}

void ZipUnpacker::finishRegularFile(const fs::path& target, const VPZipFileInfo& info) {
    if (options_.nestedZipLevel != 0 && isZipFile(target)) {
        if (depth_ >= kMaxNestingDepth) {
            SystemLog::log(fmt::format("[VPZipArchive] \"{}\" is kept as it is: inner archives are unpacked "
                                       "at most {} deep",
                                       shown(target.string()), kMaxNestingDepth));
        } else {
            struct stat written;
            const bool known = ::lstat(target.c_str(), &written) == 0;
            if (unpackNested(target)) {
                // The inner archive is gone, and so is its date. Unless it held a file of its own
                // name, which took its place and stays.
                if (options_.preserveAttributes && !dates_.empty()) dates_.pop_back();
                struct stat now;
                if (known && ::lstat(target.c_str(), &now) == 0 && now.st_dev == written.st_dev &&
                    now.st_ino == written.st_ino) {
                    ::unlink(target.c_str());
                }
                return;
            }
        }
    }
    if (failed_ || !options_.preserveAttributes) return;
    if (info.dosDate != 0 && !setModificationDate(target, DosDate::dateFromDosDate(info.dosDate))) {
        SystemLog::log("[VPZipArchive] Failed to set attributes - whilst setting modification date");
    }
    // Owners can always read and write what they unpacked; set-id and sticky bits are never taken
    // from an archive.
    const mode_t mode = static_cast<mode_t>((info.externalAttributes >> 16) & 0777) | 0600;
    if (::chmod(target.c_str(), mode) != 0) {
        SystemLog::log("[VPZipArchive] Failed to set attributes - whilst setting permissions");
    }
}

bool ZipUnpacker::unpackNested(const fs::path& archive) {
    Options inner = options_;
    // A level below 0 stays below 0: every depth.
    if (inner.nestedZipLevel > 0) --inner.nestedZipLevel;
    // The inner run gets what is left of the total, and what it writes counts here: nesting
    // must not multiply the caller's bound.
    const VPZipUnzipLimits none;
    if (inner.limits.maxTotalSize != none.maxTotalSize)
        inner.limits.maxTotalSize -= std::min(written_, inner.limits.maxTotalSize);
    ZipUnpacker unpacker(archive.string(), archive.parent_path().string(), std::move(inner), nullptr, {});
    unpacker.depth_ = depth_ + 1;
    VPErrorPtr error;
    const bool unpacked = unpacker.run(error);
    written_ += unpacker.written_;
    // Any other failure keeps the inner archive as a file, but a limit is the whole run's.
    if (unpacker.limitPassed_) {
        limitPassed_ = true;
        fail(error);
    } else if (!unpacked) {
        const VPErrorPtr& why = error ? error : unpacker.runEnding_;
        SystemLog::log(fmt::format("[VPZipArchive] The inner archive \"{}\" is kept as it is: {}",
                                   shown(archive.string()), why ? why->description() : "it did not unpack"));
    }
    return unpacked;
}

VPErrorPtr ZipUnpacker::writeSymbolicLink(const fs::path& target, const std::string& name) {
    std::string destination;
    bool tooLong = false;
    if (!readEntry(destination, kMaxLinkTarget, tooLong)) return nullptr;
    if (tooLong) {
        const std::string message = fmt::format(
            "The target of the symbolic link \"{}\" is longer than {} bytes", shown(name), kMaxLinkTarget);
        SystemLog::log(fmt::format("[VPZipArchive] {}", message));
        error_ = posixError(ENAMETOOLONG, message);
        return error_;
    }
    struct stat existing;
    if (options_.overwrite && ::lstat(target.c_str(), &existing) == 0) {
        std::error_code ec;
        fs::remove_all(target, ec);
        if (ec) {
            const std::string message =
                fmt::format("Failed to delete existing symbolic link at \"{}\"", shown(target.string()));
            SystemLog::log(fmt::format("[VPZipArchive] {}", message));
            error_ = posixError(ec.value(), message);
        }
    }
    if (::symlink(destination.c_str(), target.c_str()) != 0) {
        const int code = errno;
        const std::string message =
            fmt::format("Failed to create symbolic link at \"{}\" to \"{}\" - symlink() error code: {}",
                        shown(target.string()), shown(destination), code);
        SystemLog::log(fmt::format("[VPZipArchive] {}", message));
        error_ = posixError(code, message);
        return error_;
    }
    return nullptr;
}

bool ZipUnpacker::readEntry(std::string& content, std::size_t limit, bool& tooLong) {
    char buffer[kChunkSize];
    for (;;) {
        std::size_t count = 0;
        if (!readChunk(buffer, sizeof buffer, count)) return false;
        if (count == 0) return true;
        if (content.size() + count > limit) {
            tooLong = true;
            return true;
        }
        content.append(buffer, count);
    }
}

bool ZipUnpacker::readChunk(char* buffer, std::size_t size, std::size_t& count) {
    const ZipResult result =
        inflater_ ? inflater_->read(entryIndex_, buffer, size, count) : input_.read(buffer, size, count);
    if (result == ZipResult::CrcError) {
        crcError_ = zipArchiveError(VPZipArchiveErrorCode::FileInfoNotLoadable, kCrcCheckFailed,
                                    entryReason(entryName_));
        runEnding_ = crcError_;
        failed_ = true;
        return false;
    }
    if (result != ZipResult::Ok) {
        // A read failure ends the run without an error of its own; the library's word is logged,
        // and the delegate hears which entry it was.
        const std::string reason =
            entryReason(entryName_, inflater_ ? inflater_->lastMessage() : input_.lastMessage());
        SystemLog::log(fmt::format("[VPZipArchive] {}", reason));
        runEnding_ = zipArchiveError(VPZipArchiveErrorCode::FileContentNotReadable, {}, reason);
        failed_ = true;
        return false;
    }
    return true;
}

void ZipUnpacker::applyDirectoryDates() {
    for (const auto& [path, dosDate] : dates_) {
        struct stat st;
        // Only real directories: a link that replaced one is left alone.
        std::error_code ec;
        if (dosDate == 0 || ::lstat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || !staysInside(path, ec))
            continue;
        if (!setModificationDate(path, DosDate::dateFromDosDate(dosDate))) {
            const int code = errno;
            const VPErrorPtr error = posixError(code, std::strerror(code));
            SystemLog::log(
                fmt::format("[VPZipArchive] Set attributes failed for directory: {}.", path.string()));
            SystemLog::log(
                fmt::format("[VPZipArchive] Error setting directory file modification date attribute: {}",
                            error->description()));
        }
    }
}

bool ZipUnpacker::staysInside(const fs::path& path, std::error_code& ec) const {
    // Absolute first: a path none of which exists yet would otherwise stay relative.
    const fs::path real = fs::weakly_canonical(fs::absolute(path, ec), ec);
    if (ec) return false;
    auto part = real.begin();
    for (const auto& rootPart : root_) {
        if (part == real.end() || *part != rootPart) return false;
        ++part;
    }
    return true;
}

void ZipUnpacker::fail(VPErrorPtr error) {
    failed_ = true;
    runEnding_ = error;
    error_ = std::move(error);
}

void ZipUnpacker::tellFailure(std::int64_t fileIndex, const VPZipFileInfo& info, const VPErrorPtr& error) {
    const auto totalFiles = static_cast<std::int64_t>(zipInfo_.numberOfEntries);
    tell(Operation::DidFailToUnzipFile,
         [&](auto& d) { d.zipArchiveDidFailToUnzipFileAtIndex(fileIndex, totalFiles, path_, info, error); });
}

} // namespace velmo
