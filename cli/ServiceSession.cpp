#include "ServiceSession.h"

#include <chrono>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "velmo/foundation/DispatchQueue.h"
#include "velmo/foundation/URL.h"

namespace velmo::cli {

namespace {

// Every request ends within its own time-out; this only guards against an answer that never comes.
constexpr auto kLongestWait = std::chrono::minutes(5);

/// A usable base: an http or https URL without the trailing slash that would double the paths'.
std::optional<std::string> serviceBase(std::string text) {
    while (text.ends_with('/'))
        text.pop_back();
    const auto url = URL::URLWithString(text);
    if (!url || (url->scheme() != "http" && url->scheme() != "https")) return std::nullopt;
    return text;
}

bool isUnreachable(const VPError& error) {
    if (error.domain() != kNSURLErrorDomain) return false;
    switch (error.code()) {
    case kNSURLErrorTimedOut:
    case kNSURLErrorCannotFindHost:
    case kNSURLErrorCannotConnectToHost:
    case kNSURLErrorNetworkConnectionLost:
    case kNSURLErrorSecureConnectionFailed:
        return true;
    default:
        return false;
    }
}

constexpr std::int64_t kUnauthorized = 401;

} // namespace

void ServiceSession::addApiOption(CLI::App& command, std::string& api) {
    command.add_option("--api", api,
                       "The service's base URL (else VELMO_API_URL, else \"customAPIBaseURL\" of host.json, "
                       "else the hosted service)");
}

std::shared_ptr<VVHostAPIClient> ServiceSession::start(const std::string& api, bool signIn, int& exitCode) {
    const bool given = !api.empty();
    const std::string configured = given ? api : VPBaseAPIClient::customAPIBaseURL();
    if (!configured.empty()) {
        const auto base = serviceBase(configured);
        if (!base) {
            Console::error(fmt::format("{}: not an http or https URL: {}",
                                       given ? "--api" : "the service's address (VELMO_API_URL or host.json)",
                                       configured));
            exitCode = kExitUsage;
            return nullptr;
        }
        VPBaseAPIClient::setCustomAPIBaseURL(*base);
    }
    auto client = std::dynamic_pointer_cast<VVHostAPIClient>(VPBaseAPIClient::sharedClient());
    if (!client) {
        Console::error("the service's client could not be made");
        exitCode = kExitFailure;
        return nullptr;
    }
    // Bodies that name other resources are nested, which only JSON can carry.
    client->setSendParametersAsJSON(true);
    if (signIn) client->useStoredToken();
    return client;
}

std::optional<ServiceSession::Answer>
ServiceSession::call(const std::function<void(VPBaseAPIClient::Completion)>& start) {
    bool done = false;
    Answer answer;
    start([&](const Value& response, VPErrorPtr error) {
        answer = {response, std::move(error)};
        done = true;
    });
    if (runMainLoopUntil([&] { return done; }, kLongestWait)) return answer;
    Console::error(fmt::format("the service at {} did not answer", VPBaseAPIClient::apiBaseURL()));
    return std::nullopt;
}

int ServiceSession::fail(const VPErrorPtr& error, const Value& response) {
    if (!error) {
        Console::error("the service's answer could not be read");
        return kExitFailure;
    }
    const VPErrorPtr lifted = error->errorWithResponse(response);
    const Value& message = lifted->userInfo().get("message");
    if (message.isString()) {
        // The service's own words: its "error", and its "message" when that says more.
        const std::string what = lifted->localizedDescription();
        Console::error(message.str() == what
                           ? fmt::format("the service refused: {}", what)
                           : fmt::format("the service refused: {}: {}", what, message.str()));
    } else if (isUnreachable(*lifted)) {
        Console::error(fmt::format("cannot reach the service at {}: {}", VPBaseAPIClient::apiBaseURL(),
                                   lifted->localizedDescription()));
    } else if (lifted->domain() == kNSURLErrorDomain && lifted->code() >= 300) {
        Console::error(fmt::format("the service answered with status {}", lifted->code()));
    } else if (lifted->domain() == kNSURLErrorDomain && lifted->code() == kNSURLErrorBadServerResponse) {
        Console::error("the service failed (status 500)");
    } else {
        Console::error(fmt::format("the service's answer was not understood: {}", errorText(lifted)));
    }
    if (lifted->domain() == kNSURLErrorDomain && lifted->code() == kUnauthorized) {
        const auto client = std::dynamic_pointer_cast<VVHostAPIClient>(VPBaseAPIClient::sharedClient());
        if (client && !client->accessToken())
            Console::error("not signed in: run 'velmo login --token -' first");
    }
    return kExitFailure;
}

std::string ServiceSession::shown(const Value& value) {
    if (value.isString()) return value.str();
    return value.isNone() ? std::string("-") : value.description();
}

} // namespace velmo::cli
