#pragma once

#include <CLI/CLI.hpp>

namespace velmo::cli {

inline constexpr int kExitOK = 0;
/// The work failed.
inline constexpr int kExitFailure = 1;
/// Bad usage or unreadable input.
inline constexpr int kExitUsage = 2;

/// Each command adds its subcommand to the app; its callback stores the exit code in `exitCode`.
void addJsonCommand(CLI::App& app, int& exitCode);
void addTreeCommand(CLI::App& app, int& exitCode);
void addZipCommands(CLI::App& app, int& exitCode);

} // namespace velmo::cli
