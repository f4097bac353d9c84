#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace velmo::cli {

inline constexpr int kExitOK = 0;
/// The work failed.
inline constexpr int kExitFailure = 1;
/// Bad usage or unreadable input.
inline constexpr int kExitUsage = 2;

/// The work of a subcommand, run once its arguments are parsed and the host is bound; gives the
/// exit code.
using CommandRun = std::function<int()>;

/// Each adds its subcommand to the app and gives the work to run when it is chosen.
CommandRun addJsonCommand(CLI::App& app);
CommandRun addTreeCommand(CLI::App& app);
CommandRun addInfoCommand(CLI::App& app);
CommandRun addZipCommand(CLI::App& app);
CommandRun addUnzipCommand(CLI::App& app);
CommandRun addConfigCommand(CLI::App& app);
CommandRun addThemeCommand(CLI::App& app);
CommandRun addLoginCommand(CLI::App& app);
CommandRun addLogoutCommand(CLI::App& app);
CommandRun addTeamsCommand(CLI::App& app);
CommandRun addProjectsCommand(CLI::App& app);
CommandRun addRepairCommand(CLI::App& app);
CommandRun addServeCommand(CLI::App& app);

} // namespace velmo::cli
