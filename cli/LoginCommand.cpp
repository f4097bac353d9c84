// velmo login --token TOKEN|- and velmo logout: the user's token in the secret token store, where
// the other service commands find it.
#include <memory>
#include <string>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "Password.h"
#include "ServiceSession.h"
#include "velmo/runtime/VVClientConfig.h"

namespace velmo::cli {

namespace {

struct LoginOptions {
    std::string token;
    std::string api;
};

int runLogin(const LoginOptions& o) {
    std::optional<std::string> token = o.token == "-" ? Password::readSecret("Token: ") : o.token;
    if (!token) {
        Console::error("--token -: standard input holds no token");
        return kExitUsage;
    }
    if (token->empty()) {
        Console::error("the token is empty");
        return kExitUsage;
    }
    // The client writes the token under the host's service name and reads it under its own: a
    // token written elsewhere would never be found again.
    const std::string serviceName = VVClientConfig::current().keyChainServiceName();
    if (serviceName != kVPTokenKeychainService) {
        Console::error(fmt::format("the token would be stored under \"{}\" (keyChainServiceName) but is read "
                                   "from \"{}\": set keyChainServiceName to \"{}\"",
                                   serviceName, kVPTokenKeychainService, kVPTokenKeychainService));
        return kExitFailure;
    }
    int exitCode = kExitOK;
    const auto client = ServiceSession::start(o.api, false, exitCode);
    if (!client) return exitCode;
    client->setAccessToken(*token);
    if (client->accessToken() != token) {
        Console::error("the token store did not keep the token (run with --verbose for the store's reason)");
        return kExitFailure;
    }
    Console::summary("signed in: the token is in the token store");
    return kExitOK;
}

int runLogout(const std::string& api) {
    int exitCode = kExitOK;
    const auto client = ServiceSession::start(api, false, exitCode);
    if (!client) return exitCode;
    client->clearToken();
    if (client->accessToken()) {
        Console::error("the token store still holds the token (run with --verbose for the store's reason)");
        return kExitFailure;
    }
    Console::summary("signed out");
    return kExitOK;
}

} // namespace

CommandRun addLoginCommand(CLI::App& app) {
    auto options = std::make_shared<LoginOptions>();
    auto* cmd = app.add_subcommand("login", "Keep your service token for the service commands");
    cmd->add_option("--token", options->token,
                    "The token, or - to read it from standard input (asked without echo at a terminal), so "
                    "that it never shows in the process list")
        ->required();
    ServiceSession::addApiOption(*cmd, options->api);
    return [options] { return runLogin(*options); };
}

CommandRun addLogoutCommand(CLI::App& app) {
    auto api = std::make_shared<std::string>();
    auto* cmd = app.add_subcommand("logout", "Forget the kept service token");
    ServiceSession::addApiOption(*cmd, *api);
    return [api] { return runLogout(*api); };
}

} // namespace velmo::cli
