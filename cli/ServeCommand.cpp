// velmo serve: the local service that answers the service client's calls, so that signing in,
// teams, projects, releases and the configuration work on one machine. Also its operator's tools:
// users and their tokens, teams, fonts, and the logging lines and events it received.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <SQLiteCpp/Exception.h>
#include <fmt/format.h>

#include "ByteSize.h"
#include "Commands.h"
#include "Console.h"
#include "server/ServiceError.h"
#include "server/ServiceServer.h"
#include "velmo/config/VPConfigManager.h"
#include "velmo/foundation/Files.h"
#include "velmo/foundation/Json.h"
#include "velmo/foundation/SystemLog.h"

namespace velmo::cli {

namespace {

namespace fs = std::filesystem;
using server::ServiceOptions;
using server::ServiceServer;
using server::ServiceStore;

// The service's own defaults, as the options' help shows them.
const ServiceOptions kDefaults;

struct ServeOptions {
    std::string listen = fmt::format("{}:{}", kDefaults.host, kDefaults.port);
    std::string data;
    std::string config;
    std::size_t workers = kDefaults.workers;
    std::string maxBody = byteSizeText(kDefaults.maxBodyBytes);
    std::size_t maxEvents = kDefaults.maxEvents;
    std::string addUser;
    std::string name;
    std::string addTeam;
    std::vector<std::string> members;
    std::vector<std::string> addFonts;
    bool events = false;
    std::size_t last = 0;
    bool json = false;
};

/// "HOST:PORT", "HOST:" or ":PORT"; nothing when the port isn't a number from 0 to 65535.
std::optional<std::pair<std::string, int>> parseListen(const std::string& text) {
    const auto colon = text.rfind(':');
    if (colon == std::string::npos) return std::nullopt;
    std::string host = text.substr(0, colon);
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    const std::string portText = text.substr(colon + 1);
    int port = 0;
    const auto [end, ec] = std::from_chars(portText.data(), portText.data() + portText.size(), port);
    if (portText.empty() || ec != std::errc() || end != portText.data() + portText.size() || port < 0 ||
        port > 65535)
        return std::nullopt;
    return std::pair{host.empty() ? std::string("127.0.0.1") : host, port};
}

/// The configuration document: --config, else the copy that ships with velmo.
fs::path configFile(const std::string& option) {
    if (!option.empty()) return option;
    for (const fs::path& folder : VPConfigManager::resourceFolders()) {
        fs::path file = folder / "plugin_config.json";
        std::error_code ec;
        if (fs::is_regular_file(file, ec)) return file;
    }
    return {};
}

/// Written by the signal handler, read by the thread that stops the service.
int gSignalPipe[2] = {-1, -1};

void onSignal(int) {
    const char byte = 1;
    // Nothing else is safe in a handler; the watcher thread does the stopping.
    [[maybe_unused]] const auto written = ::write(gSignalPipe[1], &byte, 1);
}

/// Runs the server until SIGINT or SIGTERM: requests in flight are answered, then it returns.
int runServer(const ServeOptions& o, const fs::path& data) {
    const auto listen = parseListen(o.listen);
    if (!listen) {
        Console::error(fmt::format("--listen: \"{}\" is not HOST:PORT (such as 127.0.0.1:8787)", o.listen));
        return kExitUsage;
    }
    const auto maxBody = parseByteSize(o.maxBody);
    if (!maxBody || *maxBody == 0) {
        Console::error(fmt::format("--max-body: \"{}\" is not a size (such as 512K or 8M)", o.maxBody));
        return kExitUsage;
    }
    ServiceOptions options;
    options.host = listen->first;
    options.port = listen->second;
    options.dataFolder = data;
    options.configFile = configFile(o.config);
    options.workers = o.workers;
    options.maxBodyBytes = *maxBody;
    options.maxEvents = o.maxEvents;
    if (!o.config.empty()) {
        // Read again at each request, so it must be a file; what clients get must be a document.
        if (o.config == "-") {
            Console::error("--config: the document is read again at each request, so it must be a file, "
                           "not standard input (-)");
            return kExitUsage;
        }
        std::error_code ec;
        const auto text = fs::is_regular_file(o.config, ec) ? Files::read(o.config, ec) : std::nullopt;
        if (!text) {
            Console::error(fmt::format("--config: {} is not a readable file{}", o.config,
                                       ec ? fmt::format(" ({})", ec.message()) : std::string()));
            return kExitUsage;
        }
        std::string problem;
        try {
            if (!Json::parse(*text).isDictionary()) problem = "it is not a JSON object";
        } catch (const JsonParseError& e) {
            problem = e.what();
        }
        if (!problem.empty()) {
            Console::error(
                fmt::format("--config: {} is not a configuration document: {}", o.config, problem));
            return kExitUsage;
        }
    }

    ServiceServer server(options);
    server.bind();
    // What the service can't answer is the operator's to see, whatever the command's verbosity.
    SystemLog::setSink([](std::string_view line) { Console::error(line); });
    if (::pipe2(gSignalPipe, O_CLOEXEC) != 0) throw std::runtime_error("cannot make the signal pipe");
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
    std::thread watcher([&server] {
        char byte = 0;
        while (::read(gSignalPipe[0], &byte, 1) < 0 && errno == EINTR) {
        }
        server.stop();
    });
    Console::note(fmt::format("velmo serve: listening on {} (data in {}; Ctrl-C stops)\n", server.baseURL(),
                              data.string()));
    server.serve();
    onSignal(0); // a watcher still waiting has nothing left to stop
    watcher.join();
    // A signal from now on must not write to a pipe that is closed, or whatever took its number.
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    ::close(gSignalPipe[0]);
    ::close(gSignalPipe[1]);
    Console::note("velmo serve: stopped\n");
    return kExitOK;
}

int runAddUser(const ServeOptions& o, ServiceStore& store) {
    const auto at = o.addUser.find('@');
    if (at == std::string::npos || at == 0 || at + 1 == o.addUser.size() ||
        o.addUser.find_first_of(" \t\r\n") != std::string::npos) {
        Console::error(fmt::format("--add-user: \"{}\" is not an e-mail address", o.addUser));
        return kExitUsage;
    }
    // The token is shown only once: it is kept only if it reached the output.
    store.addUser(o.addUser, o.name, [](const ServiceStore::NewToken& added) {
        Console::summary(
            added.createdUser
                ? fmt::format("added {} ({}); the token, shown this once:", added.user.email, added.user.id)
                : fmt::format("{} is known; a new token for them, shown this once:", added.user.email));
        Console::out(added.token + "\n");
        return Console::flush();
    });
    return kExitOK;
}

int runAddTeam(const ServeOptions& o, ServiceStore& store) {
    if (o.addTeam.find_first_not_of(" \t") == std::string::npos) {
        Console::error("--add-team: the team's name is empty");
        return kExitUsage;
    }
    bool created = false;
    const Dictionary team = store.addTeam(o.addTeam, o.members, created);
    Console::out(fmt::format("{} team {} ({}){}\n", created ? "added" : "updated", o.addTeam,
                             team.get("id").str(),
                             o.members.empty() ? "" : fmt::format(", {} member(s) in it", o.members.size())));
    return kExitOK;
}

int runAddFonts(const ServeOptions& o, ServiceStore& store) {
    for (const auto& family : o.addFonts) {
        if (family == "-" || family.find_first_not_of(" \t") == std::string::npos) {
            Console::error(fmt::format("--add-font: \"{}\" is not a font family's name", family));
            return kExitUsage;
        }
    }
    const std::size_t added = store.addFonts(o.addFonts);
    Console::summary(fmt::format("{} font famil{} added, {} known already", added, added == 1 ? "y" : "ies",
                                 o.addFonts.size() - added));
    return kExitOK;
}

int runEvents(const ServeOptions& o, ServiceStore& store) {
    const Array events = store.events(o.last);
    if (o.json) {
        Console::out(Json::write(Value(events), true) + "\n");
        return kExitOK;
    }
    for (const Value& value : events) {
        const Dictionary event = value.dictionary();
        const auto shown = [](const Value& v) { return v.isString() ? v.str() : std::string("-"); };
        Console::out(fmt::format("{} {:<5} {} client={} user={} {}\n", event.get("received_at").str(),
                                 event.get("kind").str(), shown(event.get("name")),
                                 shown(event.get("client_id")), shown(event.get("user_id")),
                                 shown(event.get("user_email"))));
    }
    if (events.empty()) Console::summary("no events");
    return kExitOK;
}

int runServe(const ServeOptions& o) {
    const fs::path data = o.data.empty() ? Files::velmoDataHome() / "service" : fs::path(o.data);
    std::error_code ec;
    if (fs::exists(data, ec) && !fs::is_directory(data, ec)) {
        Console::error(fmt::format("--data: {} is not a folder", data.string()));
        return kExitUsage;
    }
    if (fs::create_directories(data, ec); ec) {
        Console::error(fmt::format("--data: cannot make {}: {}", data.string(), ec.message()));
        return kExitFailure;
    }
    try {
        if (!o.addUser.empty() || !o.addTeam.empty() || !o.addFonts.empty() || o.events) {
            ServiceStore store(data, 1, o.maxEvents);
            if (!o.addUser.empty()) return runAddUser(o, store);
            if (!o.addTeam.empty()) return runAddTeam(o, store);
            if (!o.addFonts.empty()) return runAddFonts(o, store);
            return runEvents(o, store);
        }
        return runServer(o, data);
    } catch (const server::ServiceError& e) {
        Console::error(e.what());
    } catch (const SQLite::Exception& e) {
        Console::error(fmt::format("the service's data in {} can't be used: {}", data.string(), e.what()));
    } catch (const std::exception& e) {
        Console::error(e.what());
    }
    return kExitFailure;
}

} // namespace

CommandRun addServeCommand(CLI::App& app) {
    auto o = std::make_shared<ServeOptions>();
    auto* cmd = app.add_subcommand("serve", "Run the local service that the service commands can talk to, "
                                            "or manage its users, teams and fonts");
    cmd->add_option("--listen", o->listen, "HOST:PORT to listen on (port 0 takes a free one)")
        ->capture_default_str();
    cmd->add_option("--data", o->data, "The service's data folder (default $XDG_DATA_HOME/velmo/service)");
    cmd->add_option("--config", o->config,
                    "The remote configuration document to serve, read at each request (default: the one "
                    "that ships with velmo)");
    cmd->add_option("--workers", o->workers, "Requests answered at once")
        ->capture_default_str()
        ->check(CLI::Range(1, 256));
    cmd->add_option("--max-body", o->maxBody, "Larger request bodies are refused (413)")
        ->capture_default_str();
    cmd->add_option("--max-events", o->maxEvents, "Logging lines and events kept; the oldest go first")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000000));
    auto* addUser =
        cmd->add_option("--add-user", o->addUser, "Add a user (an e-mail address) and print a new token");
    cmd->add_option("--name", o->name, "The new user's name")->needs(addUser);
    auto* addTeam =
        cmd->add_option("--add-team", o->addTeam, "Add a team, or add members to the team of that name");
    cmd->add_option("--member", o->members, "A member of the team (a user's address); repeatable")
        ->needs(addTeam);
    auto* addFont =
        cmd->add_option("--add-font", o->addFonts, "A font family the service serves; repeatable");
    auto* events =
        cmd->add_flag("--events", o->events, "List the logging lines and events received, oldest first");
    cmd->add_option("--last", o->last, "With --events: only the last N")->needs(events);
    cmd->add_flag("--json", o->json, "With --events: as JSON")->needs(events);
    addUser->excludes(addTeam)->excludes(addFont)->excludes(events);
    addTeam->excludes(addFont)->excludes(events);
    addFont->excludes(events);
    return [o] { return runServe(*o); };
}

} // namespace velmo::cli
