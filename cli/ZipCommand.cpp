// velmo zip OUT.zip PATH... and velmo unzip ARCHIVE DEST: pack and unpack archives.
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <unistd.h>

#include "Commands.h"
#include "velmo/archive/VPZipArchive.h"

namespace velmo::cli {

namespace {

namespace fs = std::filesystem;

/// "Zipping 12/40" on one line of a terminal; nothing when standard error is not a terminal.
class TerminalProgress {
public:
    TerminalProgress() : enabled_(::isatty(STDERR_FILENO) == 1) {}
    ~TerminalProgress() {
        if (shown_) fmt::print(stderr, "\n");
    }

    void update(const char* verb, std::uint64_t done, std::uint64_t total) {
        if (!enabled_) return;
        // Padded, so a shorter line covers a longer one.
        fmt::print(stderr, "\r{:<40}", fmt::format("{} {}/{}", verb, done, total));
        std::fflush(stderr);
        shown_ = true;
    }

private:
    bool enabled_;
    bool shown_ = false;
};

std::string messageOf(const VPErrorPtr& error, const std::string& fallback) {
    if (!error) return fallback;
    const Value& reason = error->userInfo().get(kNSLocalizedFailureReasonErrorKey);
    return reason.isString() ? fmt::format("{} ({})", error->localizedDescription(), reason.str())
                             : error->localizedDescription();
}

struct ZipOptions {
    std::string output;
    std::vector<std::string> paths;
    std::string password;
    bool noAes = false;
    int level = -1;
    bool keepParent = false;
};

struct UnzipOptions {
    std::string archive;
    std::string destination;
    std::string password;
    bool noOverwrite = false;
    int nested = 0;
    bool noAttributes = false;
};

int runZip(const ZipOptions& o) {
    std::error_code ec;
    bool directory = false;
    for (const auto& path : o.paths) {
        if (!fs::exists(path, ec)) {
            fmt::print(stderr, "velmo: cannot read {}\n", path);
            return kExitUsage;
        }
        directory = directory || fs::is_directory(path, ec);
    }
    if (directory && o.paths.size() != 1) {
        fmt::print(stderr, "velmo: a directory must be the only PATH\n");
        return kExitUsage;
    }
    if (o.keepParent && !directory) {
        fmt::print(stderr, "velmo: --keep-parent applies to a directory\n");
        return kExitUsage;
    }
    VPErrorPtr error;
    std::uint64_t entries = 0;
    bool ok = false;
    {
        TerminalProgress progress;
        // Adding is quick; the entries are compressed and written when the archive is closed.
        const auto onPath = [&](std::uint64_t done, std::uint64_t total) {
            entries = done;
            progress.update("Adding", done, total);
        };
        const auto onEntry = [&](std::uint64_t written, std::uint64_t total) {
            progress.update("Compressing", written, total);
        };
        ok = directory
                 ? VPZipArchive::createZipFileAtPathWithContentsOfDirectory(o.output, o.paths.front(),
                                                                            o.keepParent, o.level, o.password,
                                                                            !o.noAes, onPath, &error, onEntry)
                 : VPZipArchive::createZipFileAtPath(o.output, o.paths, o.level, o.password, !o.noAes, onPath,
                                                     &error, onEntry);
    }
    if (!ok) {
        fmt::print(stderr, "velmo: {}\n", messageOf(error, "could not write " + o.output));
        return kExitFailure;
    }
    fmt::print("{}: {} {} zipped\n", o.output, entries, entries == 1 ? "path" : "paths");
    return kExitOK;
}

int runUnzip(const UnzipOptions& o) {
    std::error_code ec;
    if (!fs::is_regular_file(o.archive, ec)) {
        fmt::print(stderr, "velmo: cannot read {}\n", o.archive);
        return kExitUsage;
    }
    VPErrorPtr error;
    std::int64_t entries = 0;
    bool ok = false;
    {
        TerminalProgress progress;
        ok = VPZipArchive::unzipFileAtPath(
            o.archive, o.destination, !o.noAttributes, !o.noOverwrite, o.nested, o.password, &error, nullptr,
            [&](const std::string&, const VPZipFileInfo&, std::int64_t index, std::int64_t total) {
                ++entries;
                progress.update("Unzipping", static_cast<std::uint64_t>(index + 1),
                                static_cast<std::uint64_t>(total));
            },
            {});
    }
    if (!ok) {
        fmt::print(stderr, "velmo: {}\n", messageOf(error, "could not unzip " + o.archive));
        return kExitFailure;
    }
    // A link that could not be made leaves the rest of the archive unpacked.
    if (error) fmt::print(stderr, "velmo: warning: {}\n", messageOf(error, ""));
    fmt::print("{}: {} {} unzipped into {}\n", o.archive, entries, entries == 1 ? "entry" : "entries",
               o.destination);
    return kExitOK;
}

} // namespace

void addZipCommands(CLI::App& app, int& exitCode) {
    auto zipOptions = std::make_shared<ZipOptions>();
    auto* zip = app.add_subcommand("zip", "Pack files, or the contents of one directory, into a ZIP archive");
    zip->add_option("OUT", zipOptions->output, "Archive to write")->required();
    zip->add_option("PATH", zipOptions->paths, "Files (each under its own name), or a single directory")
        ->required();
    zip->add_option("--password", zipOptions->password, "Encrypt the entries with this password");
    zip->add_flag("--no-aes", zipOptions->noAes, "Use the traditional ZIP cipher instead of AES-256");
    zip->add_option("--level", zipOptions->level, "Compression level: -1 default, 0 store, 1-9")
        ->check(CLI::Range(-1, 9));
    zip->add_flag("--keep-parent", zipOptions->keepParent, "Put a directory's contents under its own name");
    zip->callback([&exitCode, zipOptions] { exitCode = runZip(*zipOptions); });

    auto unzipOptions = std::make_shared<UnzipOptions>();
    auto* unzip = app.add_subcommand("unzip", "Unpack a ZIP archive into a directory");
    unzip->add_option("ARCHIVE", unzipOptions->archive, "Archive to read")->required();
    unzip->add_option("DEST", unzipOptions->destination, "Directory to unpack into")->required();
    unzip->add_option("--password", unzipOptions->password, "Password of encrypted entries");
    unzip->add_flag("--no-overwrite", unzipOptions->noOverwrite, "Keep files that already exist");
    unzip->add_option("--nested", unzipOptions->nested, "Also unpack archives inside, this many levels deep")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    unzip->add_flag("--no-attributes", unzipOptions->noAttributes, "Don't restore dates and permissions");
    unzip->callback([&exitCode, unzipOptions] { exitCode = runUnzip(*unzipOptions); });
}

} // namespace velmo::cli
