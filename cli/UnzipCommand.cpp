// velmo unzip ARCHIVE DEST: unpack an archive into a directory, within size limits.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ByteSize.h"
#include "Commands.h"
#include "Console.h"
#include "Folders.h"
#include "Password.h"
#include "TerminalProgress.h"
#include "velmo/archive/VPZipArchive.h"

namespace velmo::cli {

namespace {

namespace fs = std::filesystem;

// What a user unpacking by hand would accept without a second thought; more takes --max-size,
// --max-entry-size or --no-limits.
constexpr std::uint64_t kDefaultMaxTotalSize = std::uint64_t{4} << 30;
constexpr std::uint64_t kDefaultMaxEntrySize = std::uint64_t{2} << 30;
// Failed entries named one by one; beyond this, a count.
constexpr std::size_t kFailuresNamed = 10;

struct UnzipOptions {
    std::string archive;
    std::string destination;
    std::string password;
    CLI::Option* passwordOption = nullptr;
    bool noOverwrite = false;
    int nested = 0;
    bool noAttributes = false;
    std::string maxSize;
    std::string maxEntrySize;
    bool noLimits = false;
};

bool isZipName(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".zip";
}

/// Counts what an unpacking run really wrote. The archive tells of each entry it finished, but
/// an entry whose file could not be made (a folder without write permission, a file in the way)
/// is logged and passed over as finished all the same: so each finished entry is looked for on
/// disk, as the kind of thing it is.
class UnzipTally : public VPZipArchiveDelegate {
public:
    UnzipTally(int nestedLevel, TerminalProgress& progress) : nested_(nestedLevel > 0), progress_(progress) {}

    struct Failure {
        std::string path;
        bool directory;
    };

    std::uint64_t written = 0;
    /// Entries passed over: files kept with --no-overwrite.
    std::uint64_t kept = 0;
    std::vector<Failure> failures;
    /// An entry was begun and never finished: the run stopped in it.
    bool stoppedInEntry = false;

    void zipArchiveWillUnzipFileAtIndex(std::int64_t, std::int64_t, const std::string&,
                                        const VPZipFileInfo& info) override {
        settlePending();
        pending_ = true;
        info_ = info;
    }

    void zipArchiveDidUnzipFileAtIndex(std::int64_t index, std::int64_t total, const std::string&,
                                       const std::string& path) override {
        pending_ = false;
        const bool directory = isDirectory(info_);
        if (landed(path, directory))
            ++written;
        else
            failures.push_back({path, directory});
        progress_.update("Unzipping", static_cast<std::uint64_t>(index + 1),
                         static_cast<std::uint64_t>(total));
    }

    /// After the run: an entry begun and not finished was passed over, or, when the run failed,
    /// is where it stopped.
    void finish(bool succeeded) {
        if (pending_ && !succeeded) {
            stoppedInEntry = true;
            pending_ = false;
        }
        settlePending();
    }

private:
    static bool isDirectory(const VPZipFileInfo& info) {
        return !info.rawName.empty() && (info.rawName.back() == '/' || info.rawName.back() == '\\');
    }

    void settlePending() {
        // The archive's own metadata folder is passed over by design, not kept.
        if (pending_ && !info_.rawName.starts_with("__MACOSX/")) ++kept;
        pending_ = false;
    }

    bool landed(const std::string& path, bool directory) const {
        struct stat st {};
        if (::lstat(path.c_str(), &st) != 0) {
            // An inner archive that was unpacked is removed: its content stands in its place.
            return errno == ENOENT && nested_ && !directory && isZipName(path);
        }
        const bool link = info_.hostSystem == 3 && (info_.externalAttributes >> 28) == 0xA;
        if (link) return S_ISLNK(st.st_mode);
        if (directory) return S_ISDIR(st.st_mode);
        return S_ISREG(st.st_mode) && static_cast<std::uint64_t>(st.st_size) == info_.uncompressedSize;
    }

    bool nested_;
    TerminalProgress& progress_;
    bool pending_ = false;
    VPZipFileInfo info_;
};

/// Why an entry's file or folder is not there, in the system's words where it has them.
std::string whyNotWritten(const UnzipTally::Failure& failure) {
    struct stat st {};
    if (::lstat(failure.path.c_str(), &st) == 0)
        return S_ISDIR(st.st_mode) ? "a directory is in the way" : "something else is in the way";
    const std::string reason = unwritableReason(fs::path(failure.path).parent_path(), true);
    return reason.empty() ? "not written (--verbose shows the library's log)" : reason;
}

std::string entriesText(std::uint64_t count) {
    return fmt::format("{} {}", count, count == 1 ? "entry" : "entries");
}

bool isLimitError(const VPErrorPtr& error) {
    if (!error || error->domain() != kVPZipArchiveErrorDomain ||
        error->code() != static_cast<std::int64_t>(VPZipArchiveErrorCode::InvalidArguments))
        return false;
    // The archive tells a passed limit from its other invalid arguments only in words.
    const Value& reason = error->userInfo().get(kNSLocalizedFailureReasonErrorKey);
    return reason.isString() && (reason.str().find("limit") != std::string::npos ||
                                 reason.str().find("left to write") != std::string::npos);
}

int runUnzip(const UnzipOptions& o) {
    if (o.archive == "-") {
        // Entries are found through the archive's directory at its end: a stream won't do.
        Console::error("unzip reads an archive from a file: standard input (-) can't be unpacked");
        return kExitUsage;
    }
    std::error_code readError;
    {
        // Looked at first, so that a folder or a missing file is told as such, not as a bad archive.
        const int fd = ::open(o.archive.c_str(), O_RDONLY | O_CLOEXEC);
        struct stat st {};
        if (fd < 0) {
            readError = std::error_code(errno, std::generic_category());
        } else {
            if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode))
                readError = std::make_error_code(std::errc::is_a_directory);
            ::close(fd);
        }
    }
    if (readError) {
        Console::error(fmt::format("cannot read {}: {}", o.archive, readError.message()));
        return kExitUsage;
    }
    std::error_code ec;
    // Made as the entries are written, so that an archive that fails to open leaves nothing behind.
    if (const std::string reason = unwritableReason(fs::absolute(o.destination, ec), true); !reason.empty()) {
        Console::error(fmt::format("cannot unzip into {}: {}", o.destination, reason));
        return kExitFailure;
    }
    if (o.noLimits && !(o.maxSize.empty() && o.maxEntrySize.empty())) {
        Console::error("--no-limits leaves no limit for --max-size or --max-entry-size to change");
        return kExitUsage;
    }
    const auto password = Password::resolve(o.passwordOption->count() > 0, o.password, false);
    if (!password) return kExitUsage;
    VPZipUnzipLimits limits;
    if (!o.noLimits) {
        limits.maxTotalSize = o.maxSize.empty() ? kDefaultMaxTotalSize : *parseByteSize(o.maxSize);
        limits.maxEntrySize = o.maxEntrySize.empty() ? kDefaultMaxEntrySize : *parseByteSize(o.maxEntrySize);
    }

    VPErrorPtr error;
    TerminalProgress progress;
    UnzipTally tally(o.nested, progress);
    const bool ok = VPZipArchive::unzipFileAtPath(o.archive, o.destination, !o.noAttributes, !o.noOverwrite,
                                                  o.nested, *password, &error, &tally, {}, {}, limits);
    tally.finish(ok);

    const auto code = error ? error->code() : 0;
    if (!ok && error && error->domain() == kVPZipArchiveErrorDomain &&
        code == static_cast<std::int64_t>(VPZipArchiveErrorCode::FailedOpenZipFile)) {
        // The reason alone ("Not a zip archive"): "failed to open zip file" adds nothing to "cannot read".
        const Value& reason = error->userInfo().get(kNSLocalizedFailureReasonErrorKey);
        Console::error(fmt::format("cannot read {}: {}", o.archive,
                                   reason.isString() ? reason.str() : errorText(error)));
        return kExitUsage;
    }
    for (std::size_t i = 0; i < tally.failures.size() && i < kFailuresNamed; ++i)
        Console::error(
            fmt::format("cannot write {}: {}", tally.failures[i].path, whyNotWritten(tally.failures[i])));
    if (tally.failures.size() > kFailuresNamed)
        Console::error(fmt::format("... and {} more", tally.failures.size() - kFailuresNamed));
    if (error || !ok) {
        // A read that fails midway stops the run without an error of its own.
        std::string message =
            error ? errorText(error) : fmt::format("{} could not be read to the end", o.archive);
        if (isLimitError(error))
            message =
                fmt::format("{}: {}; the limits are {} in all, {} per entry: --max-size, --max-entry-size "
                            "and --no-limits change them",
                            o.archive, error->userInfo().get(kNSLocalizedFailureReasonErrorKey).str(),
                            byteSizeText(limits.maxTotalSize), byteSizeText(limits.maxEntrySize));
        else if (!ok && password->empty() && VPZipArchive::isFilePasswordProtectedAtPath(o.archive))
            message +=
                "; the archive is encrypted: give its password with --password - or VELMO_ZIP_PASSWORD";
        // On success the error is of an entry alone (a link that could not be made): the rest is unpacked.
        if (ok)
            Console::warning(message);
        else
            Console::error(message);
    }

    const std::uint64_t failed = tally.failures.size() + (tally.stoppedInEntry ? 1 : 0);
    std::string summary =
        fmt::format("{} -> {}: {} unzipped", o.archive, o.destination, entriesText(tally.written));
    if (failed > 0) summary += fmt::format(", {} failed", failed);
    if (tally.kept > 0) summary += fmt::format(", {} kept as they were", tally.kept);
    if (!ok || failed > 0) {
        // The error line carries the count, also with --quiet, once anything was done.
        if (tally.written > 0 || failed > 0 || tally.kept > 0) Console::error(summary);
        return kExitFailure;
    }
    Console::summary(summary);
    return kExitOK;
}

CLI::Validator byteSizeValidator() {
    // No description: the help shows the option's own type name.
    return CLI::Validator(
        [](std::string& text) -> std::string {
            return parseByteSize(text) ? std::string()
                                       : "not a size: give bytes, or a number with K, M, G or T";
        },
        "");
}

} // namespace

CommandRun addUnzipCommand(CLI::App& app) {
    auto o = std::make_shared<UnzipOptions>();
    auto* unzip = app.add_subcommand("unzip", "Unpack a ZIP archive into a directory");
    unzip->add_option("ARCHIVE", o->archive, "Archive to read")->required();
    unzip->add_option("DEST", o->destination, "Directory to unpack into (made if missing)")->required();
    o->passwordOption =
        unzip->add_option("--password", o->password, "Password of encrypted entries (see below)")
            ->type_name("TEXT|-");
    unzip->add_flag("--no-overwrite", o->noOverwrite, "Keep files that already exist");
    unzip->add_option("--nested", o->nested, "Also unpack archives inside, this many levels deep")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()).description(""))
        ->type_name("N");
    unzip
        ->add_option(
            "--max-size", o->maxSize,
            fmt::format("Unpack at most SIZE in all (default {})", byteSizeText(kDefaultMaxTotalSize)))
        ->check(byteSizeValidator())
        ->type_name("SIZE");
    unzip
        ->add_option(
            "--max-entry-size", o->maxEntrySize,
            fmt::format("Unpack at most SIZE per entry (default {})", byteSizeText(kDefaultMaxEntrySize)))
        ->check(byteSizeValidator())
        ->type_name("SIZE");
    unzip->add_flag("--no-limits", o->noLimits, "Unpack whatever the archive holds, however large");
    unzip->add_flag("--no-attributes", o->noAttributes, "Don't restore dates and permissions");
    unzip->footer(
        fmt::format("SIZE is a number of bytes, or of K, M, G or T (1024-based): 500M, 2G. The limits\n"
                    "keep an archive that expands beyond reason from filling the disk.\n\n{}",
                    Password::help()));
    return [o] { return runUnzip(*o); };
}

} // namespace velmo::cli
