// velmo zip OUT.zip PATH...: pack files, or the contents of one directory, into an archive.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Commands.h"
#include "Console.h"
#include "Folders.h"
#include "Password.h"
#include "TerminalProgress.h"
#include "velmo/archive/VPZipArchive.h"
#include "velmo/foundation/Uuid.h"

namespace velmo::cli {

namespace {

namespace fs = std::filesystem;

struct ZipOptions {
    std::string output;
    std::vector<std::string> paths;
    std::string password;
    CLI::Option* passwordOption = nullptr;
    bool noAes = false;
    int level = -1;
    bool keepParent = false;
};

/// Why a path can't be packed, or "" when it can; `directory` tells which kind it is.
std::string unreadableReason(const std::string& path, bool& directory) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return std::strerror(errno);
    directory = S_ISDIR(info.st_mode);
    if (!directory && !S_ISREG(info.st_mode)) return "not a regular file or a directory";
    if (::access(path.c_str(), directory ? (R_OK | X_OK) : R_OK) != 0) return std::strerror(errno);
    return {};
}

bool isInside(const fs::path& path, const fs::path& directory) {
    // Absolute first: a relative path none of which exists comes back from weakly_canonical as it was.
    std::error_code ec;
    fs::path folder = fs::weakly_canonical(fs::absolute(directory, ec), ec);
    // A folder named with a trailing "/" keeps an empty last part, which no path inside matches.
    if (!folder.has_filename()) folder = folder.parent_path();
    const fs::path relative = fs::weakly_canonical(fs::absolute(path, ec), ec).lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

int runZip(const ZipOptions& o) {
    if (o.output == "-") {
        Console::error("zip writes the archive to a file: standard output (-) can't take it");
        return kExitUsage;
    }
    bool directory = false;
    for (const auto& path : o.paths) {
        if (path == "-") {
            Console::error("zip packs files and directories: standard input (-) can't be packed");
            return kExitUsage;
        }
        bool isDirectory = false;
        if (const std::string reason = unreadableReason(path, isDirectory); !reason.empty()) {
            Console::error(fmt::format("cannot read {}: {}", path, reason));
            return kExitUsage;
        }
        directory = directory || isDirectory;
    }
    if (directory && o.paths.size() != 1) {
        Console::error("a directory must be the only PATH");
        return kExitUsage;
    }
    if (o.keepParent && !directory) {
        Console::error("--keep-parent applies to a directory");
        return kExitUsage;
    }
    // The old archive would be packed into the new one.
    if (directory && isInside(o.output, o.paths.front())) {
        Console::error(fmt::format("{} is inside {}, the directory being zipped: write it elsewhere",
                                   o.output, o.paths.front()));
        return kExitUsage;
    }
    std::error_code ec;
    if (fs::is_directory(o.output, ec)) {
        Console::error(fmt::format("cannot write {}: Is a directory", o.output));
        return kExitFailure;
    }
    const fs::path target = fs::absolute(o.output, ec);
    if (const std::string reason = unwritableReason(target.parent_path(), false); !reason.empty()) {
        Console::error(fmt::format("cannot write {}: {}", o.output, reason));
        return kExitFailure;
    }
    const auto password = Password::resolve(o.passwordOption->count() > 0, o.password, true);
    if (!password) return kExitUsage;

    // Written beside the target under a name of its own and renamed into place only when whole,
    // so a failure never leaves half an archive, nor harms one already there.
    const std::string temporary = target.string() + ".tmp-" + Uuid::lowercaseString().substr(0, 8);
    VPErrorPtr error;
    std::uint64_t entries = 0;
    bool ok = false;
    {
        TerminalProgress progress;
        // Adding is quick; the entries are compressed and written when the archive is closed.
        const auto onPath = [&](std::uint64_t done, std::uint64_t total) {
            progress.update("Adding", done, total);
        };
        const auto onEntry = [&](std::uint64_t written, std::uint64_t total) {
            entries = written;
            progress.update("Compressing", written, total);
        };
        ok = directory
                 ? VPZipArchive::createZipFileAtPathWithContentsOfDirectory(temporary, o.paths.front(),
                                                                            o.keepParent, o.level, *password,
                                                                            !o.noAes, onPath, &error, onEntry)
                 : VPZipArchive::createZipFileAtPath(temporary, o.paths, o.level, *password, !o.noAes, onPath,
                                                     &error, onEntry);
    }
    if (ok && ::rename(temporary.c_str(), target.c_str()) != 0) {
        error = VPError::withDescription(kNSPOSIXErrorDomain, errno, std::strerror(errno));
        ok = false;
    }
    if (!ok) {
        fs::remove(temporary, ec);
        std::string message = error ? errorText(error) : "the archive could not be written";
        replaceAll(message, temporary, o.output);
        Console::error(fmt::format("{} not written: {}", o.output, message));
        return kExitFailure;
    }
    Console::summary(fmt::format("{}: {} {} zipped", o.output, entries, entries == 1 ? "entry" : "entries"));
    return kExitOK;
}

} // namespace

CommandRun addZipCommand(CLI::App& app) {
    auto o = std::make_shared<ZipOptions>();
    auto* zip = app.add_subcommand("zip", "Pack files, or the contents of one directory, into a ZIP archive");
    zip->add_option("OUT", o->output, "Archive to write (replaced only once the new one is whole)")
        ->required();
    zip->add_option("PATH", o->paths, "Files (each under its own name), or a single directory")->required();
    o->passwordOption =
        zip->add_option("--password", o->password, "Encrypt the entries with a password (see below)")
            ->type_name("TEXT|-");
    zip->add_flag("--no-aes", o->noAes, "Use the traditional ZIP cipher instead of AES-256");
    zip->add_option("--level", o->level, "Compression level: -1 default, 0 store, 1-9")
        ->check(CLI::Range(-1, 9).description(""))
        ->type_name("N");
    zip->add_flag("--keep-parent", o->keepParent, "Put a directory's contents under its own name");
    zip->footer(Password::help());
    return [o] { return runZip(*o); };
}

} // namespace velmo::cli
