#include "velmo/archive/VPZipArchive.h"

#include <functional>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <type_traits>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "velmo/archive/DosDate.h"
#include "velmo/archive/ZipInput.h"
#include "velmo/archive/ZipOutput.h"
#include "velmo/archive/ZipResult.h"
#include "velmo/archive/ZipUnpacker.h"
#include "velmo/foundation/SystemLog.h"

namespace velmo {

namespace fs = std::filesystem;

static_assert(std::is_same_v<VPZipArchive::ProgressHandler, ZipUnpacker::ProgressHandler>,
              "the unpacker calls the caller's progress handler as it is");

namespace {

constexpr const char* kFailedOpenFileInArchive = "failed to open file in zip archive";

// What `isPasswordValidForArchiveAtPath` reads of the first encrypted entry.
constexpr std::size_t kPasswordProbeSize = 10;

std::string lastPathComponent(const std::string& path) {
    fs::path p = fs::path(path).lexically_normal();
    if (!p.has_filename() && p.has_relative_path()) p = p.parent_path();
    return p.filename().string();
}

std::optional<std::string> passwordOrNone(const std::string& password) {
    return password.empty() ? std::nullopt : std::optional(password);
}

void setError(VPErrorPtr* out, VPErrorPtr error) {
    if (out) *out = std::move(error);
}

/// An error of the platform's errno domain about one file.
VPErrorPtr fileError(int code, const std::string& path) {
    return VPError::withDescription(kNSPOSIXErrorDomain, code,
                                    fmt::format("\"{}\": {}", path, std::strerror(code)));
}

/// The steps of writing one archive: true only if each succeeded, with the first failure's error.
struct WriteSteps {
    bool success = true;
    VPErrorPtr firstError;

    void add(bool ok, const VPErrorPtr& error) {
        if (!ok && !firstError) firstError = error;
        success = success && ok;
    }
};

/// Every path below `directory`, relative to it, parents before children, in name order.
/// Symbolic links are listed, never followed.
bool listSubpaths(const fs::path& directory, const fs::path& relative, std::vector<fs::path>& out,
                  VPErrorPtr& error) {
    std::error_code ec;
    std::vector<fs::path> names;
    for (fs::directory_iterator it(directory / relative, ec), end; !ec && it != end; it.increment(ec)) {
        names.push_back(it->path().filename());
    }
    bool ok = true;
    if (ec) {
        ok = false;
        if (!error) error = fileError(ec.value(), (directory / relative).string());
    }
    std::sort(names.begin(), names.end());
    for (const auto& name : names) {
        const fs::path sub = relative / name;
        out.push_back(sub);
        if (fs::symlink_status(directory / sub, ec).type() == fs::file_type::directory) {
            ok = listSubpaths(directory, sub, out, error) && ok;
        }
    }
    return ok;
}

// The class-level write forms share their frame: open the archive, let `entries` add what goes
// in (a failed entry doesn't stop the others), close it, report the first error.
bool writeWholeArchive(const std::string& path, VPErrorPtr* error,
                       const VPZipArchive::CompressionProgressHandler& compressionProgressHandler,
                       const std::function<void(VPZipArchive&, WriteSteps&)>& entries) {
    VPZipArchive archive(path);
    if (!archive.open()) {
        setError(error, archive.lastError());
        return false;
    }
    WriteSteps steps;
    entries(archive, steps);
    steps.add(archive.close(compressionProgressHandler), archive.lastError());
    setError(error, steps.firstError);
    return steps.success;
}

} // namespace

// ---- errors

VPErrorPtr VPZipArchive::errorWithCode(VPZipArchiveErrorCode code, std::string_view description,
                                       std::string_view reason) {
    return zipArchiveError(code, description, reason);
}

// ---- reading

bool VPZipArchive::isFilePasswordProtectedAtPath(const std::string& path) {
    ZipInput input;
    if (input.open(path) != ZipResult::Ok) return false;
    VPZipFileInfo info;
    for (std::uint64_t index = 0; index < input.entryCount(); ++index) {
        if (input.entryInfo(index, info) != ZipResult::Ok) continue;
        if (info.encrypted) return true;
        if (input.openEntry(index, std::nullopt) == ZipResult::Ok) continue;
        // An entry that won't open plainly but opens, or is refused, with the empty password.
        const ZipResult retried = input.openEntry(index, std::string());
        if (retried == ZipResult::Ok || retried == ZipResult::PasswordError) return true;
    }
    return false;
}

bool VPZipArchive::isPasswordValidForArchiveAtPath(const std::string& path, const std::string& password,
                                                   VPErrorPtr* error) {
    setError(error, nullptr);
    ZipInput input;
    if (input.open(path) != ZipResult::Ok) {
        setError(error, errorWithCode(VPZipArchiveErrorCode::FailedOpenZipFile, {}, input.lastMessage()));
        return false;
    }
    VPZipFileInfo info;
    for (std::uint64_t index = 0; index < input.entryCount(); ++index) {
        const ZipResult opened = input.openEntry(index, passwordOrNone(password));
        if (opened == ZipResult::PasswordError) return false;
        if (opened != ZipResult::Ok) {
            setError(error, errorWithCode(VPZipArchiveErrorCode::FailedOpenFileInZip,
                                          kFailedOpenFileInArchive, input.lastMessage()));
            return false;
        }
        if (input.entryInfo(index, info) != ZipResult::Ok || !info.encrypted) continue;
        char buffer[kPasswordProbeSize];
        std::size_t count = 0;
        const ZipResult read = input.read(buffer, sizeof buffer, count);
        if (read == ZipResult::Ok) return true;
        // Bytes that don't decrypt: a password that passed the cipher's quick check by chance.
        // A checksum that fails is damage, not a wrong password, and is reported below.
        if (read == ZipResult::DataError) return false;
        setError(error,
                 errorWithCode(VPZipArchiveErrorCode::FileContentNotReadable, {}, input.lastMessage()));
        return false;
    }
    return true;
}

std::uint64_t VPZipArchive::payloadSizeForArchiveAtPath(const std::string& path, VPErrorPtr* error) {
    setError(error, nullptr);
    ZipInput input;
    if (input.open(path) != ZipResult::Ok) {
        setError(error, errorWithCode(VPZipArchiveErrorCode::FailedOpenZipFile, {}, input.lastMessage()));
        return 0;
    }
    std::uint64_t total = 0;
    VPZipFileInfo info;
    for (std::uint64_t index = 0; index < input.entryCount(); ++index) {
        if (input.entryInfo(index, info) != ZipResult::Ok) {
            setError(error,
                     errorWithCode(VPZipArchiveErrorCode::FileInfoNotLoadable, {}, input.lastMessage()));
            return 0;
        }
        total += info.uncompressedSize;
    }
    return total;
}

// ---- unpacking

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination) {
    return unzipFileAtPath(path, destination, true, true, std::string(), nullptr, nullptr);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination, bool overwrite,
                                   const std::string& password, VPErrorPtr* error) {
    return unzipFileAtPath(path, destination, true, overwrite, password, error, nullptr);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination,
                                   VPZipArchiveDelegate* delegate) {
    return unzipFileAtPath(path, destination, true, true, std::string(), nullptr, delegate);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination, bool overwrite,
                                   const std::string& password, VPErrorPtr* error,
                                   VPZipArchiveDelegate* delegate) {
    return unzipFileAtPath(path, destination, true, overwrite, password, error, delegate);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination, bool overwrite,
                                   const std::string& password, const ProgressHandler& progressHandler,
                                   const CompletionHandler& completionHandler) {
    return unzipFileAtPath(path, destination, true, overwrite, password, nullptr, nullptr, progressHandler,
                           completionHandler);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination,
                                   const ProgressHandler& progressHandler,
                                   const CompletionHandler& completionHandler) {
    return unzipFileAtPath(path, destination, true, true, std::string(), nullptr, nullptr, progressHandler,
                           completionHandler);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination,
                                   bool preserveAttributes, bool overwrite, const std::string& password,
                                   VPErrorPtr* error, VPZipArchiveDelegate* delegate) {
    return unzipFileAtPath(path, destination, preserveAttributes, overwrite, password, error, delegate, {},
                           {});
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination,
                                   bool preserveAttributes, bool overwrite, const std::string& password,
                                   VPErrorPtr* error, VPZipArchiveDelegate* delegate,
                                   const ProgressHandler& progressHandler,
                                   const CompletionHandler& completionHandler) {
    return unzipFileAtPath(path, destination, preserveAttributes, overwrite, 0, password, error, delegate,
                           progressHandler, completionHandler);
}

bool VPZipArchive::unzipFileAtPath(const std::string& path, const std::string& destination,
                                   bool preserveAttributes, bool overwrite, int nestedZipLevel,
                                   const std::string& password, VPErrorPtr* error,
                                   VPZipArchiveDelegate* delegate, const ProgressHandler& progressHandler,
                                   const CompletionHandler& completionHandler, const UnzipLimits& limits) {
    VPErrorPtr failure;
    bool success = false;
    bool opened = false;
    if (path.empty() || destination.empty()) {
        failure = errorWithCode(VPZipArchiveErrorCode::InvalidArguments);
    } else {
        ZipUnpacker unpacker(
            path, destination,
            ZipUnpacker::Options{preserveAttributes, overwrite, nestedZipLevel, password, limits}, delegate,
            progressHandler);
        success = unpacker.run(failure);
        opened = unpacker.opened();
    }
    setError(error, failure);
    if (completionHandler) completionHandler(opened ? path : std::string(), success, failure);
    return success;
}

// ---- writing: class operations

bool VPZipArchive::createZipFileAtPath(const std::string& path, const std::vector<std::string>& filePaths) {
    return createZipFileAtPath(path, filePaths, std::string());
}

bool VPZipArchive::createZipFileAtPath(const std::string& path, const std::vector<std::string>& filePaths,
                                       const std::string& password) {
    return createZipFileAtPath(path, filePaths, -1, password, true, {});
}

bool VPZipArchive::createZipFileAtPath(const std::string& path, const std::vector<std::string>& filePaths,
                                       int compressionLevel, const std::string& password, bool aes,
                                       const WriteProgressHandler& progressHandler, VPErrorPtr* error,
                                       const CompressionProgressHandler& compressionProgressHandler) {
    setError(error, nullptr);
    if (path.empty()) {
        setError(error, errorWithCode(VPZipArchiveErrorCode::InvalidArguments, {}, "no archive path"));
        return false;
    }
    return writeWholeArchive(
        path, error, compressionProgressHandler, [&](VPZipArchive& archive, WriteSteps& steps) {
            std::uint64_t done = 0;
            for (const auto& file : filePaths) {
                steps.add(archive.writeFileAtPath(file, std::string(), compressionLevel, password, aes),
                          archive.lastError());
                if (progressHandler) progressHandler(++done, filePaths.size());
            }
        });
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                              const std::string& directoryPath) {
    return createZipFileAtPathWithContentsOfDirectory(path, directoryPath, false);
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                              const std::string& directoryPath,
                                                              bool keepParentDirectory) {
    return createZipFileAtPathWithContentsOfDirectory(path, directoryPath, keepParentDirectory,
                                                      std::string());
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                              const std::string& directoryPath,
                                                              const std::string& password) {
    return createZipFileAtPathWithContentsOfDirectory(path, directoryPath, false, password);
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                              const std::string& directoryPath,
                                                              const char* password) {
    return createZipFileAtPathWithContentsOfDirectory(path, directoryPath, false,
                                                      std::string(password ? password : ""));
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                              const std::string& directoryPath,
                                                              bool keepParentDirectory,
                                                              const std::string& password) {
    return createZipFileAtPathWithContentsOfDirectory(path, directoryPath, keepParentDirectory, password, {});
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(const std::string& path,
                                                              const std::string& directoryPath,
                                                              bool keepParentDirectory,
                                                              const std::string& password,
                                                              const WriteProgressHandler& progressHandler) {
    return createZipFileAtPathWithContentsOfDirectory(path, directoryPath, keepParentDirectory, -1, password,
                                                      true, progressHandler);
}

bool VPZipArchive::createZipFileAtPathWithContentsOfDirectory(
    const std::string& path, const std::string& directoryPath, bool keepParentDirectory, int compressionLevel,
    const std::string& password, bool aes, const WriteProgressHandler& progressHandler, VPErrorPtr* error,
    const CompressionProgressHandler& compressionProgressHandler) {
    setError(error, nullptr);
    std::error_code ec;
    if (path.empty() || !fs::is_directory(directoryPath, ec)) {
        setError(error, errorWithCode(VPZipArchiveErrorCode::InvalidArguments, {},
                                      fmt::format("\"{}\" is not a directory", directoryPath)));
        return false;
    }
    return writeWholeArchive(
        path, error, compressionProgressHandler, [&](VPZipArchive& archive, WriteSteps& steps) {
            std::vector<fs::path> subpaths;
            steps.success = listSubpaths(directoryPath, fs::path(), subpaths, steps.firstError);
            if (keepParentDirectory && subpaths.empty()) subpaths.emplace_back();

            const fs::path archiveRealPath = fs::weakly_canonical(path, ec);
            const std::string parentName = lastPathComponent(directoryPath);
            std::uint64_t done = 0;
            for (const auto& sub : subpaths) {
                const fs::path fullPath =
                    sub.empty() ? fs::path(directoryPath) : fs::path(directoryPath) / sub;
                if (fs::weakly_canonical(fullPath, ec) == archiveRealPath) {
                    SystemLog::log(fmt::format("[VPZipArchive] the archive path and the file path: {} are "
                                               "the same, which is forbidden.",
                                               fullPath.string()));
                    continue;
                }
                const std::string name = keepParentDirectory ? (fs::path(parentName) / sub).generic_string()
                                                             : sub.generic_string();
                if (!fs::is_directory(fullPath, ec)) {
                    steps.add(archive.writeFileAtPath(fullPath, name, compressionLevel, password, aes),
                              archive.lastError());
                } else if (fs::is_empty(fullPath, ec)) {
                    steps.add(archive.writeFolderAtPath(fullPath, name, password), archive.lastError());
                }
                if (progressHandler) progressHandler(++done, subpaths.size());
            }
        });
}

// ---- writing: an instance

VPZipArchive::VPZipArchive(std::string path)
    : path_(std::move(path)), output_(std::make_unique<ZipOutput>()) {
    if (path_.empty()) throw std::invalid_argument("VPZipArchive needs the path of its archive");
}

VPZipArchive::~VPZipArchive() {
    if (output_->isOpen()) close();
}

bool VPZipArchive::open() {
    if (output_->open(path_) != ZipResult::Ok) {
        return fail(errorWithCode(VPZipArchiveErrorCode::FailedOpenZipFile, {}, output_->lastMessage()));
    }
    lastError_ = nullptr;
    return true;
}

bool VPZipArchive::writeFolderAtPath(const std::string& path, const std::string& folderName,
                                     const std::string& password) {
    if (!checkWritable(-1)) return false;
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) return fail(fileError(errno, path));
    ZipOutput::EntryOptions options;
    options.password = password;
    options.dosDate = DosDate::dosDateFromTime(st.st_mtime);
    options.mode = (st.st_mode & 07777) | S_IFDIR;
    const std::string name = folderName.empty() ? lastPathComponent(path) : folderName;
    return added(output_->addDirectory(name, options), name);
}

bool VPZipArchive::writeFile(const std::string& path, const std::string& password) {
    return writeFileAtPath(path, std::string(), -1, password, true);
}

bool VPZipArchive::writeFileAtPath(const std::string& path, const std::string& fileName,
                                   const std::string& password) {
    return writeFileAtPath(path, fileName, -1, password, true);
}

bool VPZipArchive::writeFileAtPath(const std::string& path, const std::string& fileName, int compressionLevel,
                                   const std::string& password, bool aes) {
    if (!checkWritable(compressionLevel)) return false;
    // Opened here, so a file that can't be read fails now, alone, rather than the whole archive at `close`.
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return fail(fileError(errno, path));
    struct stat st;
    const int statError = ::fstat(fd, &st) == 0 ? 0 : errno;
    ::close(fd);
    if (statError != 0) return fail(fileError(statError, path));
    if (!S_ISREG(st.st_mode)) {
        return fail(VPError::withDescription(kNSPOSIXErrorDomain, EINVAL,
                                             fmt::format("\"{}\" is not a regular file", path)));
    }
    ZipOutput::EntryOptions options{compressionLevel, password, aes, 0,
                                    static_cast<std::uint32_t>((st.st_mode & 07777) | S_IFREG)};
    const std::string name = fileName.empty() ? lastPathComponent(path) : fileName;
    return added(output_->addFile(name, path, options), name);
}

bool VPZipArchive::writeData(std::string_view data, const std::string& filename,
                             const std::string& password) {
    return writeData(data, filename, -1, password, true);
}

bool VPZipArchive::writeData(std::string_view data, const std::string& filename, int compressionLevel,
                             const std::string& password, bool aes) {
    if (!checkWritable(compressionLevel)) return false;
    ZipOutput::EntryOptions options{compressionLevel, password, aes, 0, 0100644};
    return added(output_->addData(filename, data, options), filename);
}

bool VPZipArchive::close(const CompressionProgressHandler& compressionProgressHandler) {
    if (!output_->isOpen()) {
        return fail(errorWithCode(VPZipArchiveErrorCode::InvalidArguments, {}, "the archive is not open"));
    }
    if (output_->close(compressionProgressHandler) != ZipResult::Ok) {
        return fail(errorWithCode(VPZipArchiveErrorCode::FailedToWriteFile, {}, output_->lastMessage()));
    }
    const auto& dropped = output_->droppedFiles();
    for (const auto& file : dropped) {
        SystemLog::log(fmt::format("[VPZipArchive] \"{}\" is left out of the archive: {}", file.sourcePath,
                                   std::strerror(file.error)));
    }
    if (!dropped.empty()) return fail(fileError(dropped.front().error, dropped.front().sourcePath));
    lastError_ = nullptr;
    return true;
}

bool VPZipArchive::fail(VPErrorPtr error) {
    lastError_ = std::move(error);
    return false;
}

bool VPZipArchive::checkWritable(int compressionLevel) {
    if (!output_->isOpen()) {
        return fail(errorWithCode(VPZipArchiveErrorCode::InvalidArguments, {}, "the archive is not open"));
    }
    if (compressionLevel < -1 || compressionLevel > 9) {
        return fail(
            errorWithCode(VPZipArchiveErrorCode::InvalidArguments, {},
                          fmt::format("compression level {} is not between -1 and 9", compressionLevel)));
    }
    return true;
}

bool VPZipArchive::added(ZipResult result, const std::string& name) {
    if (result == ZipResult::Ok) {
        lastError_ = nullptr;
        return true;
    }
    const std::string reason = fmt::format("can't add \"{}\": {}", name, output_->lastMessage());
    SystemLog::log("[VPZipArchive] " + reason);
    return fail(errorWithCode(VPZipArchiveErrorCode::InvalidArguments, {}, reason));
}

} // namespace velmo
