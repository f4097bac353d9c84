#pragma once

#include <functional>
#include <optional>
#include <string>

#include "velmo/foundation/VPError.h"
#include "velmo/foundation/Value.h"

namespace velmo {

/// What the flows and controllers ask of the service's client, which they take from `VVDI` under
/// "VVAPIClientInterface". `VPBaseAPIClient` implements it; a host may bind a class of its own.
class VVAPIClientInterface {
public:
    /// (response, error): the parsed JSON of the answer and the failure; called on the main queue.
    using Completion = std::function<void(const Value& response, VPErrorPtr error)>;

    virtual ~VVAPIClientInterface() = default;

    /// Creates a project in the team; without a team the service decides where it goes.
    /// createProjectWithName:teamId:completion:
    virtual void createProjectWithName(const std::string& name, const std::optional<std::string>& teamId,
                                       Completion completion) = 0;
    /// The user's team memberships, as the service answered.
    virtual void refreshTeams(Completion completion) = 0;
    /// Fills the account cache with the memberships and every team's projects; the completion gets
    /// no response, only the first failure or none.
    virtual void refreshProjectsWithCompletion(Completion completion) = 0;
    /// Opens the link, signed with the user's token, in the user's browser.
    virtual void openLinkWithToken(const std::string& link) = 0;
    /// The base of the service's web application, where projects have their pages.
    virtual std::string webAppBaseURL() const = 0;

protected:
    VVAPIClientInterface() = default;
    VVAPIClientInterface(const VVAPIClientInterface&) = default;
    VVAPIClientInterface& operator=(const VVAPIClientInterface&) = default;
};

} // namespace velmo
