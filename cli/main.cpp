// velmo: a minimal host of the library. It binds what a host binds, runs the work, and exits
// 0 on success, 1 when the work fails, 2 on bad usage or unreadable input.
#include <cstdio>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands.h"
#include "velmo/host/VVHost.h"

int main(int argc, char** argv) {
    // The host's client configuration and user come first: the library reads them from its start.
    for (const auto& warning : velmo::VVHost::bind())
        fmt::print(stderr, "velmo: warning: {}\n", warning);

    CLI::App app{"velmo: decode, repair, inspect and re-encode Velmo documents"};
    app.set_version_flag("--version", std::string("velmo ") + VELMO_VERSION);
    app.require_subcommand(1);

    int exitCode = velmo::cli::kExitOK;
    velmo::cli::addJsonCommand(app, exitCode);
    velmo::cli::addTreeCommand(app, exitCode);
    velmo::cli::addZipCommands(app, exitCode);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return velmo::cli::kExitUsage;
    }
    std::fflush(stdout);
    return exitCode;
}
