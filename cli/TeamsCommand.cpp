// velmo teams [--json]: the teams the user belongs to, as the service lists the memberships.
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "ServiceSession.h"
#include "velmo/foundation/Json.h"

namespace velmo::cli {

namespace {

struct TeamsOptions {
    bool json = false;
    std::string api;
};

int runTeams(const TeamsOptions& o) {
    int exitCode = kExitOK;
    const auto client = ServiceSession::start(o.api, true, exitCode);
    if (!client) return exitCode;
    const auto answer = ServiceSession::call([&](auto completion) { client->refreshTeams(completion); });
    if (!answer) return kExitFailure;
    if (answer->error) return ServiceSession::fail(answer->error, answer->response);
    const Value& results = answer->response.dictionary().get("results");
    if (!results.isArray()) {
        Console::error("the service's answer holds no list of teams (\"results\")");
        return kExitFailure;
    }
    if (o.json) {
        Console::out(Json::write(results, true) + "\n");
        return kExitOK;
    }
    for (const Value& membership : results.array()) {
        const Dictionary record = membership.dictionary();
        Console::out(fmt::format("{} ({})\n", ServiceSession::shown(record.get("team_name")),
                                 ServiceSession::shown(record.get("team"))));
    }
    if (results.array().empty()) Console::summary("no teams");
    return kExitOK;
}

} // namespace

CommandRun addTeamsCommand(CLI::App& app) {
    auto options = std::make_shared<TeamsOptions>();
    auto* cmd = app.add_subcommand("teams", "List your teams as \"name (team id)\"");
    cmd->add_flag("--json", options->json, "Print the memberships as the service gives them, as JSON");
    ServiceSession::addApiOption(*cmd, options->api);
    return [options] { return runTeams(*options); };
}

} // namespace velmo::cli
