// velmo projects [--json] and velmo projects create NAME [--team ID] [--json]: the user's projects
// in all their teams, and a new one.
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "ServiceSession.h"
#include "velmo/foundation/Json.h"
#include "velmo/service/ProjectDictionaryExtensions.h"
#include "velmo/service/VPAccountData.h"

namespace velmo::cli {

namespace {

struct ProjectsOptions {
    bool json = false;
    std::string api;
    CLI::App* create = nullptr;
    std::string name;
    std::string team;
    CLI::Option* teamOption = nullptr;
};

/// "team / project (id)"; a team that no membership names shows its id.
std::string projectLine(const Dictionary& project) {
    std::string team = _projectDic_teamName(project);
    if (team.empty()) team = ServiceSession::shown(_projectDic_teamID(project));
    return fmt::format("{} / {} ({})", team, ServiceSession::shown(_projectDic_projectName(project)),
                       ServiceSession::shown(project.get("id")));
}

int runList(const ProjectsOptions& o) {
    int exitCode = kExitOK;
    const auto client = ServiceSession::start(o.api, true, exitCode);
    if (!client) return exitCode;
    const auto answer =
        ServiceSession::call([&](auto completion) { client->refreshProjectsWithCompletion(completion); });
    if (!answer) return kExitFailure;
    if (answer->error) return ServiceSession::fail(answer->error);
    const Array projects = VPAccountData::shared().cachedProjects();
    if (o.json) {
        Console::out(Json::write(Value(projects.isNil() ? Array::create() : projects), true) + "\n");
        return kExitOK;
    }
    for (const Value& project : projects)
        Console::out(projectLine(project.dictionary()) + "\n");
    if (projects.empty()) Console::summary("no projects");
    return kExitOK;
}

int runCreate(const ProjectsOptions& o) {
    if (o.name.empty()) {
        Console::error("the project's name is empty");
        return kExitUsage;
    }
    std::optional<std::string> team;
    if (o.teamOption->count() > 0) {
        if (o.team.empty()) {
            Console::error("--team: the team's id is empty");
            return kExitUsage;
        }
        team = o.team;
    }
    int exitCode = kExitOK;
    const auto client = ServiceSession::start(o.api, true, exitCode);
    if (!client) return exitCode;
    const auto answer = ServiceSession::call(
        [&](auto completion) { client->createProjectWithName(o.name, team, completion); });
    if (!answer) return kExitFailure;
    if (answer->error) return ServiceSession::fail(answer->error, answer->response);
    if (o.json) {
        Console::out(Json::write(answer->response, true) + "\n");
        return kExitOK;
    }
    const Dictionary project = answer->response.dictionary();
    Console::out(fmt::format("created {} ({}){}\n", ServiceSession::shown(_projectDic_projectName(project)),
                             ServiceSession::shown(project.get("id")),
                             team ? fmt::format(" in team {}", *team) : std::string()));
    return kExitOK;
}

} // namespace

CommandRun addProjectsCommand(CLI::App& app) {
    auto options = std::make_shared<ProjectsOptions>();
    auto* cmd =
        app.add_subcommand("projects", "List your projects as \"team / project (id)\", or create one");
    cmd->add_flag("--json", options->json, "Print the project records as the service gives them, as JSON");
    ServiceSession::addApiOption(*cmd, options->api);
    options->create = cmd->add_subcommand("create", "Create a project, in a team when --team is given");
    options->create->add_option("NAME", options->name, "The project's name")->required();
    options->teamOption =
        options->create->add_option("--team", options->team, "The id of the team (see 'velmo teams')");
    return [options] { return options->create->parsed() ? runCreate(*options) : runList(*options); };
}

} // namespace velmo::cli
