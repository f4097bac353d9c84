#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace velmo {

/// File helpers that the platform's file manager gave.
class Files {
public:
    /// The whole file, or nothing when it can't be read.
    static std::optional<std::string> read(const std::filesystem::path& path);
    /// The same, with the reason when it can't be read: a directory gives "Is a directory".
    static std::optional<std::string> read(const std::filesystem::path& path, std::error_code& error);
    /// Everything left to read from an open descriptor (a pipe, a terminal, a file); the reason in
    /// `error` when a read fails. The descriptor stays open.
    static std::optional<std::string> readAll(int fd, std::error_code& error);
    /// Writes to a temporary file beside the target, flushes it and renames it over the target,
    /// so a reader sees the old file or the new one and never half of one. Creates missing folders.
    static bool writeAtomically(const std::filesystem::path& path, std::string_view data, int mode = 0644);
    /// The same, with the reason when it fails.
    static bool writeAtomically(const std::filesystem::path& path, std::string_view data, int mode,
                                std::error_code& error);

    /// The per-user folder of the library: `$VELMO_HOME`, else `$XDG_CONFIG_HOME/velmo`,
    /// else `~/.config/velmo`. Not created here.
    static std::filesystem::path velmoHome();
    /// The per-user folder of velmo's data: `$XDG_DATA_HOME/velmo`, else `~/.local/share/velmo`.
    /// Not created here.
    static std::filesystem::path velmoDataHome();
    /// A fresh temporary folder under the system's temporary folder.
    static std::filesystem::path makeTemporaryDirectory(std::string_view prefix = "velmo");
};

} // namespace velmo
