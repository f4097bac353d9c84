// velmo unzip ARCHIVE DEST: unpack an archive into a directory, within size limits.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
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

/// Counts what an unpacking run wrote, as the archive tells it: an entry failed when the archive
/// says so, once for it, and was written when the archive finished it without that. An entry begun
/// and neither finished nor failed was left alone on purpose: a file kept with --no-overwrite, or
/// one of the archive's "__MACOSX/" shadows, which is no entry to a user and not counted.
class UnzipTally : public VPZipArchiveDelegate {
public:
    explicit UnzipTally(TerminalProgress& progress) : progress_(progress) {}

    struct Failure {
        VPErrorPtr error;
        /// Where the entry belonged; empty for the entry the run ended in, which it never got past.
        std::string path;
    };

    std::uint64_t written = 0;
    /// Files kept as they were with --no-overwrite.
    std::uint64_t kept = 0;
    std::vector<Failure> failures;

    void zipArchiveWillUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                        const VPZipFileInfo& info) override {
        settle(index);
        pending_ = true;
        pendingIndex_ = index;
        pendingName_ = info.rawName;
    }

    void zipArchiveDidFailToUnzipFileAtIndex(std::int64_t index, std::int64_t, const std::string&,
                                             const VPZipFileInfo&, const VPErrorPtr& error) override {
        settle(index);
        failedAt_[index] = failures.size();
        failures.push_back({error, {}});
    }

    void zipArchiveDidUnzipFileAtIndex(std::int64_t index, std::int64_t total, const std::string&,
                                       const std::string& path) override {
        settle(index);
        if (const auto failed = failedAt_.find(index); failed != failedAt_.end())
            failures[failed->second].path = path;
        else
            ++written;
        progress_.update("Unzipping", static_cast<std::uint64_t>(index + 1),
                         static_cast<std::uint64_t>(total));
    }

    /// After the run: an entry still begun was passed over.
    void finish() { settle(-1); }

    /// Why the run ended in an entry, naming it; nullptr when it didn't.
    VPErrorPtr endingError() const {
        return !failures.empty() && failures.back().path.empty() ? failures.back().error : nullptr;
    }

private:
    /// Counts the entry begun before, unless it is `index` itself, whose outcome is being told.
    void settle(std::int64_t index) {
        if (pending_ && pendingIndex_ != index && !pendingName_.starts_with("__MACOSX/")) ++kept;
        pending_ = false;
    }

    TerminalProgress& progress_;
    bool pending_ = false;
    std::int64_t pendingIndex_ = -1;
    std::string pendingName_;
    std::unordered_map<std::int64_t, std::size_t> failedAt_;
};

/// Why an entry was not written, in the system's words where the archive has them.
std::string whyNotWritten(const VPErrorPtr& error) {
    if (error->domain() == kNSPOSIXErrorDomain) return std::strerror(static_cast<int>(error->code()));
    return errorText(error);
}

std::string entriesText(std::uint64_t count) {
    return fmt::format("{} {}", count, count == 1 ? "entry" : "entries");
}

bool isLimitError(const VPErrorPtr& error) {
    return error && error->domain() == kVPZipArchiveErrorDomain &&
           error->code() == static_cast<std::int64_t>(VPZipArchiveErrorCode::UnzipLimitPassed);
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
    UnzipTally tally(progress);
    const bool ok = VPZipArchive::unzipFileAtPath(o.archive, o.destination, !o.noAttributes, !o.noOverwrite,
                                                  o.nested, *password, &error, &tally, {}, {}, limits);
    tally.finish();

    if (!ok && error && error->domain() == kVPZipArchiveErrorDomain &&
        error->code() == static_cast<std::int64_t>(VPZipArchiveErrorCode::FailedOpenZipFile)) {
        // The reason alone ("Not a zip archive"): "failed to open zip file" adds nothing to "cannot read".
        const Value& reason = error->userInfo().get(kNSLocalizedFailureReasonErrorKey);
        Console::error(fmt::format("cannot read {}: {}", o.archive,
                                   reason.isString() ? reason.str() : errorText(error)));
        return kExitUsage;
    }
    // Entries the run went on after, by their paths; the one it ended in is told by the error line.
    std::size_t named = 0;
    std::uint64_t unnamed = 0;
    for (const auto& failure : tally.failures) {
        if (failure.path.empty()) continue;
        if (named++ < kFailuresNamed)
            Console::error(fmt::format("cannot write {}: {}", failure.path, whyNotWritten(failure.error)));
        else
            ++unnamed;
    }
    if (unnamed > 0) Console::error(fmt::format("... and {} more", unnamed));
    // The entry the run ended in names itself; a read that fails midway is no error of the run's own.
    // An error of an entry the run went on after (a link that could not be made) was told above.
    VPErrorPtr ending = tally.endingError() ? tally.endingError() : error;
    if (std::any_of(tally.failures.begin(), tally.failures.end(),
                    [&](const UnzipTally::Failure& f) { return !f.path.empty() && f.error == ending; }))
        ending = nullptr;
    if (ending || !ok) {
        std::string message =
            ending ? errorText(ending) : fmt::format("{} could not be read to the end", o.archive);
        if (isLimitError(ending))
            message =
                fmt::format("{}: {}; the limits are {} in all, {} per entry: --max-size, --max-entry-size "
                            "and --no-limits change them",
                            o.archive, ending->userInfo().get(kNSLocalizedFailureReasonErrorKey).str(),
                            byteSizeText(limits.maxTotalSize), byteSizeText(limits.maxEntrySize));
        else if (!ok && password->empty() && VPZipArchive::isFilePasswordProtectedAtPath(o.archive))
            message +=
                "; the archive is encrypted: give its password with --password - or VELMO_ZIP_PASSWORD";
        Console::error(message);
    }

    const std::uint64_t failed = tally.failures.size();
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
    unzip
        ->add_option("--nested", o->nested,
                     "Also unpack archives inside, N levels deep (negative: any depth up to 32)")
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
