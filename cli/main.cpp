// velmo: a minimal host of the library. It binds what a host binds, runs the work, and exits
// 0 on success, 1 when the work fails, 2 on bad usage or unreadable input.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "velmo/foundation/SystemLog.h"
#include "velmo/host/VVHost.h"

namespace {

using velmo::cli::Console;

struct Subcommand {
    CLI::App* app;
    velmo::cli::CommandRun run;
};

std::string commandList(const std::vector<Subcommand>& commands) {
    std::string list;
    for (const auto& command : commands)
        list += (list.empty() ? "" : ", ") + command.app->get_name();
    return list;
}

/// The first word that is not an option names the command; only the options of `velmo` itself,
/// none of which takes a value, can come before it.
const char* commandWord(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--") return i + 1 < argc ? argv[i + 1] : nullptr;
        if (!word.starts_with("-") || word == "-") return argv[i];
    }
    return nullptr;
}

/// The library writes its log to standard error. The command says what went wrong in its own
/// words, so the log, which repeats it with a time stamp, shows only when asked for.
void routeLibraryLog(Console::Verbosity verbosity) {
    if (verbosity != Console::Verbosity::Verbose) velmo::SystemLog::setSink([](std::string_view) {});
}

int parseFailure(const CLI::App& app, const CLI::ParseError& e) {
    std::string usage = "velmo";
    for (const auto* sub : app.get_subcommands())
        usage += " " + sub->get_name();
    Console::error(e.what());
    Console::error(fmt::format("run '{} --help' for more", usage));
    return velmo::cli::kExitUsage;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"velmo: decode, inspect and re-encode Velmo documents; pack and unpack ZIP archives",
                 "velmo"};
    app.set_version_flag("--version", std::string("velmo ") + VELMO_VERSION);
    bool verbose = false;
    bool quiet = false;
    app.add_flag("-v,--verbose", verbose, "Also show the library's log (as does VELMO_LOG=debug)");
    app.add_flag("-q,--quiet", quiet, "Show nothing but results and the error line");
    app.require_subcommand(1);
    // Subcommands inherit it: `velmo json doc.json --verbose` works as `velmo --verbose json doc.json`.
    app.fallthrough();
    app.footer("Exit status: 0 done, 1 the work failed, 2 bad usage or unreadable input.\n"
               "Run 'velmo COMMAND --help' for the options of a command.");

    std::vector<velmo::cli::CommandRun> runs = {
        velmo::cli::addJsonCommand(app),     velmo::cli::addTreeCommand(app),
        velmo::cli::addInfoCommand(app),     velmo::cli::addZipCommand(app),
        velmo::cli::addUnzipCommand(app),    velmo::cli::addConfigCommand(app),
        velmo::cli::addThemeCommand(app),    velmo::cli::addLoginCommand(app),
        velmo::cli::addLogoutCommand(app),   velmo::cli::addTeamsCommand(app),
        velmo::cli::addProjectsCommand(app), velmo::cli::addRepairCommand(app),
        velmo::cli::addServeCommand(app),
    };
    std::vector<Subcommand> commands;
    const auto added = app.get_subcommands([](const CLI::App*) { return true; });
    for (std::size_t i = 0; i < runs.size(); ++i)
        commands.push_back({added.at(i), std::move(runs[i])});

    // Said before parsing, which would only say that a command is required.
    if (const char* word = commandWord(argc, argv)) {
        const auto known = [word](const Subcommand& c) { return c.app->check_name(word); };
        if (std::none_of(commands.begin(), commands.end(), known)) {
            Console::error(
                fmt::format("unknown command '{}'; the commands are {}", word, commandList(commands)));
            Console::error("run 'velmo --help' for more");
            return velmo::cli::kExitUsage;
        }
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        // Help and version: printed, and checked like any output.
        return Console::finish(app.exit(e));
    } catch (const CLI::ParseError& e) {
        if (app.get_subcommands().empty() && commandWord(argc, argv) == nullptr) {
            Console::error(fmt::format("no command given; the commands are {}", commandList(commands)));
            Console::error("run 'velmo --help' for more");
            return velmo::cli::kExitUsage;
        }
        return parseFailure(app, e);
    }

    if (quiet && verbose) {
        Console::error("--quiet and --verbose: choose one");
        return velmo::cli::kExitUsage;
    }
    const char* logLevel = std::getenv("VELMO_LOG");
    const bool debugLog = logLevel && std::string_view(logLevel) == "debug";
    Console::setVerbosity(quiet                 ? Console::Verbosity::Quiet
                          : verbose || debugLog ? Console::Verbosity::Verbose
                                                : Console::Verbosity::Normal);
    routeLibraryLog(Console::verbosity());

    // Bound only now that there is work: --help and --version don't need the host's settings.
    // The client configuration and user come before any other use: the library reads them from its start.
    for (const auto& warning : velmo::VVHost::bind())
        Console::warning(warning);

    const CLI::App* chosen = app.get_subcommands().front();
    for (const auto& command : commands) {
        if (command.app == chosen) return Console::finish(command.run());
    }
    return velmo::cli::kExitUsage;
}
