#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"
#include "velmo/host/VVHostAPIClient.h"
#include "velmo/service/VPBaseAPIClient.h"

namespace velmo::cli {

/// What the commands that talk to the service share: the `--api` option, the client with the
/// stored token, waiting for the answers on the main loop, and failures said in the user's terms.
class ServiceSession {
public:
    /// Adds `--api URL` to the command; the value lands in `api`.
    static void addApiOption(CLI::App& command, std::string& api);

    /// The host's client, with `--api` (or VELMO_API_URL, or host.json's "customAPIBaseURL") as the
    /// service's address and JSON bodies; signed with the stored token when `signIn`. Nothing,
    /// after a message and with `exitCode` set, when the address isn't usable.
    static std::shared_ptr<VVHostAPIClient> start(const std::string& api, bool signIn, int& exitCode);

    /// What a call's completion received.
    struct Answer {
        Value response;
        VPErrorPtr error;
    };
    /// Starts a call with a completion and runs the main loop until it comes; nothing, after a
    /// message, when no answer came in time.
    static std::optional<Answer> call(const std::function<void(VPBaseAPIClient::Completion)>& start);

    /// Says why a call failed: the service's own "error" and "message" when it gave them, that it
    /// can't be reached, or the status it answered with. Gives the exit code of a failed work.
    static int fail(const VPErrorPtr& error, const Value& response = Value());

    /// A field of a service record as listings show it: text as it is, "-" for none.
    static std::string shown(const Value& value);
};

} // namespace velmo::cli
